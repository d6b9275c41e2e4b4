#include "Zelvan/DrawingAux/ZvDefaultProperties.h"
#include "Zelvan/DrawingAux/ZvDrawingAuxData.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvEntityProperties.h"
#include "Zelvan/DrawingAux/ZvHomeGrid.h"
#include "Zelvan/DrawingAux/ZvPageSetTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvSelFilter.h"
#include "Zelvan/ZvUnits.h"
#include "ZvCore/BinXml.h"
#include <cmath>

// Current attributes, and what of the drawing travels in the settings document of its file.

void ZvDrawing::SetDefaultAttributes() {
    m_currentLineType = ZvLineType();
    m_currentLineWidth = ZvLineWidth::ByLayer();
    m_currentColor = ZvColor::ByLayer();
    m_currentBrush = ZvBrush();
    m_currentText = {};
    m_defaultEntityProperties->TakeCurrent(*this);
}

void ZvDrawing::CurrentPropertiesChanged() {
    m_defaultEntityProperties->TakeCurrent(*this);
    PostEvent(ZvDrawingEvent::CurrentPropertiesChanged);
}

void ZvDrawing::SetCurrentLineType(ZvLineType type) {
    m_currentLineType = type;
    CurrentPropertiesChanged();
}

void ZvDrawing::SetCurrentLineWidth(ZvLineWidth width) {
    m_currentLineWidth = width;
    CurrentPropertiesChanged();
}

void ZvDrawing::SetCurrentColor(const ZvColor& color) {
    m_currentColor = color;
    CurrentPropertiesChanged();
}

void ZvDrawing::SetCurrentBrush(const ZvBrush& brush) {
    m_currentBrush = brush;
    CurrentPropertiesChanged();
}

void ZvDrawing::SetCurrentTextProperties(const ZvTextProperties& text) {
    m_currentText = text;
    CurrentPropertiesChanged();
}

void ZvDrawing::SerializeCurrent(ZvCore::BinXmlNode& node, bool write) {
    if (write) {
        const ZvTextStyle* style = m_textStyleTable->Get(m_currentText.style);
        node.Set("Color", m_currentColor.ToString());
        node.Set("LineType", m_currentLineType.ToStringPortable(this));
        node.Set("LineWidth", m_currentLineWidth.ToString());
        node.Set("Brush", m_currentBrush.ToStringPortable(this));
        node.Set("TextStyle", style ? style->GetName() : XStringW());
        node.Set("TextSize", m_currentText.size.ToString());
        return;
    }
    m_currentColor.Parse(node.GetString("Color", m_currentColor.ToString()));
    m_currentLineType = ZvLineType::FromStringPortable(node.GetString("LineType", u"Continuous"), this);
    m_currentLineWidth.Parse(node.GetString("LineWidth", m_currentLineWidth.ToString()));
    m_currentBrush = ZvBrush::FromStringPortable(node.GetString("Brush", u"Empty"), this);
    m_currentText.style = m_textStyleTable->IndexOf(node.GetString("TextStyle", {}));
    m_currentText.size.Parse(node.GetString("TextSize", m_currentText.size.ToString()));
    CurrentPropertiesChanged();
}

// --- the settings document --------------------------------------------------------------------------------

void ZvDrawing::StoreSettings(ZvCore::BinXmlNode& node) const {
    node.Set("Guid", m_guid.ToString());
    m_io->StoreStamp(node);
    node.Set("Tolerance", m_tolerance);
    node.Set("AllowByLayer", m_allowByLayer);
    node.Set("AllowByBlock", m_allowByBlock);
    node.Set("AllowTexturedBrushes", m_allowTexturedBrushes);
    node.Set("AllowTableReferences", m_allowTableReferences);
    node.Set("DefaultDrawFilter", int64_t(m_defaultDrawFilter));
    m_settings.Store(node.AddChild("Settings"));
    m_units->Store(node.AddChild("Units"));
    m_auxData->Store(node.AddChild("AuxData"));
    m_homeGrid->Store(node.AddChild("HomeGrid"));
    m_selectionFilter->SaveXml(node.AddChild("SelectionFilter"));
    m_defaultProperties->Store(node.AddChild("DefaultProperties"));
    if (m_pageSetTable)
        m_pageSetTable->Store(node.AddChild("PageSets"));
    const_cast<ZvDrawing*>(this)->SerializeCurrent(node.AddChild("Current"), true);
    m_entityAssociator->Store(node.AddChild("Associations"));
}

void ZvDrawing::LoadSettings(const ZvCore::BinXmlNode& node, bool afterTables) {
    const auto with = [&](const char* name, auto load) {
        if (const ZvCore::BinXmlNode* child = node.Child(name))
            load(*child);
    };
    if (afterTables) {
        with("Current", [&](const auto& child) {
            ZvCore::BinXmlNode copy = child;
            SerializeCurrent(copy, false);
        });
        with("Associations", [&](const auto& child) { m_entityAssociator->LoadDelayed(child); });
        RefreshGlobalData();
        return;
    }
    Guid::Parse(node.GetString("Guid", {}).View(), m_guid);
    m_io->LoadStamp(node);
    const double tolerance = node.GetDouble("Tolerance", m_tolerance);
    m_tolerance = std::isfinite(tolerance) && tolerance >= 0 ? tolerance : m_tolerance;
    m_allowByLayer = node.GetBool("AllowByLayer", m_allowByLayer);
    m_allowByBlock = node.GetBool("AllowByBlock", m_allowByBlock);
    m_allowTexturedBrushes = node.GetBool("AllowTexturedBrushes", m_allowTexturedBrushes);
    m_allowTableReferences = node.GetBool("AllowTableReferences", m_allowTableReferences);
    m_defaultDrawFilter = uint32_t(node.GetInt("DefaultDrawFilter", m_defaultDrawFilter));
    with("Settings", [&](const auto& child) { m_settings.Load(child); });
    with("Units", [&](const auto& child) { m_units->Load(child); });
    with("AuxData", [&](const auto& child) { m_auxData->Load(child); });
    with("HomeGrid", [&](const auto& child) { m_homeGrid->Load(child); });
    with("SelectionFilter", [&](const auto& child) { m_selectionFilter->LoadXml(child); });
    with("DefaultProperties", [&](const auto& child) { m_defaultProperties->Load(child); });
    if (m_pageSetTable)
        with("PageSets", [&](const auto& child) { m_pageSetTable->Load(child); });
    RefreshGlobalData();
}
