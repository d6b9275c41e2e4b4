#include "TextGeometry.h"
#include "ZvCore/ZvcDumbHeap.h"
#include <cfloat>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

std::vector<Vec4d> RandomVertices(std::mt19937& random, uint32_t count, double centre, double spread) {
    std::uniform_real_distribution<double> u(-spread, spread);
    std::vector<Vec4d> v(count);
    for (Vec4d& p : v)
        p = {centre + u(random), -centre + u(random), u(random) / 7, u(random) * 3};
    return v;
}

std::string Refusal(const ZvXLine& line) {
    XStringW reason;
    return line.OkForInsertion(&reason) ? "" : reason.ToUtf8();
}

/// Every way of reading vertices against Unpack, and bounds against a scan.
void CheckReaders(const ZvXLine& line) {
    const auto flt = line.GetFlt();
    const uint32_t n = line.NumVerts();
    dvect<Vec2d> v2;
    dvect<Vec3d> v3;
    dvect<Vec4d> v4;
    dvect<Vec2f> f2;
    dvect<Vec3f> f3;
    dvect<Vec4f> f4;
    const Vec3d base = line.Origin().XYZ();
    line.GetAllVertices(v2), line.GetAllVertices(v3), line.GetAllVertices(v4);
    line.GetAllVertices(f2, base), line.GetAllVertices(f3, base), line.GetAllVertices(f4, base);
    ZvBounds3D box;
    for (uint32_t i = 0; i < n; ++i) {
        const Vec4d v = line.Unpack(flt, i);
        box.ExpandToFit(v.XYZ());
        EXPECT_EQ(v2[i], v.XY());
        EXPECT_EQ(v3[i], v.XYZ());
        EXPECT_EQ(v4[i], v);
        const double slack = (std::abs(v.x - base.x) + std::abs(v.y - base.y)) * 1e-6 + 1e-12;
        EXPECT_NEAR(f2[i].x, v.x - base.x, slack);
        EXPECT_NEAR(f2[i].y, v.y - base.y, slack);
        EXPECT_FLOAT_EQ(f3[i].z, float(v.z - base.z));
        EXPECT_FLOAT_EQ(f4[i].w, float(v.w));
    }
    EXPECT_EQ(line.IBounds3D(), box);
    if (n > 5) {
        Vec2d some[3];
        line.ReadXY(2, 3, some);
        EXPECT_EQ(some[0], v2[2]);
        EXPECT_EQ(some[2], v2[4]);
        const ZvXLine::Affine2 turn{0, -2, 5, 2, 0, 7};
        Vec2f turned[3];
        line.ReadXYf(2, 3, turn, turned);
        EXPECT_FLOAT_EQ(turned[0].x, float(-2 * v2[2].y + 5));
        EXPECT_FLOAT_EQ(turned[2].y, float(2 * v2[4].x + 7));
    }
    // The coarse square holds all vertices, give or take its step.
    const double step = line.MicroBoundsScale();
    if (line.MicroBoundsLo() > -128 && line.MicroBoundsHi() < 127) {
        EXPECT_GE(box.minX - base.x, (line.MicroBoundsLo() - 0.01) * step);
        EXPECT_LE(box.maxY - base.y, (line.MicroBoundsHi() + 0.01) * step);
    }
}

} // namespace

TEST(XLine, NewEntityIsEmptyAndTwoPointsMakeALine) {
    const ZvXLine empty;
    EXPECT_EQ(empty.BytesOfData(), 0u);
    EXPECT_TRUE(empty.Bounds2D().IsNull());
    EXPECT_EQ(Refusal(empty), "Linear object must have at least 1 part");
    const ZvXLine flat(Vec3d{1, 2, 0}, Vec3d{3, 4, 0}), tall(Vec3d{1, 2, 0}, Vec3d{3, 4, 5});
    EXPECT_TRUE(flat.IsLine());
    EXPECT_FALSE(flat.HasZ());
    EXPECT_FALSE(flat.PClosed(0));
    EXPECT_TRUE(tall.HasZ());
    EXPECT_NEAR(tall.Unpack(tall.GetFlt(), 1).z, 5, 1e-8);
    EXPECT_TRUE(ZvXLine(Vec4d{0, 0, 0, 1}, Vec4d{1, 0, 0, 2}).HasM());
}

