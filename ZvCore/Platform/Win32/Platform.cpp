#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Platform/Win32/Win32.h"
#include "ZvCore/Unicode.h"
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <psapi.h>
#include <shellapi.h>

// RtlGenRandom: exported by advapi32 under this name only.
extern "C" BOOLEAN NTAPI SystemFunction036(PVOID buffer, ULONG length);

namespace ZvPlatform {

namespace {

std::atomic<bool> g_interrupted{false};

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT || g_interrupted.exchange(true))
        return FALSE; // a second Ctrl-C ends the program
    return TRUE;
}

PROCESS_MEMORY_COUNTERS MemoryCounters() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        counters = {};
    return counters;
}

} // namespace

std::u16string AnsiToWide(std::string_view text) {
    const int count = int(text.size());
    const int length = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), count, nullptr, 0);
    std::wstring wide(size_t(length), L'\0');
    MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), count, wide.data(), length);
    return std::u16string(AsUtf16(wide));
}

std::string WideToAnsi(std::u16string_view text) {
    const int count = int(text.size());
    const wchar_t* wide = AsWide(text.data());
    DWORD flags = WC_NO_BEST_FIT_CHARS;
    int length = WideCharToMultiByte(CP_THREAD_ACP, flags, wide, count, nullptr, 0, nullptr, nullptr);
    if (length == 0) { // UTF-8 as code page takes no flags
        flags = 0;
        length = WideCharToMultiByte(CP_THREAD_ACP, flags, wide, count, nullptr, 0, nullptr, nullptr);
    }
    std::string narrow(size_t(length), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, flags, wide, count, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

bool GetMemoryStatus(MemoryStatus& out) {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (!GlobalMemoryStatusEx(&status))
        return false;
    out.physicalBytes = status.ullTotalPhys;
    out.loadPercent = status.dwMemoryLoad;
    return true;
}

void RandomBytes(void* bytes, size_t count) {
    if (!SystemFunction036(bytes, ULONG(count))) {
        std::fputs("the system has no entropy source\n", stderr);
        std::abort(); // identifiers that repeat would mix up drawings
    }
}

uint64_t ProcessId() {
    return GetCurrentProcessId();
}

bool IsProcessAlive(uint64_t id) {
    if (id == 0 || id > MAXDWORD)
        return false;
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, DWORD(id));
    if (!process)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool isAlive = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return isAlive;
}

std::string ProcessBirth(uint64_t id) {
    const HANDLE process =
        id && id <= MAXDWORD ? OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, DWORD(id)) : nullptr;
    if (!process)
        return {};
    FILETIME created{}, ended{}, kernel{}, user{};
    const bool told = GetProcessTimes(process, &created, &ended, &kernel, &user) != 0;
    CloseHandle(process);
    return told ? std::to_string(uint64_t(created.dwHighDateTime) << 32 | created.dwLowDateTime)
                : std::string();
}

std::string HostName() {
    wchar_t name[256];
    DWORD length = DWORD(std::size(name));
    return GetComputerNameExW(ComputerNameDnsHostname, name, &length)
               ? ZvCore::Unicode::Utf16To8(AsUtf16({name, length}))
               : std::string();
}

uint64_t ResidentBytes() {
    return MemoryCounters().WorkingSetSize;
}

uint64_t PeakResidentBytes() {
    return MemoryCounters().PeakWorkingSetSize;
}

std::vector<std::string> CommandLine(int argc, char** argv) {
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide)
        return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(ZvCore::Unicode::Utf16To8(AsUtf16(wide[i])));
    LocalFree(wide);
    return arguments;
}

void InstallInterruptHandler() {
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool WasInterrupted() {
    return g_interrupted;
}

void ClearInterrupt() {
    g_interrupted = false;
}

bool IsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace ZvPlatform
