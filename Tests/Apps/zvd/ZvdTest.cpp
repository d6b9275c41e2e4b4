#include "ScratchFolder.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvdRun.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

class Zvd : public ::testing::Test {
protected:
    ZvdRun Run(const std::string& arguments) { return RunZvd(m_folder.Path(), arguments); }
    fs::path In(const std::string& name) const { return m_folder.Path() / ZvPlatform::PathFromUtf8(name); }
    std::string Q(const std::string& name) const { return Quote(In(name)); }
    /// A small map with lines and polygons on three layers.
    void MakeMap(const std::string& name, const std::string& options = "") {
        const ZvdRun run = Run("bench-data " + Q(name) + " --lines 500 --polygons 60 --layers 2 " + options);
        ASSERT_EQ(run.code, 0) << run.err;
    }
    Json Info(const std::string& name) {
        const ZvdRun run = Run("info --json " + Q(name));
        EXPECT_EQ(run.code, 0) << run.err;
        return Json::parse(run.out, nullptr, false);
    }

    ScratchFolder m_folder;
};

/// Zero length, too few vertices, holes without area, nothing at all, numbers at the end of their range.
constexpr const char* kDegenerate = R"({"type":"FeatureCollection","features":[
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"LineString","coordinates":[[1,1],[1,1]]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"LineString","coordinates":[[1,1]]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"Polygon","coordinates":[[[0,0],[1,1],[0,0]]]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"Polygon","coordinates":[[[0,0],[0,0],[0,0],[0,0]]]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"Point","coordinates":[NaN,1]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"LineString","coordinates":[[1e308,1],[-1e308,2]]}},
 {"type":"Feature","properties":{"a":1},"geometry":{"type":"LineString","coordinates":[[1e999,1],[2,2]]}},
 {"type":"Feature","properties":{"a":1},"geometry":null}]})";

} // namespace

TEST_F(Zvd, HelpTeachesTheCommandsAndExitCodes) {
    const ZvdRun run = Run("--help");
    EXPECT_EQ(run.code, 0);
    for (const char* word : {"convert", "info", "check", "dump", "render", "Examples", "Exit codes"})
        EXPECT_NE(run.out.find(word), std::string::npos) << word;
    EXPECT_EQ(Run("convert --help").code, 0);
    EXPECT_NE(Run("formats").out.find("  load save Zelvan Drawing .zvd\n"), std::string::npos);
}

TEST_F(Zvd, EveryRefusalIsOneLineWithItsCodeAndTouchesNothing) {
    MakeMap("good.zvd");
    fs::create_directory(In("folder"));
    WriteFile(In("empty.zvd"), "");
    WriteFile(In("other.zvd"), "This is a letter to my aunt, and no drawing at all.");
    WriteFile(In("unknown.xyz"), "?");
    WriteFile(In("cut.zvd"), ReadFile(In("good.zvd")).substr(0, 50));
    WriteFile(In("map.geojson"), kDegenerate);
    WriteFile(In("cut.geojson"), std::string(kDegenerate).substr(0, 300));
    WriteFile(In("target.zvd"), "precious");
    const std::string good = Q("good.zvd");
    const struct {
        std::string arguments;
        int code;
    } cases[] = {
        {"info " + Q("missing.zvd"), 3},
        {"info " + Q("folder"), 3},
        {"info " + Q("empty.zvd"), 4},
        {"info " + Q("other.zvd"), 4},
        {"info " + Q("unknown.xyz"), 3},
        {"check " + Q("missing.zvd"), 3},
        {"dump " + Q("other.zvd"), 4},
        {"convert " + Q("missing.zvd") + " " + Q("target.zvd"), 3},
        {"convert " + Q("other.zvd") + " " + Q("target.zvd"), 4},
        {"convert " + good + " " + Q("no-such-folder/out.zvd"), 5},
        {"convert " + good + " " + Q("folder"), 5},
        {"convert " + good + " " + Q("out.unknownkind"), 5},
        {"render " + good + " " + Q("out.gif"), 2},
        {"render " + good + " " + Q("no-such-folder/out.png"), 5},
        {"render " + good + " " + Q("out.png") + " --size 0x0", 2},
        {"render " + good + " " + Q("out.png") + " --extent 1,1,0,0", 2},
        {"info --entity 999999 " + good, 2},
        {"render " + good + " " + Q("out.png") + " --extent 0,0,inf,1", 2},
        {"render " + good + " " + Q("out.png") + " --around 0,0", 2},
        {"render " + good + " " + Q("out.png") + " --around 0,0 --within 0m", 2},
        {"render " + good + " " + Q("out.png") + " --layers nosuch", 2},
        {"check " + Q("folder"), 3},
#ifndef _WIN32
        {"info " + Q("cut.zvd"), 4},
        {"info " + Q("cut.geojson"), 4},
        {"convert " + Q("map.geojson") + " " + Q("target.zvd") + " --layers nosuch", 4},
        {"convert " + good + " /proc/out.zvd", 5},
        {"info /dev/null", 3},
#endif
    };
    for (const auto& c : cases) {
        const ZvdRun run = Run(c.arguments);
        EXPECT_EQ(run.code, c.code) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.ErrorLines(), 1u) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.err.rfind("zvd: ", 0), 0u) << run.err;
    }
    EXPECT_EQ(ReadFile(In("target.zvd")), "precious");
    EXPECT_FALSE(fs::exists(In("out.png")));
    for (const char* wrong : {"frobnicate", "bench-data x.zvd --lines -5", "convert a b --precision nan"})
        EXPECT_EQ(Run(wrong).code, 2) << wrong;
    EXPECT_EQ(Run("convert onlyone.zvd").code, 2);
}

