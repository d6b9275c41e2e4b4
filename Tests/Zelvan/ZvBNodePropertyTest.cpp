// The tree against brute force on seeded random work.
#include "Tests/Support/BoxEntity.h"
#include "Zelvan/ZvBNode.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

enum class Shape { Spread, Clustered, Points, Coincident, Large, Growing };

/// A tree and a plain list with the same content.
class Twin {
public:
    Twin(unsigned seed, Shape shape) : m_random(seed), m_shape(shape) {}
    ~Twin() {
        for (BoxEntity* entity : m_outside)
            delete entity;
    }

    ZvBNode tree;

    double Uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_random);
    }
    bool Chance(double p) { return Uniform(0, 1) < p; }
    size_t Index(size_t count) { return size_t(Uniform(0, double(count))) % count; }

    ZvBounds3D RandomBox() {
        const double spread = m_shape == Shape::Growing ? double(++m_made) : 100;
        double x = Uniform(-spread, spread), y = Uniform(-spread, spread), w = Uniform(0, 3),
               h = Uniform(0, 3);
        if (m_shape == Shape::Clustered && Chance(0.9))
            x = 5 + x * 1e-4, y = 7 + y * 1e-4, w *= 1e-5, h *= 1e-5;
        if (m_shape == Shape::Coincident && Chance(0.9))
            x = std::floor(x / 50), y = std::floor(y / 50), w = h = 0;
        if (m_shape == Shape::Points)
            w = h = 0;
        if (m_shape == Shape::Large)
            w *= 20, h *= 20;
        const double z = Chance(0.5) ? 0 : Uniform(-9, 9);
        return {x, y, z, x + w, y + h, z};
    }

    ZvBounds2D RandomWindow() {
        // Half of the windows share a corner with an entity: touching must count.
        const double size = std::pow(10.0, Uniform(-4, 2.3));
        const ZvBounds3D at =
            !m_inside.empty() && Chance(0.5) ? m_inside[Index(m_inside.size())]->Bounds3D() : RandomBox();
        return Chance(0.5) ? ZvBounds2D{at.maxX, at.maxY, at.maxX + size, at.maxY + size}
                           : ZvBounds2D{at.minX - size, at.minY - size / 2, at.minX, at.minY};
    }

    BoxEntity* New() {
        auto* entity = new BoxEntity(RandomBox());
        entity->SetErased(Chance(0.05));
        entity->SetVisible(Chance(0.9));
        return entity;
    }
    void Insert() {
        BoxEntity* entity = !m_outside.empty() && Chance(0.5) ? m_outside.back() : New();
        std::erase(m_outside, entity);
        ASSERT_TRUE(tree.Insert(entity));
        m_inside.push_back(entity);
    }
    void InsertMany(size_t count) {
        std::vector<ZvEntity*> fresh;
        for (size_t i = 0; i < count; ++i) {
            m_inside.push_back(New());
            fresh.push_back(m_inside.back());
        }
        tree.InsertBulk(fresh);
    }
    void Remove() {
        if (m_inside.empty())
            return;
        const size_t i = Index(m_inside.size());
        ASSERT_TRUE(tree.RemoveMe(m_inside[i]));
        EXPECT_FALSE(tree.RemoveMe(m_inside[i]));
        m_outside.push_back(m_inside[i]);
        m_inside.erase(m_inside.begin() + std::ptrdiff_t(i));
    }
    void Change() {
        if (m_inside.empty())
            return;
        BoxEntity* entity = m_inside[Index(m_inside.size())];
        const double what = Uniform(0, 1);
        if (what < 0.3)
            entity->Translate({Uniform(-1, 1), Uniform(-1, 1), 0});
        else if (what < 0.6)
            entity->SetBox(RandomBox());
        else if (what < 0.7)
            entity->SetBox({});
        else if (what < 0.8)
            entity->SetBox({-INFINITY, 0, 0, NAN, 1, 0});
        else if (what < 0.9)
            entity->SetErased(!entity->IsErased());
        else
            entity->SetVisible(!entity->IsVisible());
    }

    void Check() {
        std::string why;
        ASSERT_TRUE(tree.DebugCheck(why)) << why;
        ASSERT_EQ(tree.Count(), m_inside.size());
        ZvBounds3D all, visible;
        for (const BoxEntity* entity : m_inside)
            if (const ZvBounds3D b = entity->Bounds3D();
                !entity->IsErased() && b.minX <= b.maxX && b.minY <= b.maxY) {
                all.ExpandToFit(b);
                if (entity->IsVisible())
                    visible.ExpandToFit(b);
            }
        EXPECT_EQ(tree.Bounds(), all);
        EXPECT_EQ(tree.VisibleBounds(), visible);
        for (int i = 0; i < 20; ++i)
            CheckQuery(RandomWindow());
        CheckQuery(ZvBounds2D::SuperBounds());
        CheckRay();
    }

