#include "Zelvan/DrawingAux/ZvPageSetTable.h"
#include "ZvCore/BinXml.h"
#include <algorithm>

ZvPageSetTable::PageSet* ZvPageSetTable::Find(const XStringW& name) {
    for (PageSet& set : m_sets)
        if (set.name.EqualsNoCase(name))
            return &set;
    return nullptr;
}

ZvPageSetTable::PageSet* ZvPageSetTable::Add(const XStringW& name) {
    if (name.IsEmpty() || Find(name))
        return nullptr;
    m_sets.push_back({name, {}});
    return &m_sets.back();
}

bool ZvPageSetTable::Rename(const XStringW& from, const XStringW& to) {
    PageSet* set = Find(from);
    const PageSet* other = Find(to);
    if (!set || to.IsEmpty() || (other && other != set))
        return false;
    set->name = to;
    return true;
}

bool ZvPageSetTable::Delete(const XStringW& name) {
    return std::erase_if(m_sets, [&](const PageSet& set) { return set.name.EqualsNoCase(name); }) != 0;
}

int ZvPageSetTable::RemoveLayout(const Guid& layout) {
    size_t removed = 0;
    for (PageSet& set : m_sets)
        removed += std::erase_if(set.pages, [&](const Page& page) { return page.layout == layout; });
    return int(removed);
}

void ZvPageSetTable::Store(ZvCore::BinXmlNode& node) const {
    for (const PageSet& set : m_sets) {
        ZvCore::BinXmlNode& stored = node.AddChild("PageSet");
        stored.Set("Name", set.name);
        for (const Page& page : set.pages) {
            ZvCore::BinXmlNode& item = stored.AddChild("Page");
            item.Set("Layout", page.layout.ToString());
            item.Set("Paper", page.paper.ToString());
        }
    }
}

void ZvPageSetTable::Load(const ZvCore::BinXmlNode& node) {
    m_sets.clear();
    for (const ZvCore::BinXmlNode& stored : node.Children()) {
        PageSet* set = stored.Name() == "PageSet" ? Add(stored.GetString("Name", {})) : nullptr;
        if (!set)
            continue;
        for (const ZvCore::BinXmlNode& item : stored.Children()) {
            Page page;
            if (Guid::Parse(item.GetString("Layout", {}).View(), page.layout) &&
                Guid::Parse(item.GetString("Paper", {}).View(), page.paper))
                set->pages.push_back(page);
        }
    }
}
