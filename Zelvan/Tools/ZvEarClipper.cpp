#include "Zelvan/Tools/ZvEarClipper.h"
#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

/// Below this many nodes a plain walk over the ring is quicker than the z-order curve.
constexpr uint32_t kHashFrom = 64;

/// The upper 16 bits of both coordinates, interleaved.
uint32_t ZOrder(ZvGridPoint p) {
    const auto spread = [](uint32_t v) {
        v = (v | v << 8) & 0x00FF00FF;
        v = (v | v << 4) & 0x0F0F0F0F;
        v = (v | v << 2) & 0x33333333;
        return (v | v << 1) & 0x55555555;
    };
    const uint32_t x = uint32_t(p.x + (1 << 30)) >> 15, y = uint32_t(p.y + (1 << 30)) >> 15;
    return spread(x) | spread(y) << 1;
}

/// Twice the signed area, modulo 2^64: exact wherever the true value fits.
uint64_t TwiceArea(std::span<const ZvGridPoint> ring) {
    uint64_t twice = 0;
    for (size_t i = 2; i < ring.size(); ++i)
        twice += uint64_t(ZvGridPoint::Turn(ring[0], ring[i - 1], ring[i]));
    return twice;
}

uint64_t Magnitude(uint64_t v) {
    return int64_t(v) < 0 ? 0 - v : v;
}

} // namespace

bool ZvEarClipper::Clip(const Ring& outer, std::span<const Ring> holes, std::vector<uint32_t>& triangles) {
    m_nodes.clear();
    m_nodes.reserve(outer.count + holes.size() * 8);
    uint64_t wanted = Magnitude(TwiceArea(m_points.subspan(outer.start, outer.count)));
    const uint32_t start = AddRing(outer, true);
    std::vector<uint32_t> leftmost;
    for (const Ring& hole : holes) {
        const uint64_t area = Magnitude(TwiceArea(m_points.subspan(hole.start, hole.count)));
        if (area == 0)
            continue;
        wanted -= area;
        const uint32_t first = AddRing(hole, false);
        uint32_t left = first;
        EachNode(first, [&](uint32_t i) {
            const ZvGridPoint p = m_nodes[i].p, q = m_nodes[left].p;
            if (p.x < q.x || (p.x == q.x && p.y < q.y))
                left = i;
        });
        leftmost.push_back(left);
    }
    if (start == kNone || !JoinHoles(start, leftmost))
        return false;

    const size_t before = triangles.size();
    bool ok = ClipEars(start, triangles);
    uint64_t covered = 0;
    for (size_t i = before; i < triangles.size(); i += 3)
        covered += uint64_t(ZvGridPoint::Turn(m_points[triangles[i]], m_points[triangles[i + 1]],
                                              m_points[triangles[i + 2]]));
    ok = ok && covered == wanted;
    if (!ok)
        triangles.resize(before);
    return ok;
}

/// A circular list of the ring's vertices in the sense asked for; answers one of them.
uint32_t ZvEarClipper::AddRing(const Ring& ring, bool counterClockwise) {
    if (ring.count < 3)
        return kNone;
    const bool asGiven =
        (int64_t(TwiceArea(m_points.subspan(ring.start, ring.count))) > 0) == counterClockwise;
    const uint32_t base = uint32_t(m_nodes.size());
    for (uint32_t i = 0; i < ring.count; ++i) {
        Node node;
        node.point = ring.start + (asGiven ? i : ring.count - 1 - i);
        node.p = m_points[node.point];
        node.prev = base + (i ? i : ring.count) - 1;
        node.next = i + 1 < ring.count ? base + i + 1 : base;
        m_nodes.push_back(node);
    }
    return base;
}

// --- holes ---------------------------------------------------------------------------------------------------------------

bool ZvEarClipper::JoinHoles(uint32_t outer, const std::vector<uint32_t>& holes) {
    if (holes.empty())
        return true;
    std::vector<uint32_t> order = holes;
    // From left to right: what lies left of a hole is joined already.
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        const ZvGridPoint p = m_nodes[a].p, q = m_nodes[b].p;
        return p.x != q.x ? p.x < q.x : p.y < q.y;
    });
    MakeStrips(outer);
    for (const uint32_t hole : order) {
        const uint32_t at = FindBridge(hole);
        if (at == kNone)
            return false;
        EachNode(hole, [&](uint32_t i) { AddToStrips(i); });
        InsertBridge(at, hole);
    }
    m_strips.clear();
    return true;
}

