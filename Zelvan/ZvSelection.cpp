#include "Zelvan/ZvSelection.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

namespace {

constexpr int kNoDrawing = 10039;

/// Distance along a Hilbert curve of order 16 through the square of 65536 x 65536 cells.
uint32_t HilbertIndex(uint32_t x, uint32_t y) {
    uint32_t index = 0;
    for (uint32_t s = 1u << 15; s; s >>= 1) {
        const uint32_t rx = (x & s) ? 1 : 0, ry = (y & s) ? 1 : 0;
        index = index << 2 | ((3 * rx) ^ ry);
        if (ry == 0) {
            if (rx == 1)
                x = 65535 - x, y = 65535 - y;
            std::swap(x, y);
        }
    }
    return index;
}

} // namespace

ZvSelection::ZvSelection(ZvDrawing* drawing)
    : m_drawing(drawing),
      m_creationTime((drawing ? drawing->Clock() : IZvClock::System()).MonotonicSeconds()) {}

ZvSelection::ZvSelection(ZvDrawing* drawing, const pvect<ZvEntity*>& entities) : ZvSelection(drawing) {
    Insert(int(entities.size()), entities.data());
}

ZvSelection::ZvSelection(const ZvSelection& other) : ZvSelection(other.m_drawing) {
    m_names = other.m_names;
}

ZvSelection& ZvSelection::operator=(const ZvSelection& other) {
    if (this == &other)
        return *this;
    const bool wasAssigned = m_assigned;
    Clear();
    m_drawing = other.m_drawing;
    m_names = other.m_names;
    if (wasAssigned)
        AssignToDrawing();
    return *this;
}

ZvSelection::~ZvSelection() {
    ClearFromDrawing();
}

ZvSelection ZvSelection::Single(ZvEntity* entity) {
    ZvSelection selection(entity ? entity->ParentDrawing() : nullptr);
    selection.Insert(entity);
    return selection;
}

// --- insertion --------------------------------------------------------------------------------------------

bool ZvSelection::Insert(const ZvEntity* entity) {
    if (!entity || entity->Name32() == 0)
        return false;
    if (!m_drawing) {
        ZvErrors::Report(kNoDrawing, "ZvSelection.Insert");
        m_drawing = entity->ParentDrawing();
    }
    return Append(entity->Name32());
}

bool ZvSelection::Insert(const ZvName& name) {
    return !name.IsNull() && Append(name.value);
}

bool ZvSelection::InsertIfExists(const ZvName& name) {
    return m_drawing && m_drawing->NameTable().Exists(name) && Append(name.value);
}

void ZvSelection::Insert(int count, const ZvEntity* const* list) {
    for (int i = 0; i < count; ++i)
        Insert(list[i]);
}

void ZvSelection::Insert(const ZvSelection& other) {
    if (!m_drawing)
        m_drawing = other.m_drawing;
    if (&other == this)
        return;
    for (uint32_t name : other.m_names)
        Append(name);
}

int ZvSelection::InsertCheckNulls(const ZvSelection& other) {
    if (!m_drawing)
        m_drawing = other.m_drawing;
    int inserted = 0;
    if (&other != this)
        for (uint32_t name : other.m_names)
            inserted += InsertIfExists(ZvName(name));
    return inserted;
}

void ZvSelection::BeginUniqueInsertion() {
    ++m_uniqueDepth;
}

void ZvSelection::FinishUniqueInsertion() {
    if (m_uniqueDepth)
        --m_uniqueDepth;
}

bool ZvSelection::Append(uint32_t name) {
    if (m_uniqueDepth)
        m_indexStale = true;
    else if (Contains(ZvName(name)))
        return false;
    m_names.push_back(name);
    if (!m_indexStale)
        m_index.Set(name, true);
    Changed();
    MarkSelected(name, true);
    return true;
}

void ZvSelection::Changed() {
    ++m_changeCount;
    m_boundsValid = m_layersValid = false;
}

// --- removal ----------------------------------------------------------------------------------------------

/// Keeps the members for which `keep(name)` holds, in their order; answers how many went.
template <class Keep>
int ZvSelection::CropTo(Keep keep) {
    size_t kept = 0;
    const size_t before = m_names.size();
    for (size_t i = 0; i < before; ++i) {
        const uint32_t name = m_names[i];
        if (keep(name)) {
            m_names[kept++] = name;
            continue;
        }
        if (!m_indexStale)
            m_index.Set(name, false);
        MarkSelected(name, false);
    }
    m_names.resize(kept);
    if (kept != before)
        m_boundsValid = m_layersValid = false;
    return int(before - kept);
}

bool ZvSelection::Remove(const ZvName& name) {
    if (!Contains(name))
        return false;
    CropTo([&](uint32_t member) { return member != name.value; });
    return true;
}

bool ZvSelection::Remove(const ZvEntity* entity) {
    return entity && Remove(entity->Name());
}

void ZvSelection::Remove(int count, const ZvEntity* const* list) {
    ZvSelection leaving(m_drawing);
    for (int i = 0; i < count; ++i)
        if (list[i])
            leaving.Insert(list[i]->Name());
    Remove(leaving);
}

