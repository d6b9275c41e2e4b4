#include "Zelvan/DrawingAux/ZvUndoSettings.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Settings.h"
#include <algorithm>

namespace {

constexpr uint64_t kDay = 86'400 * DateTime::kTicksPerSecond;

bool IsWithinOneOffPeriod(DateTime now) {
    const DateTime middle = DateTime::FromUtc(2013, 4, 31);
    const uint64_t apart = now > middle ? now.ticks - middle.ticks : middle.ticks - now.ticks;
    return apart < 30 * kDay;
}

} // namespace

int64_t ZvUndoSettings::Bounded(int64_t stored, DateTime now, uint64_t physicalMemory) {
    if (stored == 0 && IsWithinOneOffPeriod(now))
        stored = kDefaultBudget;
    int64_t budget = std::max<int64_t>(stored, 0);
    if (physicalMemory > 0)
        budget = std::min(budget, int64_t(std::min<uint64_t>(physicalMemory / 4, INT64_MAX)));
    return std::max(budget, kSmallestBudget);
}

void ZvUndoSettings::Apply(ZvCore::Settings& settings, DateTime now, uint64_t physicalMemory) {
    if (settings.Has(kBudgetKey))
        settings.Set(kBudgetKey, Bounded(settings.GetInt(kBudgetKey, kDefaultBudget), now, physicalMemory));
}

uint64_t ZvUndoSettings::PhysicalMemory() {
    ZvPlatform::MemoryStatus status;
    return ZvPlatform::GetMemoryStatus(status) ? status.physicalBytes : 0;
}