void ZvEarClipper::MakeStrips(uint32_t outer) {
    int32_t lo = m_nodes[outer].p.y, hi = lo;
    double rise = 0;
    EachNode(outer, [&](uint32_t i) {
        const int32_t y = m_nodes[i].p.y;
        lo = std::min(lo, y), hi = std::max(hi, y);
        rise += std::abs(double(m_nodes[m_nodes[i].next].p.y) - y);
    });
    const double height = double(hi) - lo + 1, turns = std::max(1.0, rise / height / 8);
    const double count = std::max(1.0, double(m_nodes.size()) / 8 / turns);
    m_stripBase = lo;
    m_stripsPerUnit = count / height;
    m_strips.assign(size_t(count) + 1, {});
    EachNode(outer, [&](uint32_t i) { AddToStrips(i); });
}

uint32_t ZvEarClipper::Strip(int32_t y) const {
    const double s = (double(y) - m_stripBase) * m_stripsPerUnit;
    return uint32_t(std::clamp(s, 0.0, double(m_strips.size() - 1)));
}

void ZvEarClipper::AddToStrips(uint32_t node) {
    const int32_t y0 = m_nodes[node].p.y, y1 = m_nodes[m_nodes[node].next].p.y;
    const uint32_t to = Strip(std::max(y0, y1));
    for (uint32_t s = Strip(std::min(y0, y1)); s <= to; ++s)
        m_strips[s].push_back(node);
}

/// Whether the direction from the node to p leads into the ring (or along its border).
bool ZvEarClipper::IsInCone(uint32_t node, ZvGridPoint p) const {
    const Node& n = m_nodes[node];
    const int64_t before = ZvGridPoint::Turn(m_nodes[n.prev].p, n.p, p);
    const int64_t after = ZvGridPoint::Turn(n.p, m_nodes[n.next].p, p);
    return TurnAt(n) > 0 ? before >= 0 && after >= 0 : before >= 0 || after >= 0;
}

/// The node that a bridge from the hole's leftmost node can be built to: of the ring's vertices in the triangle between that node,
/// the nearest edge left of it and an end of that edge, the one closest in direction to due left. None when rings cross.
uint32_t ZvEarClipper::FindBridge(uint32_t hole) const {
    const ZvGridPoint m = m_nodes[hole].p;
    uint32_t edge = kNone;
    double nearest = 0;
    for (const uint32_t i : m_strips[Strip(m.y)]) {
        const ZvGridPoint a = m_nodes[i].p, b = m_nodes[m_nodes[i].next].p;
        // The ring lies left of its edges: only those that run down face the hole.
        if (a.y < m.y || b.y > m.y || a.y == b.y || ZvGridPoint::Turn(a, b, m) < 0)
            continue;
        const double x = a.x + (double(m.y) - a.y) * (double(b.x) - a.x) / (double(b.y) - a.y);
        if (edge == kNone || x > nearest)
            edge = i, nearest = x;
    }
    if (edge == kNone)
        return kNone;
    const ZvGridPoint a = m_nodes[edge].p, b = m_nodes[m_nodes[edge].next].p;
    const bool up = int64_t(a.y) - m.y < int64_t(m.y) - b.y;
    const ZvGridPoint end = up ? a : b;
    const auto inTriangle = [&](ZvGridPoint p) {
        if (up ? p.y < m.y || p.y > end.y : p.y > m.y || p.y < end.y)
            return false;
        const int64_t side = up ? ZvGridPoint::Turn(m, end, p) : ZvGridPoint::Turn(end, m, p);
        return p.x <= m.x && side >= 0 && ZvGridPoint::Turn(a, b, p) >= 0;
    };
    uint32_t best = kNone;
    const ZvGridPoint ahead = m_nodes[m_nodes[hole].next].p;
    const uint32_t to = Strip(std::max(m.y, end.y));
    for (uint32_t s = Strip(std::min(m.y, end.y)); s <= to; ++s)
        for (const uint32_t i : m_strips[s]) {
            const ZvGridPoint p = m_nodes[i].p;
            if (!inTriangle(p) || !IsInCone(i, p == m ? ahead : m))
                continue;
            if (best != kNone) {
                const ZvGridPoint q = m_nodes[best].p;
                const int64_t mine = std::abs(int64_t(m.y) - p.y) * (int64_t(m.x) - q.x);
                const int64_t its = std::abs(int64_t(m.y) - q.y) * (int64_t(m.x) - p.x);
                if (mine > its || (mine == its && p.x <= q.x))
                    continue;
            }
            best = i;
        }
    return best;
}

/// Goes from `at` over the bridge round the hole and back: both ends get a second node.
void ZvEarClipper::InsertBridge(uint32_t at, uint32_t hole) {
    const uint32_t at2 = uint32_t(m_nodes.size()), hole2 = at2 + 1;
    const Node a = m_nodes[at], b = m_nodes[hole];
    m_nodes.push_back(a);
    m_nodes.push_back(b);
    m_nodes[at].next = hole;
    m_nodes[hole].prev = at;
    m_nodes[at2].prev = hole2;
    m_nodes[a.next].prev = at2;
    m_nodes[hole2].next = at2;
    m_nodes[b.prev].next = hole2;
    for (const uint32_t node : {at, at2, hole2})
        AddToStrips(node);
}

