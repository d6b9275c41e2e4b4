#pragma once
#include "ZvCore/Api.h"
#include <string>
#include <unordered_map>
#include <vector>

/// Errors gathered during one load or save and shown at its end. Equal texts are kept once, with a count.
class ZV_API IOErrorSet {
public:
    enum class Severity { Warning, Error };
    struct Item {
        int code = 0;
        Severity severity = Severity::Error;
        std::string text; ///< what, where, what to do
        int count = 1;
    };

    void Add(int code, std::string text, Severity severity = Severity::Error);
    void AddAll(const IOErrorSet& other);
    void Clear();
    bool IsEmpty() const { return m_items.empty(); }
    bool HasErrors() const;
    bool Has(int code) const;
    const std::vector<Item>& Items() const { return m_items; }
    /// One line an item, "(3 times)" appended to repeated ones.
    std::string ToString() const;

private:
    void AddItem(Item item);
    std::vector<Item> m_items;
    std::unordered_map<std::string, size_t> m_index; // code, severity and text to place in m_items
};