TEST(XLine, BlockSizesFollowCountsAndModes) {
    // bytes: vertex size, dimensions, cache from 16 vertices up, origin, part table, triangles
    EXPECT_EQ(ZvXLine::BytesOfData(false, 1, 10, false, false, 0, 0), 4u * 2 * 9 + 16 + 4);
    EXPECT_EQ(ZvXLine::BytesOfData(true, 1, 10, false, false, 0, 0), 8u * 2 * 10 + 4);
    EXPECT_EQ(ZvXLine::BytesOfData(false, 3, 40, true, true, 7, 2),
              4u * 4 * (39 + 2 + 2) + 32 + 12 + 7 * 12 + 8);
    const size_t at15 = ZvXLine::BytesOfData(false, 1, 15, true, false, 0, 0);
    const size_t at16 = ZvXLine::BytesOfData(false, 1, 16, true, false, 0, 0);
    EXPECT_EQ(at16 - at15, 4u * 3 * 3) << "the 16th vertex brings the bounds cache";
    const auto line = LineFromText("0,0 1,1 2,0 3,1 4,0 5,1 6,0 7,1 8,0 9,1 10,0 11,1 12,0 13,1 14,0");
    EXPECT_EQ(line->BoundsPtr(), nullptr);
    EXPECT_EQ(line->BytesOfData(), line->BytesOfPureData());
    EXPECT_EQ(line->CheapSize(), sizeof(ZvXLine) + 4 * 2 * 14 + 16 + 4);
}

TEST(XLine, VerticesComeBackWithinHalfAQuantumInEveryForm) {
    std::mt19937 random(11);
    const double spreads[] = {0, 1e-9, 0.7, 1000, 3e7};
    for (int round = 0; round < 240; ++round) {
        const uint32_t count = 1 + uint32_t(random() % 40);
        const double spread = spreads[round % 5], centre = round % 3 ? 4e6 : 0;
        std::vector<Vec4d> in = RandomVertices(random, count, centre, spread);
        const bool z = round & 1, m = round & 2;
        const int force = int(random() % 3) - 1;
        const uint32_t open = 0;
        ZvXLine line;
        ASSERT_TRUE(line.Set(1, &open, in, false, z, m, force));
        EXPECT_EQ(line.Is64(), force == 1 || (force == 0 && line.Is64()));
        const auto flt = line.GetFlt();
        const Vec4d scales = line.Scales();
        for (uint32_t i = 0; i < count; ++i) {
            const Vec4d out = line.Unpack(flt, i), want{in[i].x, in[i].y, z ? in[i].z : 0, m ? in[i].w : 0};
            if (i == 0 || line.Is64()) {
                EXPECT_EQ(out, want);
                continue;
            }
            // Adding to a large origin rounds once more.
            const double ulp = std::abs(centre) * DBL_EPSILON;
            const double half = 0.5 * (1 + 1e-6);
            EXPECT_LE(std::abs(out.x - want.x), scales.x * half + ulp);
            EXPECT_LE(std::abs(out.y - want.y), scales.y * half + ulp);
            EXPECT_LE(std::abs(out.z - want.z), scales.z * half + ulp);
            EXPECT_LE(std::abs(out.w - want.w), scales.w * half + ulp);
        }
        CheckReaders(line);
    }
}

