#include "Report.h"
#include <cstdio>
#include <cstring>

namespace {

struct Part {
    const char* name;
    void (*run)(Report&);
};
constexpr Part kParts[] = {{"io", BenchIo},       {"memory", BenchMemory}, {"tree", BenchTree},
                           {"names", BenchNames}, {"frame", BenchFrame},   {"scaling", BenchScaling},
                           {"undo", BenchUndo},   {"save", BenchSave}};

} // namespace

// Without arguments everything; else the parts named ("memory" needs "io" before it, for its files).
int main(int argc, char** argv) {
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
