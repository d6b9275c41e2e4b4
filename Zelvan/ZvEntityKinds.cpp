#include "Zelvan/ZvEntityKinds.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"

namespace {

template <class T>
ZvServer::Kind Kind(uint16_t code, const char* typeName) {
    const ZvServer::Factory make = []() -> std::unique_ptr<ZvEntity> { return std::make_unique<T>(); };
    return {ZvEntityCode::kBuiltInClient, code, typeName, make};
}

} // namespace

// One line a kind. Codes and names stand in files.
std::vector<ZvServer::Kind> ZvBuiltInKinds() {
    std::vector<ZvServer::Kind> kinds = {
        Kind<ZvMultiPoint>(ZvEntityCode::MultiPoint, "ZvMultiPoint"),
        Kind<ZvPointEnt>(ZvEntityCode::PointEnt, "ZvPointEnt"),
        Kind<ZvRawCompound>(ZvEntityCode::RawCompound, "ZvRawCompound"),
        Kind<ZvXLine>(ZvEntityCode::XLine, "ZvXLine"),
    };
    // Records of older kinds become polylines as they are read.
    for (const ZvXLine::OldKind& old : ZvXLine::OldKinds())
        kinds.push_back({ZvEntityCode::kBuiltInClient, old.entityCode, old.typeName, old.make});
    return kinds;
}