TEST(XLine, GeneralSetterTakesInputWithAndWithoutZAndM) {
    const double xyzm[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (int mode : {-1, 1})
        for (int in = 0; in < 4; ++in)
            for (int has = 0; has < 4; ++has) {
                const bool inZ = in & 1, inM = in & 2, z = has & 1, m = has & 2;
                const uint32_t dims = 2 + inZ + inM, open = 0;
                ZvXLine line;
                ASSERT_TRUE(line.Set(1, &open, 3, false, z, m, inZ, inM, xyzm, mode));
                EXPECT_EQ(line.BytesOfData(), ZvXLine::BytesOfData(mode > 0, 1, 3, z, m, 0, 0));
                const Vec4d v = line.Unpack(line.GetFlt(), 2);
                const double* p = xyzm + 2 * dims;
                EXPECT_NEAR(v.x, p[0], 1e-7);
                EXPECT_NEAR(v.z, z && inZ ? p[2] : 0, 1e-7);
                EXPECT_NEAR(v.w, m && inM ? p[2 + inZ] : 0, 1e-7);
                if (!inZ || !z) {
                    EXPECT_EQ(line.GetExpZ(), 0);
                }
            }
}

TEST(XLine, PrecisionDecidesTheMode) {
    // Without a drawing a quantum may be a millionth: extents up to 2147.483647.
    EXPECT_FALSE(LineFromText("0,0 2147.48,0")->Is64());
    EXPECT_TRUE(LineFromText("0,0 2147.49,0")->Is64());
    EXPECT_TRUE(LineFromText("1000,0 -1147.49,0")->Is64()) << "the distance from the first vertex counts";
    EXPECT_TRUE(LineFromText("0,0 1,0", 1)->Is64());
    EXPECT_FALSE(LineFromText("0,0 1e9,0", -1)->Is64());
}

TEST(XLine, ExponentsCoverTheExtentWithHeadroom) {
    struct {
        double extent;
        bool is64;
        int exponent;
    } cases[] = {
        {0, false, -128},     {1e-101, false, -128}, {1, false, 1},      {0.999, false, 0},
        {1024, false, 11},    {1022, false, 10},     {1e38, false, 127}, {1e60, false, 127},
        {1e-60, false, -128}, {1, true, 1},          {0.999, true, 0},   {1e300, true, 125},
        {256, true, 2},       {255, true, 1},        {1e-40, true, -16}, {1.7e308, true, 127},
    };
    for (const auto& c : cases) {
        const Vec2d ends[] = {{0, 0}, {c.extent, 0}};
        ZvXLine line;
        line.SetPoly(false, false, 2, ends, c.is64 ? 1 : -1);
        const int expected = c.is64 ? c.exponent * 8 : c.exponent == 127 ? 256 : c.exponent;
        EXPECT_EQ(line.GetExpXY(), expected) << c.extent << (c.is64 ? " 64" : " 32");
        EXPECT_TRUE(std::isfinite(line.MicroBoundsScale()));
    }
    EXPECT_EQ(ZvXLine::Scales_I64(8, 0, -1).x, 2);
    EXPECT_EQ(ZvXLine::Scales_I64(8, 0, -1).w, std::ldexp(1.0, -71));
    const auto line = LineFromText("5,5 6,5");
    EXPECT_EQ(line->Scales().x, 2 / 2147483647.0);
    EXPECT_DOUBLE_EQ(line->SizeFromMicroBounds(), 64 * 2 / 127.0);
    EXPECT_EQ(LineFromText("5,5 5,5")->SizeFromMicroBounds(), 0);
}

TEST(XLine, HalfQuantaRoundUp) {
    // Extent 1.998 has exponent 1: a quantum is 2 / 2147483647.
    const double q = 2 / 2147483647.0;
    const Vec2d v[] = {{0, 0}, {1.998, 0}, {2.5 * q, -2.5 * q}, {-0.5 * q, 0.5 * q}};
    ZvXLine line;
    line.SetPoly(false, false, 4, v, -1);
    const int32_t* p = line.MVerts32();
    EXPECT_EQ(p[2], 3);
    EXPECT_EQ(p[3], -2);
    EXPECT_EQ(p[4], 0);
    EXPECT_EQ(p[5], 1);
}

TEST(XLine, NamesFollowShape) {
    struct {
        const char* text;
        bool polygon;
        const char* name;
    } cases[] = {
        {"0,0 1,0", false, "Line"},
        {"0,0; 1,0", false, "Line"},
        {"0,0 1,0", true, "Polygon"},
        {"0,0 1,0 1,1", false, "Polyline"},
        {"0,0 1,0 1,1", true, "Polygon"},
        {"0,0 1,0; 5,5 6,6", false, "Multipart Line"},
        {"0,0 1,0 1,1; 5,5 6,5 6,6", true, "Multipart Polygon"},
    };
    for (const auto& c : cases) {
        ZvXLine line;
        SetFromText(line, c.text, c.polygon);
        EXPECT_EQ(line.VerbalName().ToUtf8(), c.name) << c.text;
    }
}

TEST(XLine, InsertionCheckRefusesWhatCannotBeDrawnOrStored) {
    const char* line2 = "Linear object parts must have at least 2 vertices";
    const char* ring3 = "Linear Polygon object parts must have at least 3 vertices";
    EXPECT_EQ(Refusal(*LineFromText("0,0 1,0")), "");
    EXPECT_EQ(Refusal(*LineFromText("0,0")), line2);
    EXPECT_EQ(Refusal(*LineFromText("0,0 1,0 2,0; 3,0")), line2);
    EXPECT_EQ(Refusal(*PolygonFromText("0,0 1,0")), ring3);
    EXPECT_EQ(Refusal(*PolygonFromText("0,0 1,0 1,1; 5,5 6,5 6,6")), "");

    for (int force : {-1, 0, 1}) {
        const Vec2d bad[] = {{0, 0}, {1, 1}, {2, force ? kInf : NAN}};
        ZvXLine line;
        line.SetPoly(false, false, 3, bad, force);
        EXPECT_EQ(Refusal(line), "Linear object vertex 2 has a coordinate that is not a finite number");
    }
    // Starts beyond 24 bits and starts that descend cannot be stored: the vertices stay, as one part.
    const Vec2d five[] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}};
    const uint32_t tables[][2] = {{0, ZvXLine::MakePartEntry(16777218, true)}, {3, 2}, {0, 6}};
    for (const auto& table : tables) {
        ZvXLine line;
        EXPECT_TRUE(line.Set(2, table, 5, false, false, false, false, false, &five[0].x));
        EXPECT_EQ(line.NumVerts(), 5u);
        EXPECT_NE(Refusal(line).find("begin at vertex 16777215 or before"), std::string::npos);
    }
}

