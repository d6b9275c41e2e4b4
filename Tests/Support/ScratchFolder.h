#pragma once
#include "ZvCore/Platform/Platform.h"
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

/// A new folder for one test, gone with it. Its name is not ASCII, since users' folders are not.
class ScratchFolder {
public:
    ScratchFolder() {
        uint64_t random = 0;
        ZvPlatform::RandomBytes(&random, sizeof random);
        m_path = std::filesystem::temp_directory_path() /
                 ZvPlatform::PathFromUtf8("zelvan-\xC3\xA9\xCE\xB1-" + std::to_string(random));
        std::filesystem::create_directories(m_path);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(std::string_view name) const {
        return m_path / ZvPlatform::PathFromUtf8(name);
    }
    void Put(std::string_view name, std::string_view bytes) const {
        std::ofstream(*this / name, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    }
    std::string Get(std::string_view name) const {
        std::ifstream in(*this / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    size_t CountFiles() const {
        return size_t(std::distance(std::filesystem::directory_iterator(m_path), {}));
    }

private:
    std::filesystem::path m_path;
};
