#include "ScratchFolder.h"
#include "ZvdRun.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

TEST(ZvdLayers, OrderGroupsAndPresetsAreKeptInTheFile) {
    const ScratchFolder folder;
    const std::string file = Quote(folder / "plan.zvd");
    const auto layers = [&](const std::string& options) {
        return RunZvd(folder.Path(), "layers --json " + file + " " + options);
    };
    WriteFile(folder / "script.txt", "layer new A\nlayer new B\nadd point 1,1 layer=A\nsave\n");
    ASSERT_EQ(RunZvd(folder.Path(), "edit --new " + file + " " + Quote(folder / "script.txt")).code, 0);
    ASSERT_EQ(layers("--bottom B --group A Houses --group B Houses --save-preset day").code, 0);
    ASSERT_EQ(layers("--above 0 A --ungroup B --rename-group Houses Homes").code, 0);
    WriteFile(folder / "script.txt", "layer edit A visible=no\nsave\n");
    ASSERT_EQ(RunZvd(folder.Path(), "edit " + file + " " + Quote(folder / "script.txt")).code, 0);

    const auto told = nlohmann::json::parse(layers("").out, nullptr, false);
    std::string found;
    for (const auto& layer : told["layers"])
        found += layer["name"].get<std::string>() + ":" + layer["group"].get<std::string>() +
                 (layer["visible"].get<bool>() ? " " : "- ");
    EXPECT_EQ(found, "0: A:Homes- B: ");
    EXPECT_EQ(told["presets"], nlohmann::json::array({"day"}));
    const auto day = nlohmann::json::parse(layers("--apply-preset day").out, nullptr, false);
    EXPECT_TRUE(day["layers"][1]["visible"]);

    const std::string before = ReadFile(folder / "plan.zvd");
    for (const char* bad : {"--top nix", "--top __Paper__", "--above A A", "--group A B", "--ungroup B",
                            "--apply-preset night", "--delete-group Houses", "--top A --top nix"})
        EXPECT_EQ(layers(bad).code, 2) << bad;
    EXPECT_TRUE(ReadFile(folder / "plan.zvd") == before);
}
