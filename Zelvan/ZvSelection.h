#pragma once
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include "ZvCore/PagedBitTree.h"
#include "ZvCore/dvect.h"
#include <cstdint>
#include <set>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvLayer;
struct ZvScaleSetup;

/// How `ZvSelection::Combine` joins two selections; the numbers are those of scripts.
enum class ZvSetCombineModes : int {
    Union = 0, ///< a, then the members of b
    AWithoutB = 1,
    BWithoutA = 2,
    Intersection = 3,        ///< in a's order
    SymmetricDifference = 4, ///< a's part, then b's
    OnlyA = 5,
    OnlyB = 6,
};

/// An ordered set of entities of one drawing. Holds names, so it survives entities that are deleted and made
/// again; entities are looked up in the drawing when asked for.
class ZV_API ZvSelection {
public:
    /// From this many members on, a bit tree answers membership instead of a scan.
    static constexpr size_t kIndexThreshold = 20;

    explicit ZvSelection(ZvDrawing* drawing = nullptr);
    ZvSelection(ZvDrawing* drawing, const pvect<ZvEntity*>& entities);
    /// The copy is not the drawing's current selection, whatever the original is.
    ZvSelection(const ZvSelection& other);
    ZvSelection& operator=(const ZvSelection& other);
    virtual ~ZvSelection();
    static ZvSelection Single(ZvEntity* entity);

    ZvDrawing* ParentDrawing() const { return m_drawing; }
    void SetParentDrawing(ZvDrawing* drawing) { m_drawing = drawing; }
    /// Seconds of the drawing's monotonic clock.
    double CreationTime() const { return m_creationTime; }
    /// Raised by every Clear and every successful insertion.
    uint32_t ChangeCount() const { return m_changeCount; }

    // --- insertion: true when the member is new. Without a drawing, error 10039 is reported and the entity's
    // is taken. ---
    bool Insert(const ZvEntity* entity);
    bool Insert(const ZvName& name);
    bool InsertIfExists(const ZvName& name);
    void Insert(int count, const ZvEntity* const* list);
    void Insert(const ZvSelection& other);
    /// Leaves out names without an entity; answers how many were inserted.
    int InsertCheckNulls(const ZvSelection& other);
    /// Between these (they nest) the caller guarantees that nothing is inserted twice and no duplicates are
    /// looked for.
    void BeginUniqueInsertion();
    void FinishUniqueInsertion();

    // --- removal, order kept ------------------------------------------------------------------------------
    bool Remove(const ZvName& name);
    bool Remove(const ZvEntity* entity);
    void Remove(int count, const ZvEntity* const* list);
    void Remove(const ZvSelection& other);
    /// Also gives up the role of the drawing's current selection.
    void Clear();
    /// Drops names without an entity, answers how many.
    int CropInvalidEntities();
    /// Drops invisible entities and those on invisible layers.
    int CropInvisibleEntities();
    /// Keeps what exists, is visible and is not erased.
    int CropToVisibleNonErased();

    // --- queries ------------------------------------------------------------------------------------------
    int Count() const { return int(m_names.size()); }
    bool IsEmpty() const { return m_names.empty(); }
    bool Contains(const ZvName& name) const;
    bool Contains(const ZvEntity* entity) const;
    /// -1 when not a member.
    int IndexOf(const ZvName& name) const;
    /// Whether the member still names an entity.
    bool Check(int index) const;
    bool Check(const ZvName& name) const;
    /// Null with an error report for a bad index or a name without an entity; the quiet forms do not report,
    /// and the unchecked one wants a valid index.
    ZvEntity* GetEntity(int index) const;
    ZvEntity* GetEntityQuiet(int index) const;
    ZvEntity* GetEntityQuietNoCheck(int index) const;
    ZvName GetName(int index) const;
    const std::vector<uint32_t>& Names() const { return m_names; }
    void GetValidEntities(std::vector<ZvEntity*>& entities) const;
    /// One entry a member, null where there is no entity.
    void GetAll(std::vector<ZvEntity*>& entities) const;
    /// Union of the members' bounds, cached until the set changes or RecalcBounds; not cached with a scale
    /// setup.
    ZvBounds3D GetBounds(const ZvScaleSetup* scale = nullptr) const;
    void RecalcBounds();
    /// Full codes of the members' kinds.
    std::set<uint32_t> QueryObjectTypes() const;
    /// The full code that all members share, 0 when they differ or there are none.
    uint32_t QueryHomogenousType() const;
    const std::set<ZvLayer*>& GetLayersUsed() const;
    void GetLayersList(std::vector<ZvLayer*>& layers) const;
    bool IsLayerUsed(ZvLayer* layer) const;
    void FreshenLayersUsed();
    /// Keep only members of the kinds (full codes).
    void FilterEntities(uint32_t type);
    void FilterEntities(const std::set<uint32_t>& types);
    /// The same members, in any order, of the same drawing.
    bool Equals(const ZvSelection& other) const;
    friend bool operator==(const ZvSelection& a, const ZvSelection& b) { return a.Equals(b); }
    /// True when the two have a member in common.
    bool PositiveUnion(const ZvSelection& other) const;
    /// Any other mode is a fatal error; `out` is then empty. `out` must be neither a nor b.
    static void Combine(const ZvSelection& a, const ZvSelection& b, ZvSelection& out, ZvSetCombineModes mode);
    /// Orders the members along a space-filling curve through the centres of their bounds.
    void ReorderSpatialCurve();

    // --- the drawing's current selection ------------------------------------------------------------------
    /// Marks the members as selected; called by the drawing for its current selection.
    void AssignToDrawing();
    void ClearFromDrawing();
    bool IsAssignedToDrawing() const { return m_assigned; }

    size_t MemUsage() const;

private:
    bool Append(uint32_t name);
    void FreshenIndex() const;
    template <class Keep>
    int CropTo(Keep keep);
    void Changed();
    void MarkSelected(uint32_t name, bool on) const;

    ZvDrawing* m_drawing = nullptr;
    double m_creationTime = 0;
    uint32_t m_changeCount = 0;
    uint32_t m_uniqueDepth = 0;
    std::vector<uint32_t> m_names;
    mutable PagedBitTree m_index;
    mutable bool m_indexStale = true;
    bool m_assigned = false;
    mutable bool m_boundsValid = false;
    mutable ZvBounds3D m_bounds;
    mutable bool m_layersValid = false;
    mutable std::set<ZvLayer*> m_layers;
};
