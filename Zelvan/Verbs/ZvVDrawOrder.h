#pragma once
#include "Zelvan/Verbs/ZvVerb.h"
#include <vector>

class ZvBNode;
enum class ZvEntityOrder;

/// Changes which of overlapping entities is drawn in front. Entities are ordered within their node of the layer's tree;
/// the verb keeps the orders of the nodes concerned. Either the verb does the change (Bring), or the command calls
/// StoreOriginal, changes, and calls StoreModified before handing the verb over.
class ZV_API ZvVDrawOrder : public ZvVerb {
public:
    explicit ZvVDrawOrder(const ZvSelection& entities);

    /// What Do will do with the entities, in their order; `relativeTo` (Above, Below) must share a node with them.
    void Bring(ZvEntityOrder order, const ZvEntity* relativeTo = nullptr);
    /// The order of the nodes in which the entities are now.
    void StoreOriginal();
    void StoreModified();
    /// The tree in which member `index` is ordered; null when it is in none.
    ZvBNode* Block(int index) const;

    Kind GetKind() const override { return Kind::DrawOrder; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    /// Names in the order of drawing, one run a node.
    using Orders = std::vector<std::vector<uint32_t>>;
    Orders Present() const;
    void Restore(const Orders& orders) const;

    Orders m_original, m_modified;
    bool m_brings = false;
    bool m_stored = false;
    ZvEntityOrder m_order{};
    uint32_t m_relativeTo = 0;
};
