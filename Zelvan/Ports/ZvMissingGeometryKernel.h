#pragma once
#include "Zelvan/Ports/IZvGeometryKernel.h"

/// Stands in where there is no kernel: refuses everything and says so.
class ZV_API ZvMissingGeometryKernel : public IZvGeometryKernel {
public:
    bool Boolean(ZvBooleanOp, const ZvKernelPolygons&, const ZvKernelPolygons&, ZvKernelPolygons& out,
                 std::string& why) override;
    bool Buffer(const ZvKernelPolygons&, const ZvKernelLines&, double, int, ZvKernelPolygons& out,
                std::string& why) override;
    bool Simplify(const ZvKernelPolygons&, double, ZvKernelPolygons& out, std::string& why) override;
    bool Polygonize(const ZvKernelLines&, ZvKernelPolygons& out, std::string& why) override;
    bool IsValid(const ZvKernelPolygon&, std::string& why) override;
    bool MakeValid(const ZvKernelPolygons&, ZvKernelPolygons& out, std::string& why) override;
    /// `kernel`, or this stand-in for null.
    static IZvGeometryKernel& Or(IZvGeometryKernel* kernel);
};
