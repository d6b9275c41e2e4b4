#include "Tests/Support/UndoMarathon.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Verbs/ZvVAggregate.h"
#include "Zelvan/Verbs/ZvVChangeSS.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Verbs/ZvVMoveGrip.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPaperAggregate.h"
#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvTableTable.h"

const std::vector<UndoMarathon::Kind>& UndoMarathon::AllKinds() {
    using M = UndoMarathon;
    static const std::vector<Kind> kinds = {
        {"creation", &M::Create, 8},
        {"erasure", &M::Erase, 6},
        {"modification", &M::Modify, 6},
        {"replacement", &M::Replace, 5},
        {"conversion", &M::Convert, 5},
        {"creation from two", &M::NewDualSource, 4},
        {"aggregate", &M::Aggregate, 6},
        {"paper aggregate", &M::PaperAggregate, 5},
        {"move to layer", &M::MoveToLayer, 8},
        {"properties", &M::PropertyChange, 8},
        {"geometry property", &M::GeometryProperty, 4},
        {"attributes", &M::AttributeChange, 6},
        {"text", &M::TextChange, 6},
        {"transform", &M::Transform, 10},
        {"draw order", &M::DrawOrder, 4},
        {"selection", &M::ChangeSelection, 3},
        {"grip", &M::MoveGrip, 8},
        {"tiny", &M::Tiny, 5},
        {"new record", &M::RecordNew, 4},
        {"deleted record", &M::RecordErase, 3},
        {"record properties", &M::RecordModify, 4},
        {"edited record", &M::RecordEdited, 3},
    };
    return kinds;
}

// --- what verbs work on ---------------------------------------------------------------------------------------

ZvEntity* UndoMarathon::AnyEntity() {
    std::vector<ZvEntity*> all;
    m_drawing->NameTable().GetAllNonErased(all);
    std::erase_if(all, [](const ZvEntity* e) { return !e->GetLayer() || e->GetLayer()->IsInternal(); });
    return all.empty() ? nullptr : all[Below(uint32_t(all.size()))];
}

ZvSelection UndoMarathon::Some(int most) {
    ZvSelection some(m_drawing.get());
    for (uint32_t count = 1 + Below(uint32_t(most)); count > 0; --count)
        if (const ZvEntity* entity = AnyEntity())
            some.Insert(entity);
    return some;
}

ZvLayer* UndoMarathon::AnyLayer() {
    std::vector<ZvTableRecord*> layers = m_drawing->LayerTable()->GetUserEnumList();
    return layers.empty() ? nullptr : static_cast<ZvLayer*>(layers[Below(uint32_t(layers.size()))]);
}

ZvLayout* UndoMarathon::AnyLayout() {
    const std::vector<ZvLayout*> layouts = m_drawing->LayoutTable()->GetOrdered();
    ZvLayout* layout = layouts.empty() ? nullptr : layouts[Below(uint32_t(layouts.size()))];
    return layout && !layout->IsErased() && layout->Drawing() ? layout : nullptr;
}

/// Layers and line types more often than the others.
ZvTable* UndoMarathon::AnyTable() {
    if (OneIn(3))
        return m_drawing->LayerTable();
    if (OneIn(3))
        return m_drawing->LineTypeTable();
    return m_drawing->TableTable()->Get(int(Below(uint32_t(m_drawing->TableTable()->Count()))));
}

// --- whole entities -------------------------------------------------------------------------------------------

UndoMarathon::Verb UndoMarathon::Create() {
    auto verb = std::make_unique<ZvVEntNew>(m_drawing.get());
    for (uint32_t count = 1 + Below(3); count > 0; --count)
        verb->Add(RandomEntity(), AnyLayer()->GetName());
    return verb;
}

UndoMarathon::Verb UndoMarathon::Erase() {
    return std::make_unique<ZvVErase>(Some(5));
}

UndoMarathon::Verb UndoMarathon::Modify() {
    auto verb = std::make_unique<ZvVEntModify>(m_drawing.get());
    const ZvSelection some = Some(3);
    const bool byCopies = OneIn(2);
    for (int i = 0; i < some.Count(); ++i) {
        ZvEntity& entity = *some.GetEntity(i);
        if (byCopies) {
            std::unique_ptr<ZvEntity> copy = entity.Clone();
            copy->Translate({1.5, -2, 0});
            verb->AddOriginalAndModified(entity, std::move(copy));
        } else {
            verb->AddOriginal(entity);
            entity.Transform(Mat4d::RotationZ(0.7));
            entity.SetColor(ZvColor(int(Below(200))));
        }
    }
    if (!byCopies)
        verb->StoreModified();
    return verb;
}

