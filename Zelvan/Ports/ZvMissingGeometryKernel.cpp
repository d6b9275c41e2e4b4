#include "Zelvan/Ports/ZvMissingGeometryKernel.h"
#include "Zelvan/ZvStrings.h"

namespace {

bool Refuse(std::string& why, ZvKernelPolygons* out = nullptr) {
    why = ZvStrings::Get(ZvStr::KernelMissing);
    if (out)
        out->clear();
    return false;
}

} // namespace

bool ZvMissingGeometryKernel::Boolean(ZvBooleanOp, const ZvKernelPolygons&, const ZvKernelPolygons&,
                                      ZvKernelPolygons& out, std::string& why) {
    return Refuse(why, &out);
}

bool ZvMissingGeometryKernel::Buffer(const ZvKernelPolygons&, const ZvKernelLines&, double, int,
                                     ZvKernelPolygons& out, std::string& why) {
    return Refuse(why, &out);
}

bool ZvMissingGeometryKernel::Simplify(const ZvKernelPolygons&, double, ZvKernelPolygons& out,
                                       std::string& why) {
    return Refuse(why, &out);
}

bool ZvMissingGeometryKernel::Polygonize(const ZvKernelLines&, ZvKernelPolygons& out, std::string& why) {
    return Refuse(why, &out);
}

bool ZvMissingGeometryKernel::IsValid(const ZvKernelPolygon&, std::string& why) {
    return Refuse(why);
}

bool ZvMissingGeometryKernel::MakeValid(const ZvKernelPolygons&, ZvKernelPolygons& out, std::string& why) {
    return Refuse(why, &out);
}

IZvGeometryKernel& ZvMissingGeometryKernel::Or(IZvGeometryKernel* kernel) {
    static ZvMissingGeometryKernel missing;
    return kernel ? *kernel : missing;
}
