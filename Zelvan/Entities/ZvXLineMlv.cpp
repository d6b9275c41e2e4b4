// Parts as lists of vertices: the interface through which commands, importers and exporters read and replace them.
#include "Zelvan/Entities/ZvXLine.h"
#include <algorithm>

namespace {
bool AnyZ(const dvect<Vec4d>& vertices) {
    return std::any_of(vertices.begin(), vertices.end(), [](const Vec4d& v) { return v.z != 0; });
}
bool AnyM(const dvect<Vec4d>& vertices) {
    return std::any_of(vertices.begin(), vertices.end(), [](const Vec4d& v) { return v.w != 0; });
}
} // namespace

void ZvXLine::ClearDepths() {
    for (uint32_t i = 0; i < m_numParts; ++i)
        SetDepthRaw(i, 0);
}

bool ZvXLine::ReplaceKeepingParts(const dvect<Vec4d>& vertices) {
    if (vertices.size() != m_numVerts || m_numVerts == 0)
        return false;
    ClearDepths();
    return Set(m_numParts, MParts(), vertices, IsPolygon(), HasZ() || AnyZ(vertices),
               HasM() || AnyM(vertices), Is64() ? 1 : 0);
}

bool ZvXLine::LineVectorSetVertices(const dvect<Vec4d>& vertices) {
    if (vertices.size() == m_numVerts && m_numVerts)
        return ReplaceKeepingParts(vertices);
    if (m_numParts > 1 || vertices.size() < 2)
        return false;
    const uint32_t entry = MakePartEntry(0, IsPolygon() || (m_numParts && PClosed(0)));
    return Set(1, &entry, vertices, IsPolygon(), HasZ() || AnyZ(vertices), HasM() || AnyM(vertices));
}

void ZvXLine::MLVGetLinearVertices(dvect<Vec4d>& vertices) const {
    GetAllVertices(vertices);
}

bool ZvXLine::MLVSetLinearVertices(const dvect<Vec4d>& vertices) {
    return ReplaceKeepingParts(vertices);
}

bool ZvXLine::MLVGetPart(int part, dvect<Vec4d>& vertices, bool* closed) const {
    if (part < 0 || uint32_t(part) >= m_numParts)
        return false;
    vertices.resize(PLen(uint32_t(part)));
    ReadXYZM(PStart(uint32_t(part)), PLen(uint32_t(part)), vertices.data());
    if (closed)
        *closed = PIsRing(uint32_t(part));
    return true;
}

int ZvXLine::MLVGetPartInfo(int part, bool* closed, int* depth) const {
    if (part < 0 || uint32_t(part) >= m_numParts)
        return -1;
    if (closed)
        *closed = PClosed(uint32_t(part));
    if (depth) {
        EnsureDepths();
        *depth = PDepth(uint32_t(part));
    }
    return int(PLen(uint32_t(part)));
}

bool ZvXLine::ReplacePart(uint32_t part, uint32_t removed, const dvect<Vec4d>* vertices, bool closed) {
    // `removed` parts from `part` on go; the new one, if any, takes their place.
    std::vector<uint32_t> table;
    dvect<Vec4d> all;
    const uint32_t fresh = vertices ? uint32_t(vertices->size()) : 0;
    all.reserve(m_numVerts + fresh);
    const auto keep = [&](uint32_t from, uint32_t to) {
        for (uint32_t i = from; i < to; ++i) {
            const size_t at = all.size();
            table.push_back(MakePartEntry(uint32_t(at), PClosed(i)));
            all.resize(at + PLen(i));
            ReadXYZM(PStart(i), PLen(i), all.data() + at);
        }
    };
    keep(0, part);
    if (vertices) {
        table.push_back(MakePartEntry(uint32_t(all.size()), closed || IsPolygon()));
        for (const Vec4d& v : *vertices)
            all.push_back(v);
    }
    keep(part + removed, m_numParts);
    const bool storable = table.empty() || (table.back() & kBadPartTable) == 0;
    if (!storable)
        return false;
    const bool gainsZ = vertices && AnyZ(*vertices), gainsM = vertices && AnyM(*vertices);
    return Set(uint32_t(table.size()), table.data(), all, IsPolygon(), HasZ() || gainsZ, HasM() || gainsM,
               Is64() ? 1 : 0);
}

bool ZvXLine::MLVAddPart(const dvect<Vec4d>& vertices, bool closed) {
    return !vertices.empty() && ReplacePart(m_numParts, 0, &vertices, closed);
}

bool ZvXLine::MLVDeletePart(int part) {
    return part >= 0 && uint32_t(part) < m_numParts && ReplacePart(uint32_t(part), 1, nullptr, false);
}

bool ZvXLine::MLVSetPart(int part, const dvect<Vec4d>& vertices, bool closed) {
    return part >= 0 && uint32_t(part) < m_numParts && !vertices.empty() &&
           ReplacePart(uint32_t(part), 1, &vertices, closed);
}

bool ZvXLine::MLVSetParts(const std::vector<dvect<Vec4d>>& parts, const std::vector<bool>& closed) {
    if (parts.size() != closed.size())
        return false;
    std::vector<uint32_t> table;
    dvect<Vec4d> all;
    for (size_t i = 0; i < parts.size(); ++i) {
        const uint32_t entry = MakePartEntry(uint32_t(all.size()), closed[i] || IsPolygon());
        if (parts[i].empty() || (entry & kBadPartTable))
            return false;
        table.push_back(entry);
        for (const Vec4d& v : parts[i])
            all.push_back(v);
    }
    return Set(uint32_t(table.size()), table.data(), all, IsPolygon(), HasZ() || AnyZ(all),
               HasM() || AnyM(all), Is64() ? 1 : 0);
}

// --- compacting ----------------------------------------------------------------------------------------------------------

bool ZvXLine::RepackParts() {
    std::vector<uint32_t> table;
    dvect<Vec4d> all, part;
    for (uint32_t i = 0; i < m_numParts; ++i) {
        part.resize(PLen(i));
        ReadXYZM(PStart(i), PLen(i), part.data());
        const size_t start = all.size();
        for (const Vec4d& v : part)
            if (all.size() == start || all.back() != v)
                all.push_back(v);
        while (PIsRing(i) && all.size() > start + 1 && all.back() == all[start])
            all.pop_back();
        if (all.size() > start)
            table.push_back((PartEntry(i) & ~kStartMask) | MakePartEntry(uint32_t(start), false));
    }
    if (all.size() == m_numVerts && table.size() == m_numParts)
        return false;
    return Set(uint32_t(table.size()), table.data(), all, IsPolygon(), HasZ(), HasM(), Is64() ? 1 : -1);
}

void ZvXLine::Repack(bool ownBlock) {
    DropTriangles();
    if (ownBlock)
        DeserializeHard();
}
