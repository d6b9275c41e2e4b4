#pragma once
#include <string>

class ZvDrawing;

/// Whether two drawings hold the same: layers in order with their values, every entity under its name with the same bits of geometry
/// and the same appearance, every attribute. False with the first difference in `why`.
bool AreDrawingsEqual(const ZvDrawing& a, const ZvDrawing& b, std::string& why);