TEST_F(Zvd, MapSurvivesEveryCompressionLevelWithTheSameContent) {
    MakeMap("made.zvd");
    ASSERT_EQ(Run("convert " + Q("made.zvd") + " " + Q("map.zvd") + " --level 0").code, 0);
    const Json first = Info("map.zvd");
    ASSERT_EQ(first["entities"], 560);
    for (int level : {1, 3, 5, 6, 9}) {
        const std::string name = "level" + std::to_string(level) + ".zvd";
        ASSERT_EQ(Run("convert " + Q("map.zvd") + " " + Q(name) + " --level " + std::to_string(level)).code,
                  0);
        const ZvdRun check = Run("check " + Q(name));
        EXPECT_EQ(check.code, 0) << check.out;
        const Json info = Info(name);
        EXPECT_EQ(info["header"]["solid"], level >= 6);
        EXPECT_EQ(info["header"]["checksum"], "right");
        for (const char* key : {"entities", "extents", "tables"})
            EXPECT_EQ(info[key], first[key]) << key;
        ASSERT_EQ(info["layers"].size(), first["layers"].size());
        for (size_t i = 0; i < first["layers"].size(); ++i)
            EXPECT_EQ(info["layers"][i]["kinds"], first["layers"][i]["kinds"]);
        // The way back gives the first file's bytes: nothing was lost, and the writer is deterministic.
        ASSERT_EQ(Run("convert " + Q(name) + " " + Q("back.zvd") + " --level 0").code, 0);
        EXPECT_TRUE(ReadFile(In("back.zvd")) == ReadFile(In("map.zvd"))) << level;
    }
}

TEST_F(Zvd, CheckTellsTheOffsetOfDamageAndLoadsRefuseIt) {
    MakeMap("map.zvd");
    std::string bytes = ReadFile(In("map.zvd"));
    WriteFile(In("cut.zvd"), bytes.substr(0, bytes.size() * 2 / 3));
    bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] ^ 0x55);
    WriteFile(In("flipped.zvd"), bytes);
    for (const char* name : {"cut.zvd", "flipped.zvd"}) {
        const ZvdRun check = Run("check --json " + Q("map.zvd") + " " + Q(name));
        EXPECT_EQ(check.code, 1) << check.err;
        const Json report = Json::parse(check.out, nullptr, false);
        ASSERT_EQ(report.size(), 2u);
        EXPECT_TRUE(report[0]["sound"]);
        EXPECT_FALSE(report[1]["sound"]);
        ASSERT_FALSE(report[1]["findings"].empty());
        EXPECT_TRUE(report[1]["findings"][0].contains("offset"));
        const ZvdRun info = Run("info " + Q(name));
        EXPECT_EQ(info.code, 4) << info.err;
        EXPECT_EQ(info.ErrorLines(), 1u) << info.err;
    }
}

