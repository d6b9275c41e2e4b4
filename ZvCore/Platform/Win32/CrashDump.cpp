#include "ZvCore/Platform/CrashDump.h"
#include <string>

#include <windows.h>
// needs the types of windows.h
#include <dbghelp.h>

namespace {

using MiniDumpWriter = BOOL(WINAPI*)(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE, PMINIDUMP_EXCEPTION_INFORMATION,
                                     PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION);

} // namespace

bool ZvPlatform::WriteCrashDump(std::string_view path) {
    const HMODULE library = LoadLibraryW(L"dbghelp.dll");
    if (!library)
        return false;
    const auto write = reinterpret_cast<MiniDumpWriter>(
        reinterpret_cast<void*>(GetProcAddress(library, "MiniDumpWriteDump")));
    const HANDLE file = CreateFileA(std::string(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    bool written = false;
    if (write && file != INVALID_HANDLE_VALUE)
        written = write(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, nullptr, nullptr,
                        nullptr);
    if (file != INVALID_HANDLE_VALUE)
        CloseHandle(file);
    FreeLibrary(library);
    return written;
}
