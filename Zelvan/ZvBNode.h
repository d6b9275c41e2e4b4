#pragma once
#include "Zelvan/Entities/ZvEntityOwner.h"
#include "Zelvan/ZvBNodeContainer.h"
#include "Zelvan/ZvBNodeList.h"
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvWidestLine.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/dvect.h"
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

class ZvBNode;
class ZvRenderContext;
class ZvcDumbHeap;
struct ZvBNodePair;

/// What all nodes of one tree share.
struct ZvBNodeRoot {
    ZvBNode* root = nullptr;
    int32_t maxEntitiesPerNode = 50;
    int32_t nextNodeId = 1;
    /// Insertions that started at the root (bulk insertions count each entity).
    int32_t insertionCounter = 0;
    /// The node that received the previous insertion: tried first by the next one. Null after a rebuild.
    ZvBNode* lastInsertionNode = nullptr;
    IZvBNodeContainer* container = nullptr;
    ZvcDumbHeap* heap = nullptr;
    /// Of all entities that the tree has held.
    ZvWidestLine widestLine;
};

/// Which entities a selection wants.
struct ZvTreeQuery {
    bool visibleOnly = false;
    bool withErased = false;
    /// Only entities whose bounds lie wholly in the window (its border included).
    bool enclosed = false;
    /// Bounds that only touch the window from outside count as meeting it.
    bool touching = true;
};

/// What a walk does with a node and all below it.
enum class ZvWalkStep { Skip, Descend, TakeAll, Stop };

/// Entities of one node that a walk hands out, in drawing order.
struct ZvNodeRun {
    std::span<ZvEntity* const> entities;
    /// Each entity's box in steps of `grid`, parallel to `entities`.
    const uint32_t* boxes = nullptr;
    const ZvBNode* node = nullptr;
    /// The visitor asked for the whole node: nothing needs clipping.
    bool whole = false;
};

/// Walks a tree from the root down: own entities of a node, then child 0, then child 1.
class ZV_API IZvBNodeVisitor {
public:
    virtual ~IZvBNodeVisitor() = default;
    /// `bounds`: of the node's visible, non-erased entities and all below. Empty nodes are not asked about.
    virtual ZvWalkStep Node(const ZvBNode& node, const ZvBounds3D& bounds) = 0;
    /// Visible, non-erased entities of the node itself. False ends the walk.
    virtual bool Run(const ZvNodeRun& run) = 0;
};

/// Figures about a tree's shape.
struct ZvIndexBlockStats {
    size_t nodes = 0, leaves = 0, emptyLeaves = 0;
    size_t entities = 0;        ///< erased ones included
    size_t entitiesInInner = 0; ///< that straddle a cut
    size_t largestNode = 0;     ///< most entities in one node
    int32_t maxDepth = 0;
    size_t memory = 0; ///< bytes of nodes and lists
};

/// Where ChangeEntityOrder puts an entity within its node's list. Lists are drawn from the front of the array, so "to back" is
/// position 0.
enum class ZvEntityOrder { ToFront, ToBack, Above, Below };

/// A node of the tree in which a layer or block keeps its entities: a binary spatial tree over the XY plane. Every node owns a box
/// and lists the entities whose 2-D bounds fit in that box but in neither child. Halves overlap by a band of 2 % of the box's X
/// extent on each side of the cut. The tree owns its entities and is the owner link of each.
///
/// Invariants (DebugCheck tests them):
///   1. an entity's XY bounds lie in the box of the node that lists it, unless they are not finite or empty (those stay in the root)
///   2. they lie in neither child's box
///   3. content bounds hold the bounds of every non-erased entity in the node and below, visible bounds those of the visible ones;
///      both are exact unless the node is marked dirty, and then so are all its ancestors
///   4. each list entry's box in steps is what the node's grid gives for the entity's bounds
///   5. an unsplit node holds at most the maximum number of entities, or at most twice its depth, or entities that no cut separates
/// Queries and walks are const; they repair dirty bounds on the way (caches are mutable). One thread.
class ZV_API ZvBNode final : public IZvEntityOwner {
public:
    /// An empty root.
    ZvBNode();
    /// A root deletes its entities, without a word to the container: where names must be given back, DeleteAll comes first.
    ~ZvBNode() override;
    ZvBNode(const ZvBNode&) = delete;
    ZvBNode& operator=(const ZvBNode&) = delete;
    static void* operator new(size_t bytes);
    static void operator delete(void* object, size_t bytes);