TEST_F(Zvd, RepairSavesWhatCanBeReadAndTellsWhatIsLost) {
    MakeMap("map.zvd");
    std::string bytes = ReadFile(In("map.zvd"));
    bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] ^ 0x55);
    WriteFile(In("bad.zvd"), bytes);
    const ZvdRun run = Run("check --repair --json " + Q("bad.zvd") + " " + Q("good.zvd"));
    EXPECT_EQ(run.code, 1) << run.err;
    const Json report = Json::parse(run.out, nullptr, false);
    EXPECT_EQ(report["damagedBlocks"], 1);
    uint64_t saved = 0;
    for (const Json& layer : report["layers"])
        saved += layer["saved"].get<uint64_t>();
    EXPECT_EQ(report["objectsSaved"], saved);
    EXPECT_EQ(Info("good.zvd")["entities"], saved);
    EXPECT_EQ(Run("check " + Q("good.zvd")).code, 0);
    EXPECT_TRUE(ReadFile(In("bad.zvd")) == bytes);

    EXPECT_EQ(Run("check --repair " + Q("map.zvd") + " " + Q("same.zvd")).code, 0);
    EXPECT_EQ(Info("same.zvd")["layers"], Info("map.zvd")["layers"]);
    std::error_code failed;
    fs::create_hard_link(In("bad.zvd"), In("link.zvd"), failed);
    WriteFile(In("letter.zvd"), "This is a letter to my aunt, and no drawing at all.");
    for (const auto& [arguments, code] :
         std::vector<std::pair<std::string, int>>{{Q("bad.zvd") + " " + Q("bad.zvd"), 2},
                                                  {Q("bad.zvd") + " " + Q("link.zvd"), failed ? 1 : 2},
                                                  {Q("bad.zvd"), 2},
                                                  {Q("bad.zvd") + " " + Q("out.geojson"), 2},
                                                  {Q("missing.zvd") + " " + Q("out.zvd"), 3},
                                                  {Q("letter.zvd") + " " + Q("out.zvd"), 4}}) {
        const ZvdRun refused = Run("check --repair " + arguments);
        EXPECT_EQ(refused.code, code) << arguments;
        EXPECT_TRUE(code == 1 || refused.ErrorLines() == 1u) << refused.err;
    }
    EXPECT_FALSE(fs::exists(In("out.zvd")));
}

TEST_F(Zvd, RecoverPutsTheBackupInThePlaceOfADrawingThatIsDamagedOrMissing) {
    MakeMap("map.zvd");
    const std::string whole = ReadFile(In("map.zvd"));
    WriteFile(In("map.zvd.bak"), whole);
    EXPECT_EQ(Run("recover " + Q("map.zvd")).code, 0);
    WriteFile(In("map.zvd"), whole.substr(0, whole.size() / 2));
    EXPECT_EQ(Run("recover --dry-run " + Q("map.zvd")).code, 1);
    EXPECT_FALSE(ReadFile(In("map.zvd")) == whole);
    const ZvdRun run = Run("recover --json " + Q("map.zvd"));
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(Json::parse(run.out, nullptr, false)[0]["exists"].get<bool>());
    EXPECT_TRUE(ReadFile(In("map.zvd")) == whole);

    WriteFile(In("map.zvd.bak"), whole);
    fs::remove(In("map.zvd"));
    EXPECT_EQ(Run("recover " + Q("map.zvd")).code, 0);
    EXPECT_TRUE(ReadFile(In("map.zvd")) == whole);
    EXPECT_EQ(Run("recover " + Q("missing.zvd")).code, 3);
}

TEST_F(Zvd, DumpNamesEveryFieldOfTheHeader) {
    MakeMap("map.zvd");
    const ZvdRun run = Run("dump --entities 2 " + Q("map.zvd"));
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("1075"), std::string::npos);
    const ZvdRun json = Run("dump --json --entities 1 " + Q("map.zvd"));
    const Json line = Json::parse(json.out.substr(0, json.out.find('\n')), nullptr, false);
    EXPECT_EQ(line["offset"], 0);
}

TEST_F(Zvd, PicturesAreWrittenInTheirFormat) {
    MakeMap("map.zvd");
    const ZvdRun png = Run("render --json " + Q("map.zvd") + " " + Q("map.png") +
                           " --size 640x480 --background \"#102030\"");
    ASSERT_EQ(png.code, 0) << png.err;
    const std::string picture = ReadFile(In("map.png"));
    EXPECT_EQ(picture.substr(0, 4), "\x89PNG");
    EXPECT_EQ(picture.substr(16, 8), std::string("\0\0\x02\x80\0\0\x01\xE0", 8));
    const Json report = Json::parse(png.out, nullptr, false);
    EXPECT_EQ(report["width"], 640);
    EXPECT_GT(report["entitiesDrawn"].get<int>() + report["nodesBelowPixel"].get<int>(), 0);
    const ZvdRun part =
        Run("render --json " + Q("map.zvd") + " " + Q("part.png") + " --around 0,0 --within 50km");
    const Json partReport = Json::parse(part.out, nullptr, false);
    EXPECT_LT(partReport["entitiesDrawn"], report["entitiesDrawn"]);
#ifndef _WIN32
    ASSERT_EQ(Run("render " + Q("map.zvd") + " " + Q("map.pdf") + " --paper A3 --scale 1:5000000").code, 0);
    EXPECT_EQ(ReadFile(In("map.pdf")).substr(0, 5), "%PDF-");
    ASSERT_EQ(Run("render " + Q("map.zvd") + " " + Q("map.svg")).code, 0);
    EXPECT_NE(ReadFile(In("map.svg")).find("<svg"), std::string::npos);
#endif
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.Path()))
        EXPECT_NE(entry.path().filename().string().rfind(".zvd-", 0), 0u) << "left over: " << entry.path();
}

