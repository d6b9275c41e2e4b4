#include "Tests/Paths.h"
#include "Tests/Support/NativeFiles.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/MD5.h"
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

using namespace NativeFiles;

// Golden files hold what this version of the format writes, byte for byte, as lines of hexadecimal digits; seeds are where
// the fuzzer of the reader begins. With ZELVAN_REGENERATE set, the tests write both anew: a change of the golden file is a change of
// the format and belongs into its description.

namespace {

namespace fs = std::filesystem;

bool Regenerating() {
    return std::getenv("ZELVAN_REGENERATE") != nullptr;
}

fs::path GoldenPath() {
    return fs::path(ZELVAN_TESTS_DIR) / "Zelvan" / "Golden" / "sample-1075.hex";
}

fs::path SeedFolder() {
    return fs::path(ZELVAN_TESTS_DIR) / ".." / "Fuzz" / "Corpus" / "NativeReader";
}

std::string ToHex(const Bytes& bytes) {
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
        text += digits;
        if (i % 32 == 31 || i + 1 == bytes.size())
            text += '\n';
    }
    return text;
}

Bytes FromHex(const std::string& text) {
    Bytes bytes;
    std::string pair;
    for (char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c)))
            pair += c;
        if (pair.size() == 2) {
            bytes.push_back(uint8_t(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    return bytes;
}

std::string ReadAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteAll(const fs::path& path, const void* bytes, size_t count) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(static_cast<const char*>(bytes), std::streamsize(count));
}

/// Compressed bytes depend on the library that compresses, so the golden file is stored plain.
Bytes SampleFile() {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    return Save(*Sample(), options);
}

std::vector<std::pair<std::string, Bytes>> Seeds() {
    std::vector<std::pair<std::string, Bytes>> seeds;
    const auto add = [&](const std::string& name, uint8_t bits, ZvDrawing& drawing, int level) {
        ZvNativeOptions options;
        options.compressionLevel = level;
        Bytes seed = Save(drawing, options);
        seed.insert(seed.begin(), bits);
        seeds.emplace_back(name, std::move(seed));
    };
    const auto sample = Sample();
    add("sample-stored", 4, *sample, 0);
    add("sample-checked", 3, *sample, 0);
    add("sample-compressed", 4, *sample, 3);
    add("sample-solid", 4, *sample, 6);
    ZvDrawing empty;
    add("empty", 7, empty, 0);
    ZvDrawing points;
    auto set = std::make_unique<ZvMultiPoint>();
    set->SetLocations(std::vector<Vec3d>{{1, 2, 3}, {4, 5, 6}});
    points.Insert(std::move(set));
    AddPolylines(points, 3, 20);
    add("points", 4, points, 0);
    return seeds;
}

} // namespace

TEST(NativeGolden, ThisVersionWritesTheBytesOfItsGoldenFileAndReadsThem) {
    const Bytes bytes = SampleFile();
    if (Regenerating()) {
        const std::string text = ToHex(bytes);
        WriteAll(GoldenPath(), text.data(), text.size());
    }
    const Bytes golden = FromHex(ReadAll(GoldenPath()));
    ASSERT_FALSE(golden.empty()) << GoldenPath();
    EXPECT_EQ(bytes.size(), golden.size());
    for (size_t i = 0; i < std::min(bytes.size(), golden.size()); ++i)
        ASSERT_EQ(bytes[i], golden[i]) << "first difference at byte " << i;
    const Loaded loaded = Load(golden);
    EXPECT_TRUE(loaded.Ok());
    EXPECT_EQ(loaded.errors.ToString(), "");
    EXPECT_EQ(Census(*loaded.drawing), Census(*Sample()));
}

TEST(NativeGolden, SeedsOfTheFuzzerAreThere) {
    for (const auto& [name, bytes] : Seeds()) {
        const fs::path path = SeedFolder() / ("seed-" + name);
        if (Regenerating())
            WriteAll(path, bytes.data(), bytes.size());
        EXPECT_GT(fs::file_size(path), 1000u) << path;
    }
}
