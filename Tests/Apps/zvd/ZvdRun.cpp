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
    return "\"" + ZvPlatform::PathToUtf8(fs::path(path).make_preferred()) + "\"";
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
    const std::string line = (prefix.empty() ? "" : prefix + " ") + Quote(ZVD_PROGRAM) + " " + arguments +
                             " > " + Quote(out) + " 2> " + Quote(err);
#ifdef _WIN32
    // The outer quotes are those that cmd takes away; names of any script need the wide call.
    const int status = _wsystem(ZvPlatform::PathFromUtf8("\"" + line + "\"").c_str());
#else
    const int status = std::system(line.c_str());
#endif
    ZvdRun run;
#ifdef _WIN32
    run.code = status;
#else
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
#endif
    run.out = ReadFile(out);
    run.err = ReadFile(err);
    for (std::string* text : {&run.out, &run.err})
        std::erase(*text, '\r'); // lines end by the custom of the system
    return run;
}
