#pragma once
#include "ZvCore/Api.h"

class ZvEntity;
struct ZvScaleSetup;

/// The widest line among entities, for each unit in which widths are given: how far a drawing's lines may reach beyond their bounds.
/// It never shrinks. By-layer widths are not counted.
class ZV_API ZvWidestLine {
public:
    void Add(const ZvEntity& entity);
    double ToWorld(const ZvScaleSetup& scale) const;

private:
    float m_world = 0, m_pixels = 0, m_millimeters = 0, m_points = 0;
};