    // --- tree-wide settings; every node answers for its tree -----------------------------------------------------------------
    void SetMaxEntitiesPerNode(int32_t count);
    int32_t GetMaxEntitiesPerNode() const { return m_root->maxEntitiesPerNode; }
    void SetContainer(IZvBNodeContainer* container) { m_root->container = container; }
    IZvBNodeContainer* Container() const { return m_root->container; }
    ZvLayer* Layer() const;
    ZvDrawing* Drawing() const;
    /// The arena in which the tree's entities keep their blocks; observed only.
    void SetHeap(ZvcDumbHeap* heap) { m_root->heap = heap; }
    ZvcDumbHeap* Heap() const { return m_root->heap; }
    const ZvBNodeRoot& RootInfo() const { return *m_root; }

    // --- structure -----------------------------------------------------------------------------------------------------------
    bool IsRoot() const { return !m_parent; }
    ZvBNode* RootBlock() const { return m_root->root; }
    ZvBNode* Parent() const { return m_parent; }
    bool IsSplit() const { return m_children != nullptr; }
    /// Null for an unsplit node; index 0 or 1.
    ZvBNode* Child(int index) const;
    /// 0 or 1 for a child, -1 for the root.
    int ChildNumber() const;
    int32_t DebugGetLevel() const { return m_depth; }
    int32_t DebugGetNodeId() const { return m_nodeId; }
    const ZvBounds3D& Box() const { return m_box; }
    int32_t ChangeCounter() const { return m_changeCounter; }
    /// In whose steps the boxes of the list are; of no meaning while that is empty.
    ZvNodeGrid Grid() const { return m_list.HasNoBlock() ? ZvNodeGrid() : m_list.Grid(); }

    // --- the node's own list, without the rest of the tree -------------------------------------------------------------------
    void DataAdd(ZvEntity* entity);
    bool DataErase(ZvEntity* entity);
    void DataEraseIx(size_t index);
    ZvEntity* DataGet(size_t index) const { return m_list.Get(index); }
    size_t DataSize() const { return m_list.Size(); }
    void DataClear();

    // --- insertion and removal ------------------------------------------------------------------------------------------------
    /// Takes the entity over. At a node that is not the root this is the same as at the root. Null is reported.
    bool Insert(ZvEntity* entity);
    /// Takes all of them over, in order; far faster than one by one, and obeys the same invariants. Nulls are left out and reported.
    void InsertBulk(std::span<ZvEntity* const> entities);
    /// Takes the entity out of its node (wherever in this tree that is); the caller owns it. False when it is not in this tree.
    bool RemoveMe(ZvEntity* entity);
    /// As RemoveMe, out of the drawing's name table too, and deletes it.
    bool DeleteMe(ZvEntity* entity);
    /// Deletes every entity of the tree (names of a drawing are given back) and all nodes below the root.
    void DeleteAll();
    /// Forgets every entity without deleting: they have no owner afterwards. The shape goes, too.
    void ClearAll();
    /// Deletes entities that are flagged erased. Returns how many.
    size_t PurgeErased();
    /// Moves the entity within its node's list; `relativeTo` (Above, Below) must be in the same node. False otherwise.
    bool ChangeEntityOrder(ZvEntity* entity, ZvEntityOrder order, const ZvEntity* relativeTo = nullptr);
    /// Rebuilds the tree in a root box that holds at least `box` and all entities.
    void Restructure(const ZvBounds3D& box);

    // --- content --------------------------------------------------------------------------------------------------------------
    /// Entities in this node and below, erased ones included.
    size_t Count() const;
    size_t CountNonErased() const;
    /// Appends all entities of this node and below in drawing order.
    void EnumAll(dvect<ZvEntity*>& entities, bool withErased = true) const;
    /// As EnumAll without erased ones.
    void GetBranchEntities(dvect<ZvEntity*>& entities) const;
    /// This node's own entities only.
    std::span<ZvEntity* const> GetEntitiesNoWalk() const { return {m_list.begin(), m_list.Size()}; }
    template <class F>
    void ForEach(F&& f) const;

