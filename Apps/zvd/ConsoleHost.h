#pragma once
#include "Apps/zvd/Console.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include <string>
#include <utility>

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

/// For programs that answer line by line: keeps messages and what is printed for the line's answer.
class LineHost : public ConsoleHost {
public:
    using ConsoleHost::ConsoleHost;
    ZvAnswer Ask(const ZvQuestion& question) override;
    int Choose(const ZvChoice& choice) override;
    void Print(const XStringW& text) override;
    /// Messages since the last call, in one line.
    std::string TakeMessages() { return std::exchange(m_messages, {}); }
    /// What was printed since the last call, in one line.
    std::string TakePrinted() { return std::exchange(m_printed, {}); }

private:
    std::string m_messages, m_printed;
};
