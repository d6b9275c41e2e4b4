#include "Apps/zvd/DrawingUnits.h"
#include "Apps/zvd/EditLine.h"
#include "ScratchFolder.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvdRun.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

TEST(EditLine, SplitsWordsSettingsAndQuotes) {
    EditLine line;
    std::string why;
    ASSERT_TRUE(
        EditLine::Parse(R"(  layer rename "My \"old\" plots" new=1 a="x y=z"	#not a remark )", line, why))
        << why;
    EXPECT_EQ(line.command, "layer");
    EXPECT_EQ(line.words, (std::vector<std::string>{"rename", "My \"old\" plots", "#not", "a", "remark"}));
    EXPECT_EQ(line.settings["a"], "x y=z");
    ASSERT_TRUE(EditLine::Parse("# nothing", line, why));
    EXPECT_TRUE(line.command.empty());
    EXPECT_FALSE(EditLine::Parse("layer new \"open", line, why));
    EXPECT_NE(why.find("column 11"), std::string::npos) << why;
    EXPECT_FALSE(EditLine::Parse("add a=1 a=2", line, why));
}

TEST(DrawingUnits, ReadsPlacesInTheUsersUnitAndAxes) {
    ZvDrawing drawing;
    ZvUcs& ucs = *drawing.UcsTable()->GetCurrent();
    ucs.SetOrigin({100, 0, 0});
    ucs.SetScale(1000); // millimetres in a world of metres
    const DrawingUnits units(drawing);
    for (const char* bad : {"", "1", "1,", ",1", "1,2,3,4", "1,x", "nan,1", "1,inf", "1;2", "1 m"})
        EXPECT_FALSE(units.Place(bad)) << bad;
    EXPECT_EQ(units.Place("-1500,2e3,7000"), (Vec3d{98.5, 2, 7}));
    EXPECT_EQ(units.Place("-1500,2m"), (Vec3d{98.5, 2, 0}));
    EXPECT_EQ(units.Way("2500,1m"), (Vec3d{2.5, 1, 0}));
    EXPECT_FALSE(units.Angle("90 m"));
    EXPECT_EQ(units.PlaceText({98.5, 2, 7}), "-1500.000, 2000.000, 7000.000");
}

class ZvdEdit : public ::testing::Test {
protected:
    ZvdRun Edit(const std::string& script, const std::string& options = "--new") {
        WriteFile(m_folder / "script.txt", script);
        return RunZvd(m_folder.Path(), "edit " + options + " " + Quote(m_folder / "plan.zvd") + " " +
                                           Quote(m_folder / "script.txt"));
    }
    nlohmann::json Info() {
        return nlohmann::json::parse(
            RunZvd(m_folder.Path(), "info --json " + Quote(m_folder / "plan.zvd")).out, nullptr, false);
    }
    ScratchFolder m_folder;
};

TEST_F(ZvdEdit, EditsUndoesRedoesAndSaves) {
    const ZvdRun run = Edit(R"(layer new Plots
add polygon 0,0 40,0 40,30 0,30 / 10,10 20,10 20,18 10,18 layer=Plots fill=#FFEECC
add polyline 0,0 5,5 9,1 close color=Red width=Points:1.5
add point 1,2 3,4
move last 100,0
count box:90,0,200,10
undo
count box:90,0,200,10
redo
section begin
erase layer:Plots
section end rollback
count layer:Plots
grip 1 0 -5,-5
rotate 1 90 about=20,15
undo 2
attribute 1 "owner name"="Anna Lee"
tolayer 3-4 Plots
order 1 front
select all
layer rename Plots "My plots"
layer delete "My plots"
undo
count all
save
)");
    ASSERT_EQ(run.code, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("\n6: 2\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n8: 0\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n13: 1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n24: 4\n"), std::string::npos) << run.out;
    EXPECT_EQ(Info()["entities"], 4);
    const std::string entity =
        RunZvd(m_folder.Path(), "info --json --entity 1 " + Quote(m_folder / "plan.zvd")).out;
    EXPECT_NE(entity.find("Anna Lee"), std::string::npos) << entity;
    EXPECT_NE(entity.find("My plots"), std::string::npos) << entity;
}

TEST_F(ZvdEdit, TellsAndForgetsTheHistoryAndBringsInOtherFiles) {
    fs::create_directory(m_folder / "backups");
    ASSERT_EQ(RunZvd(m_folder.Path(), "bench-data " + Quote(m_folder / "other.zvd") + " --lines 3").code, 0);
    const auto path = [this](const char* name) { return (m_folder / name).generic_string(); };
    const std::string other = path("other.zvd");
    const ZvdRun run = Edit(R"(layer new A
add polyline 0,0 1,1 layer=A
add polyline 5,5 6,6
move 1 1,1
move 2 1,1
undo
history
forget layer A
delete 2
history
count all
)" + ("backup \"" + path("backups") + "\"\nimport \"" + other + "\" \"" + other +
      "\"\ncount all\nsave\nimport \"" + other + "\" missing.zvd\n"));
    EXPECT_EQ(run.code, 1);
    for (const char* text :
         {"7: 4 steps to undo (New Record, Create, Create, Transform), 1 to redo (Transform)",
          "8: forgotten: 3 steps", "9: deleted for good: 1", "10: 0 steps to undo", "11: 1\n",
          "13: imported: 6 entities", "14: 7\n"})
        EXPECT_NE(run.out.find(text), std::string::npos) << text << " in\n" << run.out;
    EXPECT_NE(run.err.find("1 of 2 files imported: cannot open 'missing.zvd'"), std::string::npos) << run.err;
    EXPECT_TRUE(fs::exists(m_folder / "backups" / "Autobackup_0000.zvd"));
    EXPECT_EQ(Info()["entities"], 7);
}

