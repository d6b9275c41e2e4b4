#include "Zelvan/Tables/ZvPropertyLabels.h"
#include <algorithm>
#include <iterator>

namespace {

struct Row {
    std::string_view id;
    std::string_view label;
};

/// Ascending by identifier.
constexpr Row kLabels[] = {
#define ZV_LABEL(id, label) {#id, label},
#include "Zelvan/Tables/ZvPropertyLabelTable.h"
#undef ZV_LABEL
};

} // namespace

XStringW ZvPropertyLabels::Get(std::string_view id) {
    const size_t dot = id.find('.');
    if (dot != std::string_view::npos)
        return Get(id.substr(0, dot)) + u" " + Get(id.substr(dot + 1));
    const Row* row = std::lower_bound(std::begin(kLabels), std::end(kLabels), id,
                                      [](const Row& r, std::string_view wanted) { return r.id < wanted; });
    return XStringW::FromUtf8(row != std::end(kLabels) && row->id == id ? row->label : id);
}
