// Feeds every file of a corpus folder to a fuzz target once, in the order of their names, so that each input that
// once broke a reader stays an ordinary test wherever the tests run.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc != 2 || !fs::is_directory(argv[1])) {
        std::fprintf(stderr, "usage: %s FOLDER  (the corpus: one input a file)\n", argv[0]);
        return 2;
    }
    std::vector<fs::path> inputs;
    for (const auto& entry : fs::directory_iterator(argv[1])) {
        if (entry.is_regular_file()) {
            inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        // The name comes first: it tells which input a crash belongs to.
        std::printf("%s (%zu bytes)\n", input.filename().string().c_str(), bytes.size());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
