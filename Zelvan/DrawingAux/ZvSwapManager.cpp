#include "Zelvan/DrawingAux/ZvSwapManager.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>

void ZvSwapManager::Register(IZvSwappable* swappable) {
    if (swappable && std::find(m_swappables.begin(), m_swappables.end(), swappable) == m_swappables.end())
        m_swappables.push_back(swappable);
}

bool ZvSwapManager::Unregister(IZvSwappable* swappable) {
    return std::erase(m_swappables, swappable) != 0;
}

int64_t ZvSwapManager::Budget() const {
    ZvPlatform::MemoryStatus memory;
    const int64_t fallback = ZvPlatform::GetMemoryStatus(memory) ? int64_t(memory.physicalBytes / 2) : 0;
    return std::max<int64_t>(0, m_drawing.Settings().GetInt("SwapThreshold", fallback));
}

ZvSwapManager::Measure ZvSwapManager::MeasureMemory() const {
    Measure measure;
    measure.arena = m_drawing.EntityHeap().MemUsage();
    measure.arenaLive = m_drawing.HeapLiveBytes();
    const ZvEntityNameTable& names = m_drawing.NameTable();
    for (ZvName name = names.Next({}); !name.IsNull(); name = names.Next(name))
        measure.entities += names.GetQuiet(name)->MemUsage();
    measure.entities -= std::min(measure.entities, measure.arenaLive);
    measure.undo = m_drawing.Verbs()->MemUsage();
    measure.names = names.MemUsage();
    for (const IZvSwappable* swappable : m_swappables)
        measure.swappable += swappable->SwappableBytes();
    return measure;
}

ZvSwapManager::Result ZvSwapManager::Balance() {
    Result result;
    const int64_t budget = Budget();
    const uint64_t resident = ZvPlatform::ResidentBytes(); // no drawing holds more than the process
    if (budget == 0 || (resident && resident <= uint64_t(budget)))
        return result;
    Measure measure = MeasureMemory();
    size_t total = measure.Total();
    if (total <= size_t(budget))
        return result;
    if (measure.arenaLive < measure.arena / 2) {
        m_drawing.Cleanup(true);
        const size_t after = MeasureMemory().Total();
        result.freed = total - std::min(total, after);
        total = after;
    }
    std::vector<IZvSwappable*> oldestFirst = m_swappables;
    std::stable_sort(oldestFirst.begin(), oldestFirst.end(),
                     [](const auto* a, const auto* b) { return a->LastUsed() < b->LastUsed(); });
    for (IZvSwappable* swappable : oldestFirst) {
        if (total <= size_t(budget))
            break;
        const size_t bytes = swappable->SwappableBytes();
        if (bytes == 0 || !swappable->SwapOut(m_file))
            continue;
        ++result.swappedOut;
        result.freed += bytes;
        total -= std::min(total, bytes);
    }
    result.withinBudget = total <= size_t(budget);
    return result;
}
