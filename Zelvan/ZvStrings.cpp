#include "Zelvan/ZvStrings.h"
#include <algorithm>
#include <iterator>

namespace {

struct Row {
    int id;
    const char* text;
};

constexpr Row kRows[] = {
#define ZV_STRING(number, name, text) {number, text},
#include "Zelvan/ZvStringTable.h"
#undef ZV_STRING
};

constexpr bool IsAscending() {
    for (size_t i = 1; i < std::size(kRows); ++i)
        if (kRows[i - 1].id >= kRows[i].id)
            return false;
    return true;
}
static_assert(IsAscending(), "ZvStringTable.h: numbers must ascend and be unique");

const Row* Find(int id) {
    const Row* row = std::lower_bound(std::begin(kRows), std::end(kRows), id,
                                      [](const Row& r, int n) { return r.id < n; });
    return row != std::end(kRows) && row->id == id ? row : nullptr;
}

} // namespace

const char* ZvStrings::Get(int id) {
    const Row* row = Find(id);
    return row ? row->text : "";
}

bool ZvStrings::Has(int id) {
    return Find(id) != nullptr;
}
