#pragma once
#include "Apps/zvd/EditLine.h"
#include "ZvCore/XString.h"
#include <memory>
#include <string>
#include <vector>

class ZvDrawing;
class ZvEntity;

/// Entities from the words of an `add` line.
namespace EditShape {

/// "polyline", "polygon" or "point" with its coordinates; empty with the reason in `why`. One entity, for points one each. They
/// are not in the drawing yet.
std::vector<std::unique_ptr<ZvEntity>> Make(ZvDrawing& drawing, const std::vector<std::string>& words,
                                            std::string& why);

/// Sets color=, width= and fill= of a line on the entity. False with the reason for text that means none.
bool Style(ZvEntity& entity, const EditLine& line, std::string& why);

/// A colour as properties take it: "#RRGGBB" becomes what ZvColor writes.
XStringW ColorText(const std::string& text);

} // namespace EditShape