TEST_F(ZvdEdit, ReadsAndMeasuresInUnits) {
    const ZvdRun run = Edit(R"(add polygon 0,0 40m,0 40,0.03km 0,30 / 10,10 20,10 20,18 10,18
add polyline 0,0 30,40
measure all
distance 0,0 0,10
units ft
add polyline 0,0 "10'6\",0"
list last
undo
count near:0,0,1
count near:50ft,50ft,1in
count outline:-1m,-1m,20m,-1m,20m,50m,-1m,50m
count crossing:20m,20m,21m,21m
undo
distance 0,0 0,10
add point 1,parsec
)");
    EXPECT_EQ(run.code, 1);
    for (const char* text :
         {"3: 2 entities, length 226.000 m, area 1120.000 m\u00B2, extent 0.000, 0.000 to 40.000, 40.000 (",
          "4: 10.000 m towards 90.00 degrees", "7: 3 Line on 0, length 10.500 ft, at 5.250, 0.000, 0.000",
          "9: 2\n", "10: 0\n", "11: 0\n", "12: 1\n", "14: 10.000 m towards"})
        EXPECT_NE(run.out.find(text), std::string::npos) << text << " in\n" << run.out;
    EXPECT_NE(run.err.find("'1,parsec' is no point"), std::string::npos) << run.err;
}

TEST_F(ZvdEdit, ReshapesEntitiesAndKeepsRecordsInOrder) {
    const ZvdRun run = Edit(R"(layer new Plots
layer new Old
layer new Links
add polyline 0.2,0.3 5.4,5.2 9,1 layer=Old
add point 20,20 layer=Plots
attribute 1-2 owner=Anna
text layer:Old owner "Anna Lee"
round 1 1
convert 1 multipoint
undo
redo
connect 3 2
replace 2 point 30,30
hide layer:Plots
count all
show layer:Plots
protect layer:Old
count all
release layer:Old
layer merge Old Plots
undo
redo
layout new Plan
layout add Plan polygon 0,0 10,0 10,8
layout clear all
undo
record linetype new Dots
record linetype rename Dots Dashes
describe linetype Dashes "long and short"
undo 4
redo 4
count all
count layer:Plots
save
)");
    ASSERT_EQ(run.code, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("\n15: 2\n"), std::string::npos) << "what is hidden is not in all\n" << run.out;
    EXPECT_NE(run.out.find("\n18: 1\n"), std::string::npos) << "nor what is protected\n" << run.out;
    EXPECT_NE(run.out.find("\n32: 3\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n33: 3\n"), std::string::npos) << run.out;
    const auto entity = [&](int name) {
        return RunZvd(m_folder.Path(),
                      "info --json --entity " + std::to_string(name) + " " + Quote(m_folder / "plan.zvd"))
            .out;
    };
    EXPECT_NE(entity(3).find("MultiPoint"), std::string::npos) << entity(3);
    EXPECT_NE(entity(3).find("Anna Lee"), std::string::npos) << entity(3);
    EXPECT_NE(entity(5).find("Anna"), std::string::npos) << "the replacement has the attributes\n"
                                                         << entity(5);
}