TEST(XLine, PartTableRulesLookAtStartsOnly) {
    const struct {
        std::vector<uint32_t> table;
        bool sane;
    } cases[] = {{{0}, true},     {{1}, false},      {{0, 1}, false},         {{0, 2}, true},
                 {{0, 7}, false}, {{0, 5, 3}, true}, {{0x9E000000u, 4}, true}};
    for (const auto& c : cases)
        EXPECT_EQ(ZvXLine::VerifyPartSanity(uint32_t(c.table.size()), c.table.data(), 7), c.sane);
    ZvXLine line;
    const Vec2d v[] = {{0, 0}, {1, 0}, {2, 0}};
    const uint32_t second[] = {0, 1};
    line.Set(2, second, 3, false, false, false, false, false, &v[0].x);
    EXPECT_FALSE(line.VerifyPartSanity());
}

TEST(XLine, PartsAreAddressedThroughTheTable) {
    const auto line = LineFromText("0,0 1,0 2,0; 5,5 6,5 close; 7,7 8,8 9,9 9,8");
    EXPECT_EQ(line->NumParts(), 3u);
    EXPECT_EQ(line->PStart(1), 3u);
    EXPECT_EQ(line->PLen(0), 3u);
    EXPECT_EQ(line->PEnd(2), 9u);
    EXPECT_TRUE(line->PClosed(1));
    EXPECT_EQ(line->PDepth(1), 255);
    EXPECT_FALSE(line->HasDepths());
    for (uint32_t i = 0; i < 9; ++i)
        EXPECT_EQ(line->PartOfVertex(i), i < 3 ? 0u : i < 5 ? 1u : 2u);
    line->SetPClosed(2, true);
    EXPECT_TRUE(line->PClosed(2));
    line->SetDepthRaw(2, 99);
    EXPECT_EQ(line->GetDepthRaw(2), 15u);
    EXPECT_TRUE(line->PClosed(2));
    EXPECT_EQ(line->PStart(2), 5u);
    EXPECT_TRUE(ZvXLine().HasDepths());
}

