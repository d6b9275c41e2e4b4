#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <string>
#include <vector>

/// A polygon with holes: the first ring is the outer one. Rings do not repeat their first point.
struct ZvKernelPolygon {
    std::vector<std::vector<Vec2d>> rings;
};
using ZvKernelPolygons = std::vector<ZvKernelPolygon>;
using ZvKernelLines = std::vector<std::vector<Vec2d>>;

enum class ZvBooleanOp { Union, Intersection, Difference, SymmetricDifference };

/// Polygon operations in the plane. All return false with `why` set when the input is not usable or the work
/// fails; `out` is then empty. Results have outer rings counter-clockwise and holes clockwise.
class ZV_API IZvGeometryKernel {
public:
    virtual ~IZvGeometryKernel() = default;
    virtual bool Boolean(ZvBooleanOp op, const ZvKernelPolygons& a, const ZvKernelPolygons& b,
                         ZvKernelPolygons& out, std::string& why) = 0;
    /// Negative distances shrink. Round corners; `segments` to a quarter circle.
    virtual bool Buffer(const ZvKernelPolygons& polygons, const ZvKernelLines& lines, double distance,
                        int segments, ZvKernelPolygons& out, std::string& why) = 0;
    /// Keeps rings free of crossings; no vertex of the input is farther than `tolerance` from the result.
    virtual bool Simplify(const ZvKernelPolygons& polygons, double tolerance, ZvKernelPolygons& out,
                          std::string& why) = 0;
    /// The areas that lines enclose. Lines are cut where they cross.
    virtual bool Polygonize(const ZvKernelLines& lines, ZvKernelPolygons& out, std::string& why) = 0;
    /// False with the first fault and its place in `why`.
    virtual bool IsValid(const ZvKernelPolygon& polygon, std::string& why) = 0;
    virtual bool MakeValid(const ZvKernelPolygons& polygons, ZvKernelPolygons& out, std::string& why) = 0;
};