// --- ears ----------------------------------------------------------------------------------------------------------------

void ZvEarClipper::LinkByZ(uint32_t start) {
    std::vector<uint32_t> order;
    EachNode(start, [&](uint32_t i) {
        m_nodes[i].z = ZOrder(m_nodes[i].p);
        order.push_back(i);
    });
    std::sort(order.begin(), order.end(),
              [&](uint32_t a, uint32_t b) { return m_nodes[a].z < m_nodes[b].z; });
    for (size_t i = 0; i < order.size(); ++i) {
        m_nodes[order[i]].prevZ = i ? order[i - 1] : kNone;
        m_nodes[order[i]].nextZ = i + 1 < order.size() ? order[i + 1] : kNone;
    }
}

void ZvEarClipper::Remove(uint32_t node) {
    const Node& n = m_nodes[node];
    m_nodes[n.prev].next = n.next;
    m_nodes[n.next].prev = n.prev;
    if (!m_hashed)
        return;
    if (n.prevZ != kNone)
        m_nodes[n.prevZ].nextZ = n.nextZ;
    if (n.nextZ != kNone)
        m_nodes[n.nextZ].prevZ = n.prevZ;
}

/// Whether the ring comes into the open triangle at p.
bool ZvEarClipper::Blocks(const Node& n, ZvGridPoint a, ZvGridPoint b, ZvGridPoint c) const {
    const int64_t ab = ZvGridPoint::Turn(a, b, n.p), bc = ZvGridPoint::Turn(b, c, n.p),
                  ca = ZvGridPoint::Turn(c, a, n.p);
    if (ab < 0 || bc < 0 || ca < 0)
        return false;
    // On a side or corner: only edges that lead inwards from there count.
    for (const uint32_t to : {n.prev, n.next}) {
        const ZvGridPoint q = m_nodes[to].p;
        if ((ab > 0 || ZvGridPoint::Turn(a, b, q) > 0) && (bc > 0 || ZvGridPoint::Turn(b, c, q) > 0) &&
            (ca > 0 || ZvGridPoint::Turn(c, a, q) > 0))
            return true;
    }
    return ab > 0 && bc > 0 && ca > 0;
}

bool ZvEarClipper::IsEar(uint32_t node) const {
    const Node& n = m_nodes[node];
    const ZvGridPoint a = m_nodes[n.prev].p, b = n.p, c = m_nodes[n.next].p;
    const ZvGridPoint lo{std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})};
    const ZvGridPoint hi{std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})};
    const auto blocked = [&](uint32_t i) {
        const Node& p = m_nodes[i];
        return p.p.x >= lo.x && p.p.x <= hi.x && p.p.y >= lo.y && p.p.y <= hi.y && i != n.prev &&
               i != n.next && Blocks(p, a, b, c);
    };
    if (!m_hashed) {
        for (uint32_t i = m_nodes[n.next].next; i != n.prev; i = m_nodes[i].next)
            if (blocked(i))
                return false;
        return true;
    }
    const uint32_t zLo = ZOrder(lo), zHi = ZOrder(hi);
    uint32_t down = n.prevZ, up = n.nextZ;
    while (true) {
        const bool hasDown = down != kNone && m_nodes[down].z >= zLo,
                   hasUp = up != kNone && m_nodes[up].z <= zHi;
        if (!hasDown && !hasUp)
            return true;
        if ((hasDown && blocked(down)) || (hasUp && blocked(up)))
            return false;
        down = hasDown ? m_nodes[down].prevZ : kNone;
        up = hasUp ? m_nodes[up].nextZ : kNone;
    }
}

bool ZvEarClipper::ClipEars(uint32_t start, std::vector<uint32_t>& triangles) {
    uint32_t left = 0;
    EachNode(start, [&](uint32_t) { ++left; });
    m_hashed = left >= kHashFrom;
    if (m_hashed)
        LinkByZ(start);
    uint32_t node = start, sinceLast = 0;
    while (left >= 3 && sinceLast <= left) {
        const Node n = m_nodes[node];
        const int64_t turn = TurnAt(n);
        // Nodes where the ring goes straight on, back or nowhere bound no area.
        if (turn == 0 || (turn > 0 && (left == 3 || IsEar(node)))) {
            if (turn > 0)
                triangles.insert(triangles.end(), {m_nodes[n.prev].point, n.point, m_nodes[n.next].point});
            Remove(node);
            --left;
            sinceLast = 0;
            // Skipping the neighbour makes fewer slivers.
            node = turn > 0 ? m_nodes[n.next].next : n.prev;
            continue;
        }
        node = n.next;
        ++sinceLast;
    }
    return left < 3;
}
