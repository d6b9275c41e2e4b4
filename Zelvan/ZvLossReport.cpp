#include "Zelvan/ZvLossReport.h"

const char* ZvLossReport::FateName(Fate fate) {
    switch (fate) {
    case Fate::Kept:
        return "kept";
    case Fate::Approximated:
        return "approximated";
    case Fate::Dropped:
        break;
    }
    return "dropped";
}

void ZvLossReport::Add(Fate fate, std::string reason, int64_t count) {
    if (count > 0)
        m_items[{fate, std::move(reason)}] += count;
}

bool ZvLossReport::IsLossless() const {
    return Total(Fate::Approximated) == 0 && Total(Fate::Dropped) == 0;
}

int64_t ZvLossReport::Total(Fate fate) const {
    int64_t total = 0;
    for (const auto& [key, count] : m_items)
        total += key.first == fate ? count : 0;
    return total;
}

int64_t ZvLossReport::Count(Fate fate, const std::string& reason) const {
    const auto found = m_items.find({fate, reason});
    return found == m_items.end() ? 0 : found->second;
}

std::string ZvLossReport::ToString() const {
    std::string text;
    for (const auto& [key, count] : m_items)
        text += std::string(FateName(key.first)) + " " + std::to_string(count) + ": " + key.second + "\n";
    return text;
}

void ZvLossReport::AddAll(const ZvLossReport& other) {
    for (const auto& [key, count] : other.m_items)
        Add(key.first, key.second, count);
}
