#ifndef _WIN32
#include "ScratchFolder.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvdRun.h"
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

namespace {

/// Kills to make; `./dev soak` asks for hundreds.
int Kills() {
    const char* given = std::getenv("ZELVAN_SOAK_KILLS");
    return given && std::atoi(given) > 0 ? std::atoi(given) : 6;
}

unsigned Random(unsigned below) {
    unsigned number = 0;
    ZvPlatform::RandomBytes(&number, sizeof number);
    return number % below;
}

} // namespace

TEST(ZvdKilled, SavesLeaveTheOldOrTheNewDrawingAndRecoverTidiesUp) {
    const ScratchFolder folder;
    const auto run = [&](const std::string& arguments, const std::string& prefix = {}) {
        return RunZvd(folder.Path(), arguments, prefix);
    };
    const std::string old = Quote(folder / "old.zvd"), fresh = Quote(folder / "new.zvd"),
                      target = Quote(folder / "target.zvd");
    ASSERT_EQ(run("bench-data " + old + " --lines 3000").code, 0);
    ASSERT_EQ(run("bench-data " + fresh + " --lines 30000").code, 0);
    ASSERT_EQ(run("convert " + old + " " + target).code, 0);
    int killed = 0, changed = 0;
    for (int i = 0; i < Kills(); ++i) {
        char prefix[64];
        std::snprintf(prefix, sizeof prefix, "timeout -s KILL 0.%03u", 5 + Random(200));
        killed += run("convert " + (i % 2 ? old : fresh) + " " + target, prefix).code != 0;
        ASSERT_TRUE(std::filesystem::exists(folder / "target.zvd")) << "after kill " << i;
        ZvdRun recovered = run("recover --json " + target);
        constexpr int editing = 5; // for as long as the system takes to end what was killed
        for (int wait = 0; wait < 100 && recovered.code == editing; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            recovered = run("recover --json " + target);
        }
        ASSERT_EQ(recovered.code, 0) << recovered.out << recovered.err;
        const ZvdRun info = run("info --json " + target);
        ASSERT_EQ(info.code, 0) << info.err;
        const auto entities = nlohmann::json::parse(info.out, nullptr, false)["entities"].get<int>();
        ASSERT_TRUE(entities == 3000 || entities == 30000) << entities;
        changed += entities == 30000;
    }
    std::printf("  %d of %d saves killed, %d times the new drawing was there\n", killed, Kills(), changed);
}

TEST(ZvdTogether, ProgramsThatEditOneFileLoseNoneOfTheirSaves) {
    const ScratchFolder folder;
    const std::string plan = Quote(folder / "plan.zvd");
    WriteFile(folder / "script.txt", "add point 1,2\nsave\n");
    ASSERT_EQ(RunZvd(folder.Path(), "edit --new " + plan + " " + Quote(folder / "script.txt")).code, 0);
    std::atomic<int> points = 1;
    std::vector<std::thread> programs;
    for (int i = 0; i < 6; ++i)
        programs.emplace_back([&, i] {
            const std::filesystem::path own = folder / ("run" + std::to_string(i));
            std::filesystem::create_directory(own);
            for (int j = 0; j < 4; ++j)
                points += RunZvd(own, "edit " + plan + " " + Quote(folder / "script.txt")).code == 0;
        });
    for (std::thread& program : programs)
        program.join();
    const ZvdRun info = RunZvd(folder.Path(), "info --json " + plan);
    EXPECT_EQ(nlohmann::json::parse(info.out, nullptr, false)["entities"], points.load())
        << "a save that was reported as done was written over";
    EXPECT_GT(points, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "plan.zvd.lock"));
}
#endif
