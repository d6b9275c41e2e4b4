#include "ZvdRun.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace fs = std::filesystem;

size_t ZvdRun::ErrorLines() const {
    return size_t(std::count(err.begin(), err.end(), '\n'));
}

std::string Quote(const fs::path& path) {
    return "\"" + ZvPlatform::PathToUtf8(path) + "\"";
}

std::string ReadFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

void WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

ZvdRun RunZvd(const fs::path& folder, const std::string& arguments, const std::string& prefix) {
    const fs::path out = folder / "run.out", err = folder / "run.err";
    std::string line =
        prefix + " " + Quote(ZVD_PROGRAM) + " " + arguments + " > " + Quote(out) + " 2> " + Quote(err);
#ifdef _WIN32
    line = "\"" + line + "\""; // cmd takes the outer quotes away
#endif
    const int status = std::system(line.c_str());
    ZvdRun run;
#ifdef _WIN32
    run.code = status;
#else
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
#endif
    run.out = ReadFile(out);
    run.err = ReadFile(err);
    return run;
}
