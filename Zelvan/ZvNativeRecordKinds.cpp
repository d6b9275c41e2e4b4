#include "Zelvan/ZvNativeRecordKinds.h"
#include "Zelvan/Tables/ZvBitmapRec.h"
#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Tables/ZvDataRec.h"
#include "Zelvan/Tables/ZvDimStyle.h"
#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvLineTypeRec.h"
#include "Zelvan/Tables/ZvNamedView.h"
#include "Zelvan/Tables/ZvPaperPage.h"
#include "Zelvan/Tables/ZvProgram.h"
#include "Zelvan/Tables/ZvSelectionVolume.h"
#include "Zelvan/Tables/ZvTextStyle.h"
#include "Zelvan/Tables/ZvTexture.h"
#include "Zelvan/Tables/ZvUcs.h"
#include "Zelvan/Tables/ZvXRef.h"

namespace {

template <class Record>
std::unique_ptr<ZvTableRecord> Make() {
    return std::make_unique<Record>();
}

struct Kind {
    ZvTableCode::Code code;
    std::unique_ptr<ZvTableRecord> (*make)();
};
constexpr Kind kKinds[] = {
    {ZvTableCode::Bitmap, Make<ZvBitmapRec>},
    {ZvTableCode::LineType, Make<ZvLineTypeRec>},
    {ZvTableCode::Block, Make<ZvBlock>},
    {ZvTableCode::TextStyle, Make<ZvTextStyle>},
    {ZvTableCode::Program, Make<ZvProgram>},
    {ZvTableCode::Texture, Make<ZvTexture>},
    {ZvTableCode::DimStyle, Make<ZvDimStyle>},
    {ZvTableCode::Layer, Make<ZvLayer>},
    {ZvTableCode::Paper, Make<ZvPaperPage>},
    {ZvTableCode::Ucs, Make<ZvUcs>},
    {ZvTableCode::XRef, Make<ZvXRef>},
    {ZvTableCode::Data, Make<ZvDataRec>},
    {ZvTableCode::Layout, Make<ZvLayout>},
    {ZvTableCode::View, Make<ZvNamedView>},
    {ZvTableCode::SelectionVolume, Make<ZvSelectionVolume>},
};

} // namespace

std::unique_ptr<ZvTableRecord> ZvNativeRecordKinds::Make(uint32_t fullCode) {
    for (const Kind& kind : kKinds)
        if (ZvTableCode::Full(kind.code) == fullCode)
            return kind.make();
    return nullptr;
}

bool ZvNativeRecordKinds::HasExactly(uint32_t fullCode, std::span<const uint8_t> fields) {
    const std::unique_ptr<ZvTableRecord> record = Make(fullCode);
    if (!record)
        return false;
    ZvFieldReader reader(fields);
    record->VisitFields(reader);
    return !reader.IsShort() && reader.Remaining() == 0;
}
