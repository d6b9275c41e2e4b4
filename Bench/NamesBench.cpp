#include "Maps.h"
#include "Report.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include <benchmark/benchmark.h>
#include <random>
#include <vector>

void BenchNames(Report& report) {
    const ZvEntityNameTable& names = BenchMaps::Get().Synth().drawing->NameTable();
    std::mt19937 random(1);
    std::vector<uint32_t> asked(4'000'000);
    for (uint32_t& name : asked)
        name = 1 + random() % uint32_t(names.TopName().value);
    report.Time("names: 4 million look-ups in random order", [&] {
        size_t found = 0;
        for (uint32_t name : asked)
            found += names.Get(name) != nullptr;
        benchmark::DoNotOptimize(found);
    });
    const double rate = 4 / report.Get("names: 4 million look-ups in random order");
    report.Line("\nName table: %.0f million look-ups a second in random order (aim 20 %s)", rate,
                rate >= 20 ? "reached" : "MISSED");
}
