#pragma once
#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include "ZvCore/Api.h"
#include <optional>

/// Attribute values as a user writes them.
class ZV_API ZvAttributeText {
public:
    /// What a text states for a column of the type. A column of texts takes it as it stands; for the others an empty one is
    /// NULL. Numbers have a point; switches are "true", "yes", "1" or their opposites; dates "2012-09-03 14:05:06" or the
    /// day alone, with dashes or slashes. Nothing where the text states no such value; binaries have no text.
    static std::optional<ZvAttributeColumn::Value> Parse(ZvAttributeColumn::Type type, const XStringW& text);
    /// "whole numbers", "dates": what a column of the type takes.
    static const char* TypeName(ZvAttributeColumn::Type type);
};
