#include "Report.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

struct Part {
    const char* name;
    void (*run)(Report&);
};
constexpr Part kParts[] = {{"io", BenchIo},       {"memory", BenchMemory}, {"tree", BenchTree},
                           {"names", BenchNames}, {"frame", BenchFrame},   {"scaling", BenchScaling},
                           {"undo", BenchUndo},   {"save", BenchSave}};

bool IsPart(const char* name) {
    return std::any_of(std::begin(kParts), std::end(kParts),
                       [name](const Part& part) { return std::strcmp(part.name, name) == 0; });
}

} // namespace

// Without arguments everything; else the parts named ("memory" needs "io" before it, for its files).
int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (!IsPart(argv[i])) {
            std::fprintf(stderr, "no part is named %s; there are:", argv[i]);
            for (const Part& part : kParts)
                std::fprintf(stderr, " %s", part.name);
            std::fprintf(stderr, "\n");
            return 2;
        }
    Report report;
    for (const Part& part : kParts) {
        bool wanted = argc == 1;
        for (int i = 1; i < argc; ++i)
            wanted = wanted || std::strcmp(argv[i], part.name) == 0;
        if (wanted)
            part.run(report);
        std::fflush(stdout);
    }
    return 0;
}
