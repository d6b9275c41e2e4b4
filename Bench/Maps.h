#pragma once
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class ZvDrawing;

/// The maps that everything is measured on: made-up ones of a million short lines and of 190,000 long ones (the size of a country's
/// contour lines), and the largest real one at hand. Each is held as a drawing and as files, made once a run in a temporary folder that is deleted at the end.
struct BenchMap {
    std::string name; ///< "synth", "long", "real"
    std::unique_ptr<ZvDrawing> drawing;
    uint64_t entities = 0, vertices = 0;
    std::filesystem::path native[10]; ///< by compression level, empty when not written
    std::filesystem::path flatGeobuf;
};

class BenchMaps {
public:
    static BenchMaps& Get();
    ~BenchMaps();
    std::vector<BenchMap*> All();
    BenchMap& Synth() { return m_synth; }
    /// Null when there is no real map: set ZELVAN_TEST_DATA, or ZELVAN_BENCH_MAP to a file of lines.
    BenchMap* Real() { return m_real.drawing ? &m_real : nullptr; }
    const std::filesystem::path& Folder() const { return m_folder; }

private:
    BenchMaps();
    static void MakeUp(BenchMap& map, const char* name, uint64_t lines, uint32_t vertices);
    std::filesystem::path m_folder;
    BenchMap m_synth, m_long, m_real;
};
