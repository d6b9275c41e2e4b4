#include "GdalPeer.h"
#include "Maps.h"
#include "Report.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/Platform.h"
#include <malloc.h>
#include <memory>

namespace {

// Bytes in use on the heap, the allocator's own headers included, and straight from the system.
double HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd) + double(ZvPlatform::MappedBytes());
}

} // namespace

void BenchMemory(Report& report) {
    report.Heading("Memory of a loaded drawing, everything counted, bytes a vertex (GDAL: kept features with "
                   "the same attributes)");
    for (BenchMap* map : BenchMaps::Get().All()) {
        const std::string& n = map->name;
        if (map->native[0].empty() || map->flatGeobuf.empty())
            continue;
        malloc_trim(0);
        double before = HeapBytes();
        {
            std::string why;
            ZvDrawing drawing;
            const auto file = ZvCore::DiskFile::Open(map->native[0], ZvCore::DiskFile::Mode::Read, why);
            {
                ZvNativeFile native;
                (void)native.ReadFile(&drawing, file.get());
            }
            report.Set(n + " memory", (HeapBytes() - before) / double(map->vertices));
        }
        before = HeapBytes();
        GdalPeer::Read(map->flatGeobuf);
        report.Set(n + " memory gdal", (HeapBytes() - before) / double(map->vertices));
        GdalPeer::Forget();
        report.Ratio(n, n + " memory", n + " memory gdal", 2, "B ", 1);
    }
    report.Line("sizeof(ZvXLine) = %zu: virtual table 8, name 4, spatial node 4, owner 8, colour 6, flags 2 "
                "(entity: 32);",
                sizeof(ZvXLine));
    report.Line("  line width 4, line type 2, brush 8; flags 1, exponents 3, micro bounds 2, parts 4, "
                "vertices 4, 4 to align, block 8");
    report.Line("sizeof(ZvBNode) = %zu, one for some 30 entities", sizeof(ZvBNode));
}
