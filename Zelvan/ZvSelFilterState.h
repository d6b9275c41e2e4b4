#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <set>

/// Criteria of the selection filter. An empty set lets everything pass.
struct ZvSelFilterState {
    bool enabled = false;
    std::set<uint32_t> types;  ///< full codes of entity kinds
    std::set<XStringW> layers; ///< names, upper case
    std::set<uint64_t> colors; ///< ZvColor::To64
    friend bool operator==(const ZvSelFilterState&, const ZvSelFilterState&) = default;
};