private:
    void CheckQuery(const ZvBounds2D& window) {
        const ZvTreeQuery query{Chance(0.5), Chance(0.3), Chance(0.3), Chance(0.7)};
        std::vector<const ZvEntity*> expected;
        for (const BoxEntity* entity : m_inside) {
            const ZvBounds2D b = entity->Bounds2D();
            const bool overlap =
                b.minX < window.maxX && b.maxX > window.minX && b.minY < window.maxY && b.maxY > window.minY;
            const bool meets = query.enclosed   ? !b.IsNull() && window.IsInsideMe(b)
                               : query.touching ? window.PositiveUnion(b)
                                                : overlap;
            if (meets && (query.withErased || !entity->IsErased()) &&
                (!query.visibleOnly || entity->IsVisible()))
                expected.push_back(entity);
        }
        dvect<ZvEntity*> found;
        tree.PureSelectRect(window, found, query);
        ExpectSame(found, expected);
    }
    void CheckRay() {
        const Ray3d ray{{Uniform(-100, 100), Uniform(-100, 100), 50}, {Uniform(-1, 1), Uniform(-1, 1), -1}};
        const double radius = Uniform(0, 3);
        std::vector<const ZvEntity*> expected;
        for (const BoxEntity* entity : m_inside)
            if (!entity->IsErased() && ZvBNode::RayCylinderIntersects(ray, radius, entity->Bounds3D()))
                expected.push_back(entity);
        dvect<ZvEntity*> found;
        tree.PureSelectRay(ray, radius, found);
        ExpectSame(found, expected);
    }
    static void ExpectSame(const dvect<ZvEntity*>& found, std::vector<const ZvEntity*>& expected) {
        std::vector<const ZvEntity*> sorted(found.begin(), found.end());
        std::sort(sorted.begin(), sorted.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(sorted, expected);
    }

    std::mt19937 m_random;
    Shape m_shape;
    int m_made = 0;
    std::vector<BoxEntity*> m_inside, m_outside;
};

class ZvBNodeProperty : public testing::TestWithParam<Shape> {};

TEST_P(ZvBNodeProperty, RandomWorkKeepsInvariantsAndAnswersAsBruteForce) {
    for (unsigned seed = 1; seed <= 6 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Twin twin(seed, GetParam());
        twin.tree.SetMaxEntitiesPerNode(seed % 2 ? 50 : 4);
        if (seed > 3)
            twin.InsertMany(500);
        for (int step = 0; step < 1500 && !HasFatalFailure(); ++step) {
            const double what = twin.Uniform(0, 1);
            if (what < 0.55)
                twin.Insert();
            else if (what < 0.75)
                twin.Remove();
            else if (what < 0.995)
                twin.Change();
            else if (what < 0.998)
                twin.InsertMany(100);
            else
                twin.tree.Restructure(twin.tree.Box());
            if (step % 150 == 149)
                twin.Check();
        }
        twin.tree.RecalcBounds();
        twin.Check();
    }
}

TEST_P(ZvBNodeProperty, LargeBulkInsertionsObeyTheSameRules) {
    Twin twin(7, GetParam());
    twin.Insert();
    twin.InsertMany(40000);
    twin.Check();
    twin.InsertMany(20000);
    twin.Check();
    // Walk order as input takes the way for input that is in order already.
    dvect<ZvEntity*> all;
    twin.tree.EnumAll(all);
    twin.tree.ClearAll();
    twin.tree.InsertBulk({all.data(), all.size()});
    twin.Check();
}

INSTANTIATE_TEST_SUITE_P(Shapes, ZvBNodeProperty,
                         testing::Values(Shape::Spread, Shape::Clustered, Shape::Points, Shape::Coincident,
                                         Shape::Large, Shape::Growing));

} // namespace
