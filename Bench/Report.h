#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

/// One run of all benchmarks: times by name, then a table of ratios. Cases are measured by Google Benchmark, a few repetitions each,
/// medians are kept.
class Report {
public:
    /// Runs `work` once for a repetition; `setUp` before each is not measured. Seconds; smaller is better.
    void Time(const std::string& name, std::function<void()> work, int repetitions = 3,
              std::function<void()> setUp = {});
    /// A figure that is not a time (bytes, counts).
    void Set(const std::string& name, double value) { m_values[name] = value; }
    bool Has(const std::string& name) const { return m_values.contains(name); }
    double Get(const std::string& name) const;

    void Heading(const std::string& text) const;
    /// "what  ours  peer  ratio  aim": how many times `ours` is better than `peer` (times: peer / ours). `aim` 0: none.
    void Ratio(const std::string& what, const std::string& ours, const std::string& peer, double aim,
               const char* unit, double scale) const;
    void Line(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    /// Exponent b of cost = a n^b through the points, by least squares on logarithms.
    static double Exponent(const std::vector<std::pair<double, double>>& costs);

private:
    std::map<std::string, double> m_values;
};

/// Each fills its part of the table.
void BenchIo(Report& report);
void BenchMemory(Report& report);
void BenchTree(Report& report);
void BenchNames(Report& report);
void BenchFrame(Report& report);
void BenchScaling(Report& report);
void BenchUndo(Report& report);
void BenchSave(Report& report);
