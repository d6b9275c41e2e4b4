#include "BoostPeer.h"

#ifdef ZELVAN_BENCH_HAVE_BOOST
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

namespace {
using Point = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Point>;
using Value = std::pair<Box, uint32_t>;

Box ToBox(const ZvBounds2D& b) {
    return {Point(b.minX, b.minY), Point(b.maxX, b.maxY)};
}
} // namespace

struct BoostPeer::Impl {
    bgi::rtree<Value, bgi::rstar<16>> dynamic;
    bgi::rtree<Value, bgi::rstar<16>> packed;

    template <class Tree>
    static size_t Query(const Tree& tree, const std::vector<ZvBounds2D>& windows) {
        size_t hits = 0;
        std::vector<Value> found;
        for (const ZvBounds2D& window : windows) {
            found.clear();
            tree.query(bgi::intersects(ToBox(window)), std::back_inserter(found));
            hits += found.size();
        }
        return hits;
    }
};

bool BoostPeer::IsHere() {
    return true;
}

void BoostPeer::InsertDynamic(const std::vector<ZvBounds2D>& boxes) {
    m_impl->dynamic.clear();
    uint32_t i = 0;
    for (const ZvBounds2D& box : boxes)
        m_impl->dynamic.insert({ToBox(box), i++});
}

void BoostPeer::BuildPacked(const std::vector<ZvBounds2D>& boxes) {
    std::vector<Value> values;
    uint32_t i = 0;
    for (const ZvBounds2D& box : boxes)
        values.push_back({ToBox(box), i++});
    m_impl->packed = decltype(m_impl->packed)(values);
}

size_t BoostPeer::QueryDynamic(const std::vector<ZvBounds2D>& windows) const {
    return Impl::Query(m_impl->dynamic, windows);
}
size_t BoostPeer::QueryPacked(const std::vector<ZvBounds2D>& windows) const {
    return Impl::Query(m_impl->packed, windows);
}
#else
struct BoostPeer::Impl {};
bool BoostPeer::IsHere() {
    return false;
}
void BoostPeer::InsertDynamic(const std::vector<ZvBounds2D>&) {}
void BoostPeer::BuildPacked(const std::vector<ZvBounds2D>&) {}
size_t BoostPeer::QueryDynamic(const std::vector<ZvBounds2D>&) const {
    return 0;
}
size_t BoostPeer::QueryPacked(const std::vector<ZvBounds2D>&) const {
    return 0;
}
#endif

BoostPeer::BoostPeer() : m_impl(std::make_unique<Impl>()) {}
BoostPeer::~BoostPeer() = default;
