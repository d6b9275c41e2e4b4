#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "ZvCore/BinXml.h"
#include <algorithm>
#include <cstring>

bool ZvEntityAssociator::Associate(ZvName a, ZvName b) {
    if (a == b || !m_drawing.GetEntity(a) || !m_drawing.GetEntity(b) || AreAssociated(a, b))
        return false;
    m_partners[a.value].push_back(b.value);
    m_partners[b.value].push_back(a.value);
    ++m_pairCount;
    MarkAssociated(a.value);
    MarkAssociated(b.value);
    return true;
}

bool ZvEntityAssociator::Dissociate(ZvName a, ZvName b) {
    if (!AreAssociated(a, b))
        return false;
    std::erase(m_partners[a.value], b.value);
    std::erase(m_partners[b.value], a.value);
    --m_pairCount;
    MarkAssociated(a.value);
    MarkAssociated(b.value);
    return true;
}

void ZvEntityAssociator::Remove(ZvName name) {
    for (ZvName partner : GetAssociates(name))
        Dissociate(name, partner);
}

bool ZvEntityAssociator::AreAssociated(ZvName a, ZvName b) const {
    const auto found = m_partners.find(a.value);
    return found != m_partners.end() &&
           std::find(found->second.begin(), found->second.end(), b.value) != found->second.end();
}

std::vector<ZvName> ZvEntityAssociator::GetAssociates(ZvName name) const {
    const auto found = m_partners.find(name.value);
    return found == m_partners.end() ? std::vector<ZvName>()
                                     : std::vector<ZvName>(found->second.begin(), found->second.end());
}

void ZvEntityAssociator::NotifyModified(ZvName name) {
    for (ZvName partner : GetAssociates(name))
        if (ZvEntity* entity = m_drawing.GetEntity(partner))
            entity->AssociatesModified();
}

/// Brings the entity's flag up to date and drops an empty list.
void ZvEntityAssociator::MarkAssociated(uint32_t name) {
    const auto found = m_partners.find(name);
    const bool any = found != m_partners.end() && !found->second.empty();
    if (found != m_partners.end() && !any)
        m_partners.erase(found);
    if (ZvEntity* entity = m_drawing.GetEntity(ZvName(name)))
        entity->SetAssociated(any);
}

int ZvEntityAssociator::CommitDelayed(const ZvNativeDesc* desc) {
    int made = 0;
    for (auto [a, b] : m_delayed)
        made += desc ? Associate(ZvName(desc->TranslateName(a)), ZvName(desc->TranslateName(b)))
                     : Associate(ZvName(a), ZvName(b));
    m_delayed.clear();
    return made;
}

void ZvEntityAssociator::Store(ZvCore::BinXmlNode& node) const {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (const auto& [name, partners] : m_partners)
        for (uint32_t partner : partners)
            if (name < partner)
                pairs.emplace_back(name, partner);
    if (pairs.empty())
        return;
    std::sort(pairs.begin(), pairs.end());
    std::vector<uint8_t> bytes(pairs.size() * 8);
    for (size_t i = 0; i < pairs.size(); ++i) {
        std::memcpy(&bytes[i * 8], &pairs[i].first, 4);
        std::memcpy(&bytes[i * 8 + 4], &pairs[i].second, 4);
    }
    node.Set("Pairs", std::move(bytes));
}

void ZvEntityAssociator::LoadDelayed(const ZvCore::BinXmlNode& node) {
    const auto* value = node.Find("Pairs");
    const auto* bytes = value ? std::get_if<std::vector<uint8_t>>(value) : nullptr;
    for (size_t at = 0; bytes && at + 8 <= bytes->size(); at += 8) {
        uint32_t a = 0, b = 0;
        std::memcpy(&a, bytes->data() + at, 4);
        std::memcpy(&b, bytes->data() + at + 4, 4);
        AddDelayed(ZvName(a), ZvName(b));
    }
}

void ZvEntityAssociator::Clear() {
    const auto partners = std::move(m_partners);
    m_partners.clear();
    m_delayed.clear();
    m_pairCount = 0;
    for (const auto& [name, list] : partners)
        MarkAssociated(name);
}
