#pragma once
#include "Apps/zvd/Console.h"
#include "Zelvan/Ports/ZvSilentHost.h"

/// The engine's host at a terminal: shows progress, says which question got which default answer. Nothing waits for a person.
class ConsoleHost : public ZvSilentHost {
public:
    explicit ConsoleHost(const Console& console) : m_console(console) {}
    ZvAnswer Ask(const ZvQuestion& question) override;
    /// Errors are shown by whoever runs the command.
    void ShowErrors(const XStringW&, const IOErrorSet&) override {}
    std::unique_ptr<ZvCore::IProgress> StartProgress(const XStringW& title) override;

private:
    const Console& m_console;
};
