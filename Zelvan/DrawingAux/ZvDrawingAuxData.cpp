#include "Zelvan/DrawingAux/ZvDrawingAuxData.h"
#include "ZvCore/BinXml.h"

void ZvDrawingAuxData::Store(ZvCore::BinXmlNode& node) const {
    node.Set("Author", m_author);
    node.Set("Description", m_description);
    node.Set("Created", int64_t(m_created.ticks));
    node.Set("Modified", int64_t(m_modified.ticks));
}

void ZvDrawingAuxData::Load(const ZvCore::BinXmlNode& node) {
    m_author = node.GetString("Author", m_author);
    m_description = node.GetString("Description", m_description);
    m_created.ticks = uint64_t(node.GetInt("Created", int64_t(m_created.ticks)));
    m_modified.ticks = uint64_t(node.GetInt("Modified", int64_t(m_modified.ticks)));
}