void ZvSelection::Remove(const ZvSelection& other) {
    if (&other == this)
        CropTo([](uint32_t) { return false; });
    else
        CropTo([&](uint32_t name) { return !other.Contains(ZvName(name)); });
}

void ZvSelection::Clear() {
    ClearFromDrawing();
    m_names.clear();
    m_index.Clear();
    m_indexStale = true;
    m_layers.clear();
    Changed();
}

int ZvSelection::CropInvalidEntities() {
    return CropTo([&](uint32_t name) { return Check(ZvName(name)); });
}

int ZvSelection::CropInvisibleEntities() {
    return CropTo([&](uint32_t name) {
        const ZvEntity* entity = m_drawing ? m_drawing->GetEntity(ZvName(name)) : nullptr;
        const ZvLayer* layer = entity ? entity->GetLayer() : nullptr;
        return !entity || (entity->IsVisible() && (!layer || layer->IsVisible()));
    });
}

int ZvSelection::CropToVisibleNonErased() {
    return CropTo([&](uint32_t name) {
               const ZvEntity* entity = m_drawing ? m_drawing->GetEntity(ZvName(name)) : nullptr;
               return entity && !entity->IsErased();
           }) +
           CropInvisibleEntities();
}

// --- membership -------------------------------------------------------------------------------------------

bool ZvSelection::Contains(const ZvName& name) const {
    if (m_names.size() < kIndexThreshold)
        return std::find(m_names.begin(), m_names.end(), name.value) != m_names.end();
    FreshenIndex();
    return m_index.Get(name.value);
}

bool ZvSelection::Contains(const ZvEntity* entity) const {
    return entity && !entity->Name().IsNull() && Contains(entity->Name());
}

void ZvSelection::FreshenIndex() const {
    if (!m_indexStale)
        return;
    m_index.Clear();
    for (uint32_t name : m_names)
        m_index.Set(name, true);
    m_indexStale = false;
}

int ZvSelection::IndexOf(const ZvName& name) const {
    if (!Contains(name))
        return -1;
    return int(std::find(m_names.begin(), m_names.end(), name.value) - m_names.begin());
}

bool ZvSelection::Check(int index) const {
    return GetEntityQuiet(index) != nullptr;
}

bool ZvSelection::Check(const ZvName& name) const {
    return m_drawing && m_drawing->NameTable().Exists(name);
}

ZvEntity* ZvSelection::GetEntity(int index) const {
    ZvEntity* entity = GetEntityQuiet(index);
    if (!entity)
        ZvErrors::Report(ZvErrorCode::NameTable, "ZvSelection.GetEntity");
    return entity;
}

ZvEntity* ZvSelection::GetEntityQuiet(int index) const {
    return index >= 0 && size_t(index) < m_names.size() ? GetEntityQuietNoCheck(index) : nullptr;
}

ZvEntity* ZvSelection::GetEntityQuietNoCheck(int index) const {
    return m_drawing ? m_drawing->GetEntity(ZvName(m_names[size_t(index)])) : nullptr;
}

ZvName ZvSelection::GetName(int index) const {
    return index >= 0 && size_t(index) < m_names.size() ? ZvName(m_names[size_t(index)]) : ZvName();
}

void ZvSelection::GetValidEntities(std::vector<ZvEntity*>& entities) const {
    for (int i = 0; i < Count(); ++i)
        if (ZvEntity* entity = GetEntityQuietNoCheck(i))
            entities.push_back(entity);
}

void ZvSelection::GetAll(std::vector<ZvEntity*>& entities) const {
    for (int i = 0; i < Count(); ++i)
        entities.push_back(GetEntityQuietNoCheck(i));
}

// --- what the members have in common ----------------------------------------------------------------------

ZvBounds3D ZvSelection::GetBounds(const ZvScaleSetup* scale) const {
    if (!scale && m_boundsValid)
        return m_bounds;
    ZvBounds3D bounds;
    for (int i = 0; i < Count(); ++i)
        if (const ZvEntity* entity = GetEntityQuietNoCheck(i))
            bounds.ExpandToFit(scale ? entity->Bounds3D(*scale) : entity->Bounds3D());
    if (!scale) {
        m_bounds = bounds;
        m_boundsValid = true;
    }
    return bounds;
}

void ZvSelection::RecalcBounds() {
    m_boundsValid = false;
}

std::set<uint32_t> ZvSelection::QueryObjectTypes() const {
    std::set<uint32_t> types;
    for (int i = 0; i < Count(); ++i)
        if (const ZvEntity* entity = GetEntityQuietNoCheck(i))
            types.insert(entity->GetFullCode());
    return types;
}

uint32_t ZvSelection::QueryHomogenousType() const {
    const auto types = QueryObjectTypes();
    return types.size() == 1 ? *types.begin() : 0;
}

const std::set<ZvLayer*>& ZvSelection::GetLayersUsed() const {
    if (!m_layersValid) {
        m_layers.clear();
        for (int i = 0; i < Count(); ++i)
            if (const ZvEntity* entity = GetEntityQuietNoCheck(i); entity && entity->GetLayer())
                m_layers.insert(entity->GetLayer());
        m_layersValid = true;
    }
    return m_layers;
}