TEST(XLine, SettersKeepPartsAndDropCaches) {
    auto line = PolygonFromText("0,0 9,0 9,9 0,9 4,5; 2,2 3,2 3,3", 1);
    line->TriangulateIfNecessary();
    line->EnsureDepths();
    ASSERT_TRUE(line->HasTriangles());
    dvect<Vec4d> v;
    line->GetAllVertices(v);
    for (Vec4d& p : v)
        p = {p.x * 2, p.y, 1, 7};
    ASSERT_TRUE(line->SetAllVertices(v));
    EXPECT_TRUE(line->IsPolygon() && line->HasZ() && line->HasM() && line->HasTriangles());
    EXPECT_EQ(line->NumParts(), 2u);
    EXPECT_EQ(line->Unpack(line->GetFlt(), 1), (Vec4d{18, 0, 1, 7}));
    v.pop_back();
    EXPECT_FALSE(line->SetAllVertices(v));
    line->SetIsPolygon(false, false);
    EXPECT_FALSE(line->HasTriangles());
    EXPECT_FALSE(line->HasDepths()) << "open parts are no rings of a line";
    line->SetIsPolygon(true, true);
    EXPECT_TRUE(line->PClosed(0) && line->PClosed(1));
}

TEST(XLine, PartsCanBeReplacedOneByOne) {
    auto line = LineFromText("0,0 1,0; 5,5 6,5 6,6 close; 7,7 8,8", 1);
    dvect<Vec4d> part;
    bool closed = false;
    ASSERT_TRUE(line->MLVGetPart(1, part, &closed));
    EXPECT_TRUE(closed);
    part.push_back({5, 6, 2, 0});
    EXPECT_TRUE(line->MLVSetPart(1, part, false));
    EXPECT_TRUE(line->HasZ()) << "a height is not lost";
    EXPECT_EQ(line->MLVGetPartInfo(1, &closed, nullptr), 4);
    EXPECT_FALSE(closed);
    EXPECT_TRUE(line->MLVDeletePart(0));
    EXPECT_TRUE(line->MLVAddPart(part, true));
    EXPECT_EQ(line->NumParts(), 3u);
    EXPECT_EQ(line->NumVerts(), 10u);
    EXPECT_EQ(line->Unpack(line->GetFlt(), 5).XY(), (Vec2d{8, 8}));
    EXPECT_FALSE(line->MLVGetPart(3, part, nullptr));
    EXPECT_FALSE(line->MLVSetPart(-1, part, false));
    EXPECT_EQ(line->MLVGetPartInfo(9, nullptr, nullptr), -1);
    EXPECT_TRUE(line->MLVSetParts({part, part}, {true, false}));
    EXPECT_EQ(line->NumParts(), 2u);
    EXPECT_FALSE(line->LineVectorSetVertices({{0, 0, 0, 0}, {1, 1, 0, 0}})) << "would lose a part";
    int least = 0, most = 0;
    EXPECT_TRUE(line->IsLineVectorEntity(&least, &most, &closed));
    EXPECT_EQ(least, 2);
    EXPECT_EQ(most, 2147483646);
}

