#pragma once
#include "Zelvan/Verbs/ZvVEntNew.h"

/// New entities that each come from two others (an intersection, a connection). Attributes and partners of the
/// first source, then of the second, go to the new entity.
class ZV_API ZvVEntNewDualSource : public ZvVEntNew {
public:
    struct Triple {
        uint32_t entity = 0, first = 0, second = 0;
        friend bool operator==(const Triple&, const Triple&) = default;
    };
    using ZvVEntNew::ZvVEntNew;

    /// All three are in the drawing. False when the entity was added before or one is null.
    bool AddDualSourceTripple(const ZvEntity* entity, const ZvEntity* first, const ZvEntity* second);
    const std::vector<Triple>& Triples() const { return m_triples; }

    Kind GetKind() const override { return Kind::NewDualSource; }
    size_t MemUsage() const override;
    void RemoveFromSet(const ZvSelection& leaving) override;
    /// The sources as well; they need not stay alive for it, though.
    bool UsesEntities(const std::set<uint32_t>& names) const override;

private:
    std::vector<Triple> m_triples;
};
