#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Unicode.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sys/random.h>
#include <sys/resource.h>
#include <unistd.h>

namespace ZvPlatform {

namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set inside a signal handler");

/// "MemAvailable:  123 kB" of a Linux status file in bytes; 0 when it is not there.
uint64_t KilobyteField(const char* file, std::string_view field) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        if (line.starts_with(field) && line.size() > field.size() && line[field.size()] == ':')
            return std::strtoull(line.c_str() + field.size() + 1, nullptr, 10) * 1024;
    return 0;
}

} // namespace

std::u16string AnsiToWide(std::string_view text) {
    return ZvCore::Unicode::Utf8To16(text);
}

std::string WideToAnsi(std::u16string_view text) {
    return ZvCore::Unicode::Utf16To8(text);
}

bool GetMemoryStatus(MemoryStatus& out) {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return false;
    const uint64_t physical = uint64_t(pages) * uint64_t(pageSize);
    // Not the free pages: what the system keeps only as a cache of files is available, too.
    uint64_t available = KilobyteField("/proc/meminfo", "MemAvailable");
    if (available == 0)
        return false;
    available = std::min(available, physical);
    out.physicalBytes = physical;
    out.loadPercent = unsigned((physical - available) * 100 / physical);
    return true;
}

void RandomBytes(void* bytes, size_t count) {
    auto* at = static_cast<unsigned char*>(bytes);
    constexpr size_t mostPerCall = 256;
    while (count > 0) {
        const size_t n = std::min(count, mostPerCall);
        if (getentropy(at, n) != 0) {
            std::fputs("the system has no entropy source\n", stderr);
            std::abort(); // identifiers that repeat would mix up drawings
        }
        at += n;
        count -= n;
    }
}

uint64_t ProcessId() {
    return uint64_t(getpid());
}

namespace {

/// The line of a process in the system's own list; empty where there is none.
std::string ProcessLine(uint64_t id) {
    std::string line;
    std::getline(std::ifstream("/proc/" + std::to_string(id) + "/stat"), line);
    return line;
}

/// Ended, and not yet fetched by its parent. The state follows the name, which stands in brackets and may hold anything.
bool IsZombie(uint64_t id) {
    const std::string line = ProcessLine(id);
    const size_t at = line.rfind(')');
    return at != std::string::npos && at + 2 < line.size() && (line[at + 2] == 'Z' || line[at + 2] == 'X');
}

} // namespace

bool IsProcessAlive(uint64_t id) {
    const auto pid = pid_t(id);
    return pid > 0 && uint64_t(pid) == id && (kill(pid, 0) == 0 || errno == EPERM) && !IsZombie(id);
}

std::string ProcessBirth(uint64_t id) {
    const std::string line = ProcessLine(id);
    size_t at = line.rfind(')'); // the start is the 22nd field, the name the second
    constexpr int fieldsBehindName = 20;
    for (int i = 0; i < fieldsBehindName && at != std::string::npos; ++i)
        at = line.find(' ', at + 1);
    if (at == std::string::npos)
        return {};
    std::string boot;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), boot);
    return line.substr(at + 1, line.find(' ', at + 1) - at - 1) + "@" + boot;
}

std::string HostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

uint64_t ResidentBytes() {
    return KilobyteField("/proc/self/status", "VmRSS");
}

uint64_t PeakResidentBytes() {
    rusage usage{};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? uint64_t(usage.ru_maxrss) * 1024 : 0;
}

std::vector<std::string> CommandLine(int argc, char** argv) {
    return {argv, argv + argc};
}

void InstallInterruptHandler() {
    struct sigaction action {};
    action.sa_handler = [](int) { g_interrupted = true; };
    action.sa_flags = int(SA_RESETHAND) | SA_RESTART; // a second Ctrl-C ends the program
    for (const int wish : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        if (sigaction(wish, nullptr, &former) == 0 && former.sa_handler != SIG_IGN) // nohup stays in force
            sigaction(wish, &action, nullptr);
    }
    // A file that may not grow any further is an error of the write like a full disk, not the end of the program.
    signal(SIGXFSZ, SIG_IGN);
}

bool WasInterrupted() {
    return g_interrupted;
}

void ClearInterrupt() {
    g_interrupted = false;
}

bool IsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

} // namespace ZvPlatform