TEST(XLine, ArenaBlocksBecomeOwnedCopies) {
    ZvcDumbHeap heap;
    ZvXLine line;
    ASSERT_TRUE(line.Alloc(false, 1, 3, false, false, false, 0, 0, &heap));
    const auto source = LineFromText("1,2 3,4 5,7");
    std::memcpy(const_cast<uint8_t*>(line.Data()), source->Data(), source->BytesOfData());
    EXPECT_TRUE(line.DataIsSwapped());
    ZvHeapMarks marks;
    line.GC_Mark(marks);
    EXPECT_EQ(marks.liveBytes, line.BytesOfData());
    line.DeserializeHard();
    EXPECT_FALSE(line.DataIsSwapped());
    heap.Clear();
    EXPECT_EQ(line.Origin(), (Vec4d{1, 2, 0, 0}));
    ZvHeapMarks none;
    line.GC_Mark(none);
    EXPECT_EQ(none.liveBlocks, 0u);
}

TEST(XLine, ClonesAreEqualAndIndependent) {
    auto line = LineFromText("0,0,1 1,0,2 1,1,3; 5,5,5 6,6,6");
    line->SetColor(ZvColor(3));
    const auto copy = line->Clone();
    EXPECT_TRUE(line->IsGeometryEqual(*copy));
    EXPECT_TRUE(line->IsAppearanceEqual(*copy));
    line->Translate({1, 0, 0});
    EXPECT_FALSE(line->IsGeometryEqual(*copy));
    EXPECT_TRUE(line->IsGeometryEqual(*copy, {1.001}));
    EXPECT_EQ(line->CloneAs(ZvEntityCode::Full(1, ZvEntityCode::Text)), nullptr);
    EXPECT_NE(line->CloneAs(ZvEntityCode::Full(1, ZvEntityCode::XLine)), nullptr);
    ZvXLine other;
    other.CloneFrom(*copy);
    EXPECT_EQ(other.GetColor(), ZvColor(3));
    EXPECT_TRUE(other.IsGeometryEqual(*copy));
}

TEST(XLine, MovingRoundsNothingButTheOrigin) {
    std::mt19937 random(4);
    for (int force : {-1, 1}) {
        const auto in = RandomVertices(random, 30, 0, 100);
        const uint32_t open = 0;
        ZvXLine line;
        line.Set(1, &open, in, false, true, false, force);
        const std::vector<uint8_t> before(line.Data(), line.Data() + line.BytesOfData());
        line.Translate({0.125, -3, 16});
        CheckReaders(line);
        EXPECT_EQ(line.Origin().x, in[0].x + 0.125);
        if (force < 0) { // the part table, then the origin, then everything else as it was
            EXPECT_EQ(std::memcmp(line.Data() + 4 + 24, before.data() + 4 + 24, before.size() - 28), 0);
        }
        line.Transform(Mat4d::RotationZ(std::numbers::pi / 2));
        const Vec4d v = line.Unpack(line.GetFlt(), 7);
        EXPECT_NEAR(v.x, -(in[7].y - 3), 1e-6);
        EXPECT_NEAR(v.y, in[7].x + 0.125, 1e-6);
        CheckReaders(line);
    }
    auto flat = LineFromText("0,0 1,0");
    flat->Transform(Mat4d::RotationY(-std::numbers::pi / 4));
    EXPECT_NEAR(flat->Unpack(flat->GetFlt(), 1).z, std::sqrt(0.5), 1e-9) << "a tilted line gains heights";
}

TEST(XLine, RepackingDropsWhatAddsNothing) {
    auto line = LineFromText("0,0 0,0 1,0 1,1 0,0 close; 5,5 6,6 6,6");
    EXPECT_TRUE(line->RepackParts());
    EXPECT_EQ(line->NumVerts(), 5u);
    EXPECT_EQ(line->PLen(0), 3u);
    EXPECT_TRUE(line->PClosed(0));
    EXPECT_FALSE(line->RepackParts());
}
