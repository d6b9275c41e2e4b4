#pragma once
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvNativeDesc;
namespace ZvCore {
class BinXmlNode;
}

/// Pairs of entities that belong together (a dimension and what it measures, an area and its label), by name,
/// without order. Entities with a partner carry the associated flag.
class ZV_API ZvEntityAssociator {
public:
    explicit ZvEntityAssociator(ZvDrawing& drawing) : m_drawing(drawing) {}
    ZvEntityAssociator(const ZvEntityAssociator&) = delete;
    ZvEntityAssociator& operator=(const ZvEntityAssociator&) = delete;

    /// False when either does not exist, both are the same or the pair is there.
    bool Associate(ZvName a, ZvName b);
    bool Dissociate(ZvName a, ZvName b);
    /// Ends all pairs of the entity.
    void Remove(ZvName name);
    bool AreAssociated(ZvName a, ZvName b) const;
    std::vector<ZvName> GetAssociates(ZvName name) const;
    size_t Count() const { return m_pairCount; }
    /// Calls `AssociatesModified` of the entity's partners.
    void NotifyModified(ZvName name);

    /// While a file is read names are still the file's: such pairs wait for CommitDelayed.
    void AddDelayed(ZvName a, ZvName b) { m_delayed.emplace_back(a.value, b.value); }
    size_t DelayedCount() const { return m_delayed.size(); }
    /// Makes the waiting pairs, names translated through the file's descriptor when there is one. Pairs whose
    /// entities do not exist are dropped; answers how many were made.
    int CommitDelayed(const ZvNativeDesc* desc);

    void Store(ZvCore::BinXmlNode& node) const;
    /// The pairs wait until they are committed.
    void LoadDelayed(const ZvCore::BinXmlNode& node);
    void Clear();

private:
    void MarkAssociated(uint32_t name);

    ZvDrawing& m_drawing;
    std::unordered_map<uint32_t, std::vector<uint32_t>> m_partners;
    std::vector<std::pair<uint32_t, uint32_t>> m_delayed;
    size_t m_pairCount = 0;
};
