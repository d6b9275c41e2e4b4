// Undo and redo over a long run: UndoSoak [STEPS [SEED]]. Answers 0 when the drawing was right after every step.
#include "Tests/Support/UndoMarathon.h"
#include "ZvCore/Log.h"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

int main(int argc, char** argv) {
    const uint64_t steps = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1'000'000;
    const uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : std::random_device{}();
    if (steps == 0) {
        std::fprintf(stderr, "usage: %s [STEPS [SEED]]\n", argv[0]);
        return 2;
    }
    std::printf("undo: %llu steps, seed %llu\n", (unsigned long long)steps, (unsigned long long)seed);
    const auto start = std::chrono::steady_clock::now();
    UndoMarathon marathon(seed);
    const bool ok = marathon.Run(steps);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const auto& [kind, count] : marathon.Counts())
        std::printf("  %-20s %10llu\n", kind.c_str(), (unsigned long long)count);
    if (!ok) {
        std::printf("FAILED: %s\n", marathon.Failure().c_str());
        return 1;
    }
    std::printf("%.0f steps/s; every state was the one that had been saved\n", double(steps) / seconds);
    return 0;
}
