#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Guid.h"
#include "ZvCore/XString.h"
#include <vector>

namespace ZvCore {
class BinXmlNode;
}

/// Named sets of layout pages that are printed or exported together, in order. Travels in the drawing's file.
class ZV_API ZvPageSetTable {
public:
    struct Page {
        Guid layout; ///< of the layout record; the zero guid stands for model space
        Guid paper;  ///< of the paper record within it
        friend bool operator==(const Page&, const Page&) = default;
    };
    struct PageSet {
        XStringW name;
        std::vector<Page> pages;
    };

    int Count() const { return int(m_sets.size()); }
    const PageSet& Get(int index) const { return m_sets[size_t(index)]; }
    /// Without regard to case; null when there is none.
    PageSet* Find(const XStringW& name);
    /// Null for an empty name or one that is taken.
    PageSet* Add(const XStringW& name);
    bool Rename(const XStringW& from, const XStringW& to);
    bool Delete(const XStringW& name);
    /// Takes the pages of a layout that no longer exists out of all sets; answers how many went.
    int RemoveLayout(const Guid& layout);
    void Clear() { m_sets.clear(); }

    void Store(ZvCore::BinXmlNode& node) const;
    void Load(const ZvCore::BinXmlNode& node);

private:
    std::vector<PageSet> m_sets;
};
