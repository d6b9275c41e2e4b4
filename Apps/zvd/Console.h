#pragma once
#include "Apps/zvd/ExitCode.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Progress.h"
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

/// What the program says: results on standard output (text, or one JSON document with --json), everything else on standard error.
class Console {
public:
    bool json = false;
    bool quiet = false;

    void Line(std::string_view text) const; ///< standard output, unless --json or --quiet
    void Json(const nlohmann::ordered_json& document) const;
    /// "zvd: <what>": what, where, what to do, in one line.
    ExitCode Fail(ExitCode code, std::string_view what) const;
    void Warn(std::string_view what) const;
    /// Warnings always; errors as warnings when the work went on all the same.
    void ShowErrors(const IOErrorSet& errors) const;
    static std::string Human(uint64_t bytes);
    /// 1234567 -> "1,234,567".
    static std::string Grouped(uint64_t number);
};

/// A bar on a terminal, nothing elsewhere. Asks the work to stop after Ctrl-C.
class ConsoleProgress : public ZvCore::IProgress {
public:
    explicit ConsoleProgress(const Console& console);
    ~ConsoleProgress() override;
    bool Step(std::string_view what, uint64_t done, uint64_t total) override;

private:
    bool m_show;
    bool m_drawn = false;
    double m_started;
    double m_last = 0;
};