void ZvSelection::FreshenLayersUsed() {
    m_layersValid = false;
    GetLayersUsed();
}

void ZvSelection::GetLayersList(std::vector<ZvLayer*>& layers) const {
    const auto& used = GetLayersUsed();
    layers.insert(layers.end(), used.begin(), used.end());
    std::sort(layers.end() - ptrdiff_t(used.size()), layers.end(),
              [](const ZvLayer* a, const ZvLayer* b) { return a->GetTableIndex() < b->GetTableIndex(); });
}

bool ZvSelection::IsLayerUsed(ZvLayer* layer) const {
    return GetLayersUsed().count(layer) != 0;
}

void ZvSelection::FilterEntities(uint32_t type) {
    FilterEntities(std::set<uint32_t>{type});
}

void ZvSelection::FilterEntities(const std::set<uint32_t>& types) {
    CropTo([&](uint32_t name) {
        const ZvEntity* entity = m_drawing ? m_drawing->GetEntity(ZvName(name)) : nullptr;
        return entity && types.count(entity->GetFullCode());
    });
}

// --- set operations ---------------------------------------------------------------------------------------

bool ZvSelection::Equals(const ZvSelection& other) const {
    return m_drawing == other.m_drawing && m_names.size() == other.m_names.size() &&
           std::all_of(m_names.begin(), m_names.end(), [&](uint32_t n) { return other.Contains(ZvName(n)); });
}

bool ZvSelection::PositiveUnion(const ZvSelection& other) const {
    return std::any_of(m_names.begin(), m_names.end(), [&](uint32_t n) { return other.Contains(ZvName(n)); });
}

void ZvSelection::Combine(const ZvSelection& a, const ZvSelection& b, ZvSelection& out,
                          ZvSetCombineModes mode) {
    out.Clear();
    if (!out.m_drawing)
        out.m_drawing = a.m_drawing ? a.m_drawing : b.m_drawing;
    const auto take = [&out](const ZvSelection& from, const ZvSelection& other, bool wanted) {
        for (uint32_t name : from.m_names)
            if (other.Contains(ZvName(name)) == wanted)
                out.Append(name);
    };
    switch (mode) {
    case ZvSetCombineModes::Union:
        out.Insert(a);
        out.Insert(b);
        return;
    case ZvSetCombineModes::AWithoutB:
        return take(a, b, false);
    case ZvSetCombineModes::BWithoutA:
        return take(b, a, false);
    case ZvSetCombineModes::Intersection:
        return take(a, b, true);
    case ZvSetCombineModes::SymmetricDifference:
        take(a, b, false);
        return take(b, a, false);
    case ZvSetCombineModes::OnlyA:
        return out.Insert(a);
    case ZvSetCombineModes::OnlyB:
        return out.Insert(b);
    }
    ZvErrors::Fatal("ZvSelection.Combine: unknown mode");
}

void ZvSelection::ReorderSpatialCurve() {
    const ZvBounds3D all = GetBounds();
    if (all.IsNull())
        return;
    const double size = std::max({all.Width(), all.Height(), 1e-300});
    std::vector<std::pair<uint32_t, uint32_t>> order; // curve index, name
    order.reserve(m_names.size());
    for (uint32_t name : m_names) {
        uint32_t index = UINT32_MAX; // members without an entity go last
        if (const ZvEntity* entity = m_drawing->GetEntity(ZvName(name))) {
            const ZvBounds2D box = entity->Bounds2D();
            const auto cell = [&](double value, double min) {
                return uint32_t(std::clamp((value - min) / size * 65535.0, 0.0, 65535.0));
            };
            if (!box.IsNull())
                index = HilbertIndex(cell((box.minX + box.maxX) / 2, all.minX),
                                     cell((box.minY + box.maxY) / 2, all.minY));
        }
        order.emplace_back(index, name);
    }
    std::stable_sort(order.begin(), order.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (size_t i = 0; i < order.size(); ++i)
        m_names[i] = order[i].second;
}

// --- the drawing's current selection ----------------------------------------------------------------------

void ZvSelection::AssignToDrawing() {
    if (!m_drawing || m_assigned)
        return;
    m_assigned = true;
    for (uint32_t name : m_names)
        MarkSelected(name, true);
}

void ZvSelection::ClearFromDrawing() {
    if (!m_assigned)
        return;
    for (uint32_t name : m_names)
        MarkSelected(name, false);
    m_assigned = false;
}

void ZvSelection::MarkSelected(uint32_t name, bool on) const {
    if (!m_assigned)
        return;
    if (ZvEntity* entity = m_drawing->GetEntity(ZvName(name)))
        entity->SetSelected(on);
    else
        m_drawing->NameTable().SetSelected(ZvName(name), false);
}

size_t ZvSelection::MemUsage() const {
    return sizeof(*this) + m_names.capacity() * sizeof(uint32_t) + m_index.MemUsage();
}