#ifndef _WIN32
TEST_F(Zvd, PathsMayBeInAnyScript) {
    MakeMap("карта 地図 – ü.zvd");
    EXPECT_EQ(Info("карта 地図 – ü.zvd")["entities"], 560);
    EXPECT_EQ(Run("convert " + Q("карта 地図 – ü.zvd") + " " + Q("χάρτης.zvd")).code, 0);
}

TEST_F(Zvd, InterruptedWorkLeavesTheTargetAsItWas) {
    WriteFile(In("target.zvd"), "precious");
    const ZvdRun run = RunZvd(m_folder.Path(), "bench-data " + Q("target.zvd") + " --lines 20000000",
                              "timeout --foreground -s INT 0.5");
    EXPECT_TRUE(run.code == 130 || run.code == 124) << run.code; // the time limit's own code, or ours
    EXPECT_NE(run.err.find("interrupted"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(In("target.zvd")), "precious");
}

/// A limit on the length of files stands for a full disk: the write fails with what was written in place.
TEST_F(Zvd, FullDiskIsToldOnceAndLeavesTheTargetAsItWas) {
    MakeMap("map.zvd", "--seed 3 --vertices 40");
    fs::create_directory(In("out"));
    for (const char* kind : {"zvd", "fgb", "gpkg", "geojson", "shp", "kml", "csv", "png", "pdf", "svg"}) {
        const std::string target = std::string("out/target.") + kind;
        WriteFile(In(target), "precious");
        const bool isPicture = kind[0] == 'p' || std::string(kind) == "svg";
        const ZvdRun run = RunZvd(
            m_folder.Path(), std::string(isPicture ? "render " : "convert ") + Q("map.zvd") + " " + Q(target),
            "ulimit -f 16;");
        EXPECT_EQ(run.code, 5) << kind;
        EXPECT_EQ(run.ErrorLines(), 1u) << run.err;
        EXPECT_NE(run.err.find("the disk is full"), std::string::npos) << kind << run.err;
        EXPECT_EQ(ReadFile(In(target)), "precious") << kind;
        EXPECT_TRUE(fs::remove(In(target)));
    }
    EXPECT_EQ(
        RunZvd(m_folder.Path(), "convert " + Q("map.zvd") + " " + Q("out/first.zvd"), "ulimit -f 16;").code,
        5);
    EXPECT_TRUE(fs::is_empty(In("out"))) << "left over: " << fs::directory_iterator(In("out"))->path();
}

TEST_F(Zvd, DegenerateGeometryIsCountedAndTheRestIsKept) {
    WriteFile(In("in.geojson"), kDegenerate);
    const ZvdRun run = Run("convert --json " + Q("in.geojson") + " " + Q("out.zvd"));
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(Info("out.zvd")["entities"], 3);
    EXPECT_EQ(Run("check " + Q("out.zvd")).code, 0);
    for (const char* picture : {"out.png", "out.svg", "out.pdf"})
        EXPECT_EQ(Run("render " + Q("out.zvd") + " " + Q(picture)).code, 0) << picture;
}

TEST_F(Zvd, DemoProvesThatTheReloadedWorldEqualsTheFirst) {
    const ZvdRun run = Run("demo --source " + Quote(fs::path(ZELVAN_SAMPLES_DIR) / "world.geojson") +
                           " --out " + Quote(m_folder.Path()));
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("equals the first"), std::string::npos);
    for (const char* name : {"world.zvd", "world.png", "world.svg", "world.pdf"})
        EXPECT_GT(fs::file_size(In(name)), 10000u) << name;
    const Json entity = Json::parse(Run("info --json --entity 1 " + Q("world.zvd")).out, nullptr, false);
    EXPECT_TRUE(entity[0]["attributes"].contains("name"));
    EXPECT_GE(entity[0]["details"].size(), 4u);
    const Json there =
        Json::parse(Run("info --json --at 0,0 --within 30ft " + Q("world.zvd")).out, nullptr, false);
    EXPECT_TRUE(there.is_array());
    const Json info = Json::parse(Run("info --json --units km " + Q("world.zvd")).out, nullptr, false);
    const std::string length = info["measures"].back()["length"];
    EXPECT_GT(std::stod(length), 1000);
    EXPECT_TRUE(length.ends_with(" km")) << length;
}
#endif