    // --- bounds ---------------------------------------------------------------------------------------------------------------
    /// Bounds of all non-erased entities in the node and below; empty when there are none.
    const ZvBounds3D& Bounds() const;
    const ZvBounds3D& AbsBounds() const { return Bounds(); }
    /// The same for visible entities.
    const ZvBounds3D& VisibleBounds() const;
    /// Marks this node and its ancestors: cached bounds are computed anew when next asked for.
    void SetBoundsDirty();
    bool IsBoundsDirty() const { return m_dirty; }
    /// Asks every entity of this node and below for its bounds: moves what no longer belongs where it is, computes the rest anew.
    void RecalcBounds();
    /// Forgets the cached bounds of this node and marks it dirty.
    void ResetBounds();
    /// All cached bounds and draw sets of this node and below.
    void InvalidateAllCachedBounds();
    /// The entity's bounds changed: it moves to the node where it now belongs.
    void ChildUpdateBounds(ZvEntity* entity);
    /// Colour, line or state of the entity changed.
    void ChildUpdateAppearance(ZvEntity* entity);

    // --- queries --------------------------------------------------------------------------------------------------------------
    /// Appends entities of this node and below whose XY bounds meet the box. Order is that of drawing.
    void PureSelectRect(const ZvBounds2D& box, dvect<ZvEntity*>& found, const ZvTreeQuery& query = {}) const;
    /// Calls `f(ZvEntity*)` instead; `f` returns false to stop. The tree must not change meanwhile.
    template <class F>
    void ForEachInRect(const ZvBounds2D& box, const ZvTreeQuery& query, F&& f) const;
    /// Appends entities whose 3-D bounds the ray's line, `radius` thick, may meet (never too few).
    void PureSelectRay(const Ray3d& ray, double radius, dvect<ZvEntity*>& found,
                       const ZvTreeQuery& query = {}) const;
    /// Whether the line through the ray comes within `radius` of the box; true in a few cases near corners where it does not.
    static bool RayCylinderIntersects(const Ray3d& ray, double radius, const ZvBounds3D& box);
    /// The deepest node whose box contains the box, children searched first; null when this node does not contain it.
    ZvBNode* SmallestEnclosingNode(const ZvBounds2D& box);
    const ZvBNode* SmallestEnclosingNode(const ZvBounds2D& box) const;
    /// The highest node whose box lies in the box; null when there is none.
    ZvBNode* LargestEnclosedNode(const ZvBounds2D& box);

    // --- drawing --------------------------------------------------------------------------------------------------------------
    /// False when the visitor stopped it.
    bool Walk(IZvBNodeVisitor& visitor) const;
    /// Draws what the context's window shows, by its mode. By-layer values are those of the layer that the context has entered.
    void Draw(ZvRenderContext& context) const;
    void DrawPdf(ZvRenderContext& context) const;
    /// World units of the widest line that the tree has held, by-layer widths aside.
    double WidestLine(const ZvScaleSetup& scale) const { return m_root->widestLine.ToWorld(scale); }
    /// Draws the node's own entities from its cached draw set (built when it is not valid).
    void DrawCachedSet(ZvRenderContext& context) const;
    /// The same with a look at every entity of the node.
    void DrawNonCached(ZvRenderContext& context) const;
    /// The draw set: visible, non-erased entities of the node itself, in order.
    void InvalidateDrawSet();
    bool IsDrawSetInvalid() const { return m_drawSetInvalid; }
    std::span<ZvEntity* const> DrawSet() const;

    // --- packing (swap manager) -----------------------------------------------------------------------------------------------
    // All of it needs the container's drawing, whose numbers the records carry.
    /// Bytes that Pack writes for this node and below; 0 when it cannot.
    size_t ComputePackedSize() const;
    /// The entities of this node and below in flat form. False (target untouched) when an entity cannot be packed.
    bool Pack(std::vector<uint8_t>& target) const;
    /// Replaces the tree's content by what Pack wrote: entities of the same name take the place of the existing ones in the name
    /// table, too, and all existing ones are deleted. False on bytes that are not a whole pack; the tree is then as before. At the
    /// root only.
    bool Unpack(std::span<const uint8_t> packed);
    /// As Unpack, but appends the entities (in no tree, owned by the caller) instead.
    bool UnpackEntities(std::span<const uint8_t> packed,
                        std::vector<std::unique_ptr<ZvEntity>>& entities) const;
    /// Gives entities new names; names not in the map stay. The name table is not touched.
    void RemapEntities(const std::unordered_map<uint32_t, uint32_t>& newNames);

