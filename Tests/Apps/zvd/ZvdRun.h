#pragma once
#include <filesystem>
#include <string>

/// What one run of the program said.
struct ZvdRun {
    int code = -1;
    std::string out;
    std::string err;
    size_t ErrorLines() const;
};

/// Runs zvd with a command line as a shell takes it; `prefix` goes in front (a time limit). Output is kept beside `folder`.
ZvdRun RunZvd(const std::filesystem::path& folder, const std::string& arguments,
              const std::string& prefix = {});
std::string Quote(const std::filesystem::path& path);
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& bytes);
