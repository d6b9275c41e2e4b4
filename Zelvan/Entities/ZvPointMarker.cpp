#include "Zelvan/Entities/ZvPointMarker.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include <cmath>
#include <span>

namespace {

/// Corners in half sizes, Y up.
constexpr Vec2f kHorizontal[] = {{-1, 0}, {1, 0}};
constexpr Vec2f kVertical[] = {{0, -1}, {0, 1}};
constexpr Vec2f kRising[] = {{-1, -1}, {1, 1}};
constexpr Vec2f kFalling[] = {{-1, 1}, {1, -1}};
constexpr Vec2f kSquare[] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
constexpr Vec2f kDiamond[] = {{0, -1}, {1, 0}, {0, 1}, {-1, 0}};
constexpr Vec2f kTriangle[] = {{-0.866f, -0.5f}, {0.866f, -0.5f}, {0, 1}};
constexpr Vec2f kOctagon[] = {{1, 0},  {0.707f, 0.707f},   {0, 1},  {-0.707f, 0.707f},
                              {-1, 0}, {-0.707f, -0.707f}, {0, -1}, {0.707f, -0.707f}};

class Painter {
public:
    Painter(ZvRenderContext& context, Vec2f at, double angle)
        : m_context(context), m_at(at),
          m_cos(float(std::cos(angle) * context.PixelScale()) * ZvPointMarker::kSize / 2),
          m_sin(float(std::sin(angle) * context.PixelScale()) * ZvPointMarker::kSize / 2) {}
    void Stroke(std::span<const Vec2f> corners, bool closed) const {
        Vec2f points[8];
        for (size_t i = 0; i < corners.size(); ++i) {
            const Vec2f& c = corners[i];
            points[i] = {m_at.x + c.x * m_cos - c.y * m_sin, m_at.y - c.x * m_sin - c.y * m_cos};
        }
        m_context.Stroke(points, corners.size(), closed);
    }

private:
    ZvRenderContext& m_context;
    Vec2f m_at;
    float m_cos, m_sin;
};

} // namespace

void ZvPointMarker::Draw(ZvRenderContext& context, const Vec3d& at, uint16_t type, double angle) {
    const Vec2f pixel = context.MapPoint(at);
    const Painter painter(context, pixel, angle);
    switch (ZvPointType(type)) {
    case ZvPointType::Plus:
        painter.Stroke(kHorizontal, false);
        painter.Stroke(kVertical, false);
        break;
    case ZvPointType::Cross:
        painter.Stroke(kRising, false);
        painter.Stroke(kFalling, false);
        break;
    case ZvPointType::Square:
        painter.Stroke(kSquare, true);
        break;
    case ZvPointType::Circle:
        painter.Stroke(kOctagon, true);
        break;
    case ZvPointType::Diamond:
        painter.Stroke(kDiamond, true);
        break;
    case ZvPointType::Triangle:
        painter.Stroke(kTriangle, true);
        break;
    default:
        context.Marker(pixel, kDotSize * float(context.PixelScale()));
    }
}

void ZvPointMarker::AddHeat(ZvRenderContext& context, const Vec3d& at) {
    std::vector<float>* heat = context.Heat();
    const int width = context.HeatWidth();
    if (!heat || width <= 0)
        return;
    const Vec2f pixel = context.MapPoint(at);
    const int height = int(heat->size()) / width;
    if (pixel.x >= 0 && pixel.y >= 0 && pixel.x < float(width) && pixel.y < float(height))
        (*heat)[size_t(int(pixel.y)) * size_t(width) + size_t(int(pixel.x))] += 1;
}