    ZvIndexBlockStats GetIndexBlockStats() const;
    size_t MemUsage() const;
    /// Tests the invariants of this node and all below. False with the first violation in `why`.
    bool DebugCheck(std::string& why) const;

    // --- owner link of the node's entities ------------------------------------------------------------------------------------
    ZvDrawing* OwnerDrawing() const override;
    ZvLayer* OwnerLayer() const override;
    int OwnerLayerIndex() const override;
    bool OwnerIsInDrawing() const override;
    ZvBNode* OwnerNode() override { return this; }
    bool OwnerRemove(ZvEntity* entity) override;
    bool OwnerRemoveAndDelete(ZvEntity* entity) override;
    void OwnerEntityChanged(ZvEntity* entity) override;
    void OwnerEntityErased(ZvEntity* entity, bool erased) override;
    void OwnerVisibilityChanged(ZvEntity* entity) override;
    void OwnerBoundsChanged(ZvEntity* entity) override;
    void OwnerSelectionChanged(ZvEntity* entity, bool selected) override;
    void OwnerLineCapChanged(ZvEntity* entity) override;

private:
    friend class ZvBNodeBuilder;
    template <class Sink>
    friend class ZvBNodeRectQuery;
    friend struct ZvBNodePair;
    /// What few nodes need: visible bounds where they differ from the content bounds, the draw set where it differs from the list.
    struct Rare {
        ZvBounds3D visible;
        dvect<ZvEntity*> drawSet;
        dvect<uint32_t> drawSetBoxes;
        bool ownVisible = false;
        bool ownDrawSet = false;
    };

    explicit ZvBNode(ZvBNode& parent);
    using Predicate = bool (*)(void* target, ZvEntity* entity);
    template <class F>
    static void* Target(F& f) {
        return const_cast<void*>(static_cast<const void*>(&f));
    }
    bool VisitRect(const ZvBounds2D& box, const ZvTreeQuery& query, Predicate take, void* target) const;
    bool VisitAll(Predicate take, void* target) const;