TEST_F(ZvdEdit, StopsAtWhatCannotBeDoneWithNothingSaved) {
    struct Case {
        const char* line;
        const char* says;
    };
    const Case cases[] = {
        {"paint it black", "there is no 'paint'"},
        {"add circle 0,0", "cannot be added"},
        {"add polygon 0,0 1,1", "three points"},
        {"add polyline 0,0 1;1", "is no point"},
        {"add point 1,1 layer=Roof", "layer new"},
        {"erase 99", "means no entity"},
        {"erase everything", "is none of"},
        {"move all", "write: move"},
        {"scale 1 0", "not 0"},
        {"grip 1 77 0,0", "grip 77"},
        {"property 1 size=3", "is no property"},
        {"layer delete __Paper__", "cannot do without"},
        {"layer new 0", "already"},
        {"undo 9", "after 1 steps there is nothing to undo"},
        {"redo", "nothing to redo"},
        {"section end", "no section is open"},
        {"convert 1 polygon", "can become"},
        {"convert 1 circle", "nothing to become"},
        {"replace all point 1,1 2,2", "replaced by one"},
        {"connect 1 1", "two entities"},
        {"round 1 1", "has vertices"},
        {"round 1 -1", "is no step"},
        {"text 1 owner Anna", "attribute WHAT"},
        {"layer merge 0 0", "cannot go into"},
        {"layout add Plan point 1,1", "layout new"},
        {"layout clear all", "nothing on the sheet"},
        {"record colour new Red", "known are layer"},
        {"record linetype new", "write: record"},
        {"record linetype new ByLayer", "cannot be a name"},
        {"describe block Plots x", "record block new"},
        {"layer edit 0", "nothing to set"},
        {"layer edit 0 color=nix", "changed nothing: Color"},
        {"describe linetype Dots x", "there is no linetype"},
        {"save nowhere/at/all.zvd", "cannot save"},
    };
    for (const Case& c : cases) {
        const ZvdRun run = Edit(std::string("add point 1,1\n") + c.line + "\nsave\n");
        EXPECT_EQ(run.code, 1) << c.line << run.out;
        EXPECT_NE(run.err.find("line 2: "), std::string::npos) << c.line << ": " << run.err;
        EXPECT_NE(run.err.find(c.says), std::string::npos) << c.line << ": " << run.err;
        EXPECT_FALSE(fs::exists(m_folder / "plan.zvd")) << c.line;
    }
    EXPECT_EQ(Edit("\xEF\xBB\xBF"
                   "bogus\r\nadd point 1,1\r\nsave\r\n",
                   "--new --keep-going")
                  .code,
              1);
    EXPECT_EQ(Info()["entities"], 1);
}

TEST_F(ZvdEdit, SaysWhatALineLeftAsItWas) {
    const ZvdRun run = Edit(R"(layer new Plots
add polyline 0,0 9,9 layer=Plots
add point 1,1
layer edit Plots visible=no color=nix
hide 1
hide 1
round 1 1
tolayer 1 Plots
property all width=Points:2 color=Red
attribute 2 owner=Anna
attribute 2 owner=Anna
text 2 owner Anna
history
add polyline 0,0 1,1 layer=Plots
)");
    EXPECT_EQ(run.code, 0) << run.err;
    for (const char* text :
         {"1: New Record 'Plots'\n", "4: Edit Record; not all of it: Color",
          "6: Change Attributes: nothing to", "7: Modify: nothing to change",
          "8: Move to Layer: nothing to change", "; not all of it: ", "11: Change Properties: nothing to",
          "12: Change Text: nothing to", "13: 7 steps to undo",
          "14: Create: 1; 1 objects were created on layers that are not visible."})
        EXPECT_NE(run.out.find(text), std::string::npos) << text << " in\n" << run.out;
}

TEST_F(ZvdEdit, TellsEachLineAsJson) {
    const ZvdRun run = Edit("add point 1,1 2,2\n# remark\ncount all\nbogus\n", "--new --json");
    std::vector<nlohmann::json> lines;
    for (size_t at = 0, end = 0; (end = run.out.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(nlohmann::json::parse(run.out.substr(at, end - at), nullptr, false));
    ASSERT_EQ(lines.size(), 3u) << run.out;
    EXPECT_EQ(lines[0]["names"], (std::vector<int>{1, 2}));
    EXPECT_EQ(lines[1]["line"], 3);
    EXPECT_EQ(lines[1]["text"], "2");
    EXPECT_EQ(lines[2]["done"], false);
}
