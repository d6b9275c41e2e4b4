#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/XString.h"

namespace ZvCore {
class BinXmlNode;
}

/// Who made a drawing, when, and what about. Travels in its file.
class ZV_API ZvDrawingAuxData {
public:
    explicit ZvDrawingAuxData(DateTime now) : m_created(now), m_modified(now) {}

    const XStringW& Author() const { return m_author; }
    void SetAuthor(const XStringW& author) { m_author = author; }
    const XStringW& Description() const { return m_description; }
    void SetDescription(const XStringW& text) { m_description = text; }
    DateTime Created() const { return m_created; }
    void SetCreated(DateTime date) { m_created = date; }
    DateTime Modified() const { return m_modified; }
    void SetModified(DateTime date) { m_modified = date; }

    void Store(ZvCore::BinXmlNode& node) const;
    /// What the node lacks keeps its value.
    void Load(const ZvCore::BinXmlNode& node);

private:
    XStringW m_author;
    XStringW m_description;
    DateTime m_created;
    DateTime m_modified;
};