    // Insertion.
    /// False for bounds that are empty, not finite or too large: such entities stay in the root and do not shape it.
    static bool CanBePlaced(const ZvBounds3D& bounds);
    static uint32_t PackBox(const ZvNodeGrid& grid, const ZvBounds3D& bounds);
    /// Appends to the node's own list.
    void List(ZvEntity* entity, const ZvBounds3D& bounds);
    static bool RefuseInsertion(const ZvEntity* entity);
    void InsertAtRoot(ZvEntity* entity, const ZvBounds3D& bounds);
    void InsertInternal(ZvEntity* entity, const ZvBounds3D& bounds);
    void Keep(ZvEntity* entity, const ZvBounds3D& bounds);
    void Extend(const ZvBounds3D& bounds, bool visible);
    void ExtendAncestors(const ZvBounds3D& bounds, bool visible);
    void ExtendByChild(const ZvBNode& child);
    void WidenZ(const ZvBounds3D& bounds);
    /// Where a box is cut: across X or Y; child 0 ends at `high`, child 1 begins at `low`.
    struct Cut {
        bool acrossX;
        double high, low;
        explicit Cut(const ZvBounds3D& box);
        /// The child whose box holds bounds that the parent's box holds, -1 for none.
        int ChildHolding(double minX, double minY, double maxX, double maxY) const {
            return (acrossX ? maxX : maxY) <= high ? 0 : (acrossX ? minX : minY) >= low ? 1 : -1;
        }
        int ChildHolding(const ZvBounds3D& b) const { return ChildHolding(b.minX, b.minY, b.maxX, b.maxY); }
    };
    static void Halve(const ZvBounds3D& box, ZvBounds3D& first, ZvBounds3D& second);
    int ChildHolding(const ZvBounds3D& bounds) const { return Cut(m_box).ChildHolding(bounds); }
    /// Whether an unsplit node that holds so many entities is split when a further one arrives that differs from them.
    bool MaySplit(size_t entities) const;
    bool CanBeHalved() const;
    bool HoldsOnlyEqualBounds() const;
    bool HoldsOnly(const ZvBounds3D& bounds) const;
    void SplitIfOverfull();
    void Split();
    void MakeChildren();
    void CollapseEmptyChildren();
    // Restructuring.
    void Accomodate(const ZvBounds3D& bounds);
    static void FixAspect(ZvBounds3D& box);
    void SetLeafBox(const ZvBounds3D& box);
    void DropShape();
    // Removal and change.
    bool Detach(ZvEntity* entity);
    void ForgetName(ZvEntity* entity) const;
    void TakeOverNames(const dvect<ZvEntity*>& entities) const;
    size_t TakeErased(dvect<ZvEntity*>& erased);
    bool BelongsHere(const ZvBounds3D& bounds) const;
    void UpdateInPlace(size_t index, const ZvBounds3D& bounds);
    void Relocate(size_t index, const ZvBounds3D& bounds);
    void TakeMisplaced(dvect<ZvEntity*>& misplaced);
    void StateChanged(ZvEntity* entity);
    void TouchContainer(ZvEntity* entity) const;
    void TellChanged(ZvEntity& entity) const;
    // Bounds and draw sets.
    void RepairBounds() const;
    void MarkBranchDirty();
    void InvalidateDrawSets();
    Rare& NeedRare() const;
    bool HasOwnVisible() const { return m_rare && m_rare->ownVisible; }
    void SetVisibleBounds(const ZvBounds3D& visible) const;
    const uint32_t* DrawSetBoxes() const;
    bool WalkNode(IZvBNodeVisitor& visitor, bool whole) const;
    bool RunLoose(IZvBNodeVisitor& visitor) const;
    void AddStats(ZvIndexBlockStats& stats) const;
    bool CheckEntry(std::string& why, size_t index, ZvBounds3D& content, ZvBounds3D& visible) const;
    bool CheckNode(std::string& why, ZvBounds3D& content, ZvBounds3D& visible) const;

    /// What a query looks at on its way down: the content bounds of both children in the plane, rounded outwards, maxima
    /// negated, so that a child meets a window when each number is at most the window's. Infinite for a child without content.
    struct alignas(16) ChildBox {
        float side[4] = {INFINITY, INFINITY, INFINITY, INFINITY};
        void Set(const ZvBounds3D& bounds);
    };
    void TellParentContent();

    // 192 bytes. A query reads the first 64 of every node on its way.
    std::unique_ptr<ZvBNodePair> m_children;
    ZvBNodeList m_list;
    int16_t m_depth = 0;
    /// Bit i: child i is split.
    uint8_t m_childSplit = 0;
    mutable bool m_dirty = false;
    mutable bool m_drawSetInvalid = true;
    /// Some entity of the node itself may be hidden or erased (stays set until bounds or draw set are computed anew).
    mutable bool m_mixed = false;
    /// Every entity of the node itself is known to have the same bounds.
    mutable bool m_allEqual = false;
    mutable ChildBox m_childBox[2];
    ZvBounds3D m_box;
    ZvBNodeRoot* m_root; ///< owned by the root node
    ZvBNode* m_parent = nullptr;
    mutable ZvBounds3D m_content;
    mutable std::unique_ptr<Rare> m_rare;
    int32_t m_nodeId = 0;
    int32_t m_changeCounter = 0;
};

template <class F>
void ZvBNode::ForEach(F&& f) const {
    const Predicate call = [](void* target, ZvEntity* entity) {
        (*static_cast<std::remove_reference_t<F>*>(target))(entity);
        return true;
    };
    VisitAll(call, Target(f));
}

template <class F>
void ZvBNode::ForEachInRect(const ZvBounds2D& box, const ZvTreeQuery& query, F&& f) const {
    const Predicate call = [](void* target, ZvEntity* entity) -> bool {
        return (*static_cast<std::remove_reference_t<F>*>(target))(entity);
    };
    VisitRect(box, query, call, Target(f));
}