UndoMarathon::Verb UndoMarathon::Replace() {
    auto verb = std::make_unique<ZvVModify>(m_drawing.get());
    const ZvSelection some = Some(3);
    for (int i = 0; i < some.Count(); ++i)
        verb->Add1To1(some.GetEntity(i), RandomEntity());
    return verb;
}

UndoMarathon::Verb UndoMarathon::Convert() {
    auto verb = std::make_unique<ZvVConvert>(m_drawing.get());
    const ZvSelection some = Some(3);
    for (int i = 0; i < some.Count(); ++i)
        verb->AddPair(some.GetEntity(i), RandomEntity());
    return verb;
}

UndoMarathon::Verb UndoMarathon::NewDualSource() {
    auto verb = std::make_unique<ZvVEntNewDualSource>(m_drawing.get());
    const ZvEntity *first = AnyEntity(), *second = AnyEntity();
    ZvLayer* layer = AnyLayer();
    if (!first || !layer)
        return nullptr;
    const ZvName name = m_drawing->Insert(RandomEntity(), layer->GetName());
    return verb->AddDualSourceTripple(m_drawing->GetEntity(name), first, second) ? std::move(verb) : nullptr;
}

/// Of verbs that find what they need whatever the others did before.
UndoMarathon::Verb UndoMarathon::Aggregate() {
    auto verb = std::make_unique<ZvVAggregate>(m_drawing.get());
    static constexpr Verb (UndoMarathon::*kParts[])() = {
        &UndoMarathon::Create,         &UndoMarathon::MoveToLayer, &UndoMarathon::PropertyChange,
        &UndoMarathon::Erase,          &UndoMarathon::Transform,   &UndoMarathon::DrawOrder,
        &UndoMarathon::AttributeChange};
    for (uint32_t count = 1 + Below(4); count > 0; --count)
        verb->Add((this->*kParts[Below(7)])());
    return verb;
}

/// On the sheet of a layout and in the drawing.
UndoMarathon::Verb UndoMarathon::PaperAggregate() {
    ZvLayout* layout = AnyLayout();
    if (!layout)
        return nullptr;
    ZvDrawing& sheet = *layout->Drawing();
    ZvSelection onSheet(&sheet), some(&sheet);
    sheet.SelectAll(onSheet);
    for (const uint32_t name : onSheet.Names())
        if (OneIn(4))
            some.Insert(ZvName(name));
    auto verb = std::make_unique<ZvVPaperAggregate>(m_drawing.get());
    if (OneIn(2)) {
        auto created = std::make_unique<ZvVEntNew>(&sheet);
        created->Add(RandomEntity());
        verb->Add(std::move(created));
    }
    verb->Add(std::make_unique<ZvVTransform>(some, Mat4d::RotationZ(double(Below(628)) / 100)));
    if (OneIn(2))
        verb->Add(std::make_unique<ZvVErase>(some));
    if (OneIn(2))
        verb->Add(Transform());
    return verb;
}

// --- entities -------------------------------------------------------------------------------------------------

UndoMarathon::Verb UndoMarathon::MoveToLayer() {
    ZvLayer* layer = AnyLayer();
    return layer ? std::make_unique<ZvVMoveToLayer>(*layer, Some(6)) : nullptr;
}

UndoMarathon::Verb UndoMarathon::PropertyChange() {
    auto verb = std::make_unique<ZvVPropertyChange>(Some(8));
    if (OneIn(2))
        verb->Set("Color", XStringW::Format("I:%u", Below(200)));
    if (OneIn(3))
        verb->Set("LineWidth", XStringW::Format("World:%u", Below(9)));
    if (OneIn(3))
        verb->Set("LineType", OneIn(2) ? XStringW(u"Dots") : XStringW(u"ByLayer"));
    if (OneIn(3))
        verb->Set("Brush", XStringW::Format("Solid:I:%u", Below(200)));
    if (OneIn(3))
        verb->Set("Visible", OneIn(2));
    if (OneIn(4))
        verb->Set("LineCap", int64_t(Below(3)));
    return verb;
}

UndoMarathon::Verb UndoMarathon::GeometryProperty() {
    auto verb = std::make_unique<ZvVPropertyChange>(Some(5));
    verb->Set("Closed", OneIn(2));
    verb->Set("Polygon", OneIn(2));
    verb->Set("X", Coordinate());
    verb->Set("Angle", Coordinate());
    return verb;
}

UndoMarathon::Verb UndoMarathon::AttributeChange() {
    auto verb = std::make_unique<ZvVPropertyChange>(Some(8));
    if (OneIn(2))
        verb->SetAttribute(u"Label", XStringW::Format("changed %u", Below(50)));
    else
        verb->SetAttribute(u"Id", OneIn(4) ? ZvAttributeColumn::Value() : int64_t(m_random() >> Below(40)));
    if (OneIn(6))
        verb->SetAttribute(XStringW::Format("Field %u", Below(6)), Coordinate(), true);
    return verb;
}

