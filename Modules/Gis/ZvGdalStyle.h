#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include <string>

class OGRFeature;
class ZvLossReport;

/// Appearance of single features, as OGR feature style strings carry it ("PEN(c:#FF0000,w:0.3mm);BRUSH(fc:#00FF0080)").
class ZvGdalStyle {
public:
    /// Gives the entity the colour, line width and fill of the feature's style; by-layer values where it has none.
    static void Apply(OGRFeature& feature, ZvEntity& entity);
    /// Style string for an entity's own appearance; empty when everything is by layer.
    static std::string Describe(ZvEntity& entity);
};
