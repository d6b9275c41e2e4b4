#pragma once
#include "ZvCore/XString.h"
#include <string_view>

/// Texts for users of the properties of table records, by property identifier.
class ZvPropertyLabels {
public:
    /// An identifier that the table does not have is its own label. "Center.X": the label of "Center", then "
    /// X".
    static XStringW Get(std::string_view id);
};