UndoMarathon::Verb UndoMarathon::TextChange() {
    auto verb = std::make_unique<ZvVTextChange>(*m_drawing);
    const ZvSelection some = Some(4);
    for (int i = 0; i < some.Count(); ++i)
        verb->AddAttribute(*some.GetEntity(i), u"Label", XStringW::Format("named %u", Below(90)));
    if (const ZvLayer* layer = AnyLayer()) {
        verb->AddRecord(*layer, "Description", XStringW::Format("as of day %u", Below(365)));
        if (OneIn(2))
            verb->AddRecord(*layer, "Name", XStringW::Format("Layer of %u", Below(20)));
    }
    return verb;
}

UndoMarathon::Verb UndoMarathon::Transform() {
    Mat4d xform = Mat4d::Translation({Coordinate() - 1000, Coordinate() - 1000, OneIn(3) ? 1.5 : 0});
    if (OneIn(3))
        xform = Mat4d::RotationZ(double(Below(628)) / 100);
    else if (OneIn(4))
        xform = Mat4d::Scaling({0.5 + Below(4), 0.5 + Below(4), 1});
    else if (OneIn(6))
        xform = Mat4d::RotationX(0.3);
    return std::make_unique<ZvVTransform>(Some(8), xform);
}

UndoMarathon::Verb UndoMarathon::DrawOrder() {
    auto verb = std::make_unique<ZvVDrawOrder>(Some(4));
    verb->Bring(ZvEntityOrder(Below(4)), AnyEntity());
    return verb;
}

UndoMarathon::Verb UndoMarathon::ChangeSelection() {
    return std::make_unique<ZvVChangeSS>(Some(10));
}

UndoMarathon::Verb UndoMarathon::MoveGrip() {
    auto verb = std::make_unique<ZvVMoveGrip>(m_drawing.get());
    for (int i = 0; i < 3; ++i)
        if (const ZvEntity* entity = AnyEntity())
            verb->AddGripPair(*entity, int(Below(8)), {Coordinate(), Coordinate(), 0});
    return verb;
}

UndoMarathon::Verb UndoMarathon::Tiny() {
    auto verb = std::make_unique<ZvVEntTiny>(*m_drawing);
    verb->Collect(Some(60));
    if (OneIn(2))
        verb->SetColor(ZvColor(int(Below(250))));
    if (OneIn(3))
        verb->SetLineWidth(ZvLineWidth::World(Below(10)));
    if (OneIn(3))
        verb->SetBrush(ZvBrush::Solid(ZvColor(1, 2, uint8_t(Below(200)))));
    if (OneIn(3))
        verb->SetLineType(ZvLineType::ByLayer());
    verb->SetFlag(OneIn(2) ? ZvEntity::kVisible : ZvEntity::kSelectable, OneIn(2));
    return verb;
}

// --- records --------------------------------------------------------------------------------------------------

UndoMarathon::Verb UndoMarathon::RecordNew() {
    return std::make_unique<ZvVRecordNew>(*AnyTable(),
                                          OneIn(3) ? XStringW() : XStringW::Format("New %u", Below(1000)));
}

UndoMarathon::Verb UndoMarathon::RecordErase() {
    auto verb = std::make_unique<ZvVRecordErase>(*m_drawing);
    const ZvTable* table = AnyTable();
    if (table == m_drawing->LayerTable() && table->CountUserEnum() < 3)
        return nullptr;
    for (int i = 0; i < 2 && table->Count(); ++i)
        verb->Add(*table->Get(int(Below(uint32_t(table->Count())))));
    return verb;
}

UndoMarathon::Verb UndoMarathon::RecordModify() {
    auto verb = std::make_unique<ZvVRecordModify>(*m_drawing);
    const ZvTable* table = AnyTable();
    ZvTableRecord* record = table->GetUserEnum(int(Below(uint32_t(table->CountUserEnum()))));
    if (!record)
        return nullptr;
    verb->AddOriginal(*record);
    verb->Set("Name", XStringW::Format("Renamed %u", Below(300)));
    verb->Set("Color", XStringW::Format("I:%u", Below(250)));
    verb->Set("LineType", XStringW(OneIn(2) ? u"I:1" : u"Continuous"));
    verb->Set("Visible", OneIn(2));
    return verb;
}

UndoMarathon::Verb UndoMarathon::RecordEdited() {
    ZvLayer* layer = AnyLayer();
    if (!layer)
        return nullptr;
    auto verb = std::make_unique<ZvVRecordModify>(*layer);
    layer->SetTransparency(double(Below(100)) / 100);
    layer->SetLocked(OneIn(5));
    layer->SetStrata(int(Below(3)));
    verb->StoreModified();
    return verb;
}
