#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <map>
#include <string>
#include <utility>

/// What a load or save in a format could not carry over unchanged: filled by the format's provider, shown to
/// the user.
class ZV_API ZvLossReport {
public:
    enum class Fate { Kept, Approximated, Dropped };
    /// "kept", "approximated", "dropped".
    static const char* FateName(Fate fate);
    /// `reason` is one plain sentence part ("arcs written as 72 straight segments"); equal reasons are
    /// counted.
    void Add(Fate fate, std::string reason, int64_t count = 1);
    bool IsLossless() const;
    int64_t Total(Fate fate) const;
    int64_t Count(Fate fate, const std::string& reason) const;
    const std::map<std::pair<Fate, std::string>, int64_t>& Items() const { return m_items; }
    /// One line a reason: "dropped 12: text without a style".
    std::string ToString() const;
    void AddAll(const ZvLossReport& other);
    void Clear() { m_items.clear(); }

private:
    std::map<std::pair<Fate, std::string>, int64_t> m_items;
};
