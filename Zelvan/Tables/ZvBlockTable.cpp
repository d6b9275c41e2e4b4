#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvBNode.h"

namespace {

/// Half the size of the dummy block's cross, block units.
constexpr double kHalfCross = 0.5;

std::unique_ptr<ZvEntity> Line(double x0, double y0, double x1, double y1) {
    auto line = std::make_unique<ZvXLine>();
    line->LineVectorSetVertices({{x0, y0, 0, 0}, {x1, y1, 0, 0}});
    line->SetColor(ZvColor::ByBlock());
    return line;
}

} // namespace

ZvBlockTable::ZvBlockTable(ZvDrawing* parent) : ZvTableOf(parent) {}

ZvBlockTable::~ZvBlockTable() = default;

XStringW ZvBlockTable::DefaultNameBase() const {
    return u"Block";
}

ZvBlock& ZvBlockTable::DummyBlock() {
    if (!m_dummy) {
        m_dummy = std::make_unique<ZvBlock>();
        m_dummy->SetTable(this);
        m_dummy->SetInternal(true);
        m_dummy->Adopt(Line(-kHalfCross, 0, kHalfCross, 0));
        m_dummy->Adopt(Line(0, -kHalfCross, 0, kHalfCross));
    }
    return *m_dummy;
}

ZvBlock& ZvBlockTable::GetNoFail(int index) {
    ZvBlock* block = Get(index);
    return block ? *block : DummyBlock();
}

bool ZvBlockTable::IsRecursive(const ZvBlock& block) const {
    return block.RefersTo(block);
}
