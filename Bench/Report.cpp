#include "Report.h"
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

// Catches the median of the one case that was run.
class Catcher : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.aggregate_name == "median" || (run.run_type == Run::RT_Iteration && run.repetitions <= 1))
                median = run.GetAdjustedRealTime();
    }
    double median = 0;
};

} // namespace

void Report::Time(const std::string& name, std::function<void()> work, int repetitions,
                  std::function<void()> setUp) {
    if (const char* only = std::getenv("ZELVAN_BENCH_ONLY"); only && name.find(only) == std::string::npos)
        return;
    benchmark::ClearRegisteredBenchmarks();
    benchmark::RegisterBenchmark(
        name.c_str(),
        [&](benchmark::State& state) {
            for ([[maybe_unused]] auto step : state) {
                if (setUp)
                    setUp();
                const auto start = std::chrono::steady_clock::now();
                work();
                state.SetIterationTime(
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
            }
        })
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->ReportAggregatesOnly(true)
        ->UseManualTime()
        ->Unit(benchmark::kSecond);
    Catcher catcher;
    benchmark::RunSpecifiedBenchmarks(&catcher);
    m_values[name] = catcher.median;
    std::fprintf(stderr, "  %-58s %9.1f ms\n", name.c_str(), catcher.median * 1000);
}

double Report::Get(const std::string& name) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? 0 : found->second;
}

void Report::Heading(const std::string& text) const {
    std::printf("\n%s\n%-52s %12s %12s %8s  %s\n", text.c_str(), "", "Zelvan", "peer", "ratio", "aim");
}

void Report::Ratio(const std::string& what, const std::string& ours, const std::string& peer, double aim,
                   const char* unit, double scale) const {
    if (!Has(ours) || !Has(peer) || Get(ours) <= 0)
        return;
    const double ratio = Get(peer) / Get(ours);
    char aimText[32] = "";
    if (aim > 0)
        std::snprintf(aimText, sizeof aimText, "%.1f %s", aim, ratio >= aim ? "reached" : "MISSED");
    std::printf("%-52s %9.1f %s %9.1f %s %7.2fx  %s\n", what.c_str(), Get(ours) * scale, unit,
                Get(peer) * scale, unit, ratio, aimText);
}

void Report::Line(const char* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::printf("\n");
}

double Report::Exponent(const std::vector<std::pair<double, double>>& costs) {
    double sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (const auto& [n, cost] : costs) {
        const double x = std::log(n), y = std::log(cost);
        sx += x, sy += y, sxx += x * x, sxy += x * y;
    }
    const double count = double(costs.size());
    return (count * sxy - sx * sy) / (count * sxx - sx * sx);
}
