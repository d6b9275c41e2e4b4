#include "Apps/zvd/Console.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

void Console::Line(std::string_view text) const {
    if (!json && !quiet)
        std::printf("%.*s\n", int(text.size()), text.data());
}

void Console::Json(const nlohmann::ordered_json& document) const {
    if (json)
        std::printf("%s\n", document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

ExitCode Console::Fail(ExitCode code, std::string_view what) const {
    std::fflush(stdout);
    if (json) {
        const nlohmann::ordered_json document{{"error", {{"code", int(code)}, {"text", what}}}};
        std::printf("%s\n", document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    }
    std::fprintf(stderr, "zvd: %.*s\n", int(what.size()), what.data());
    return code;
}

void Console::Warn(std::string_view what) const {
    std::fflush(stdout);
    std::fprintf(stderr, "zvd: warning: %.*s\n", int(what.size()), what.data());
}

void Console::ShowErrors(const IOErrorSet& errors) const {
    for (const IOErrorSet::Item& item : errors.Items())
        Warn(item.count > 1 ? item.text + " (" + std::to_string(item.count) + " times)" : item.text);
}

std::string Console::Human(uint64_t bytes) {
    static constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    double value = double(bytes);
    int unit = 0;
    while (value >= 1024 && unit < 4)
        value /= 1024, ++unit;
    char text[32];
    std::snprintf(text, sizeof text, unit ? "%.1f %s" : "%.0f %s", value, kUnits[unit]);
    return text;
}

std::string Console::Grouped(uint64_t number) {
    std::string digits = std::to_string(number);
    for (int at = int(digits.size()) - 3; at > 0; at -= 3)
        digits.insert(size_t(at), ",");
    return digits;
}

ConsoleProgress::ConsoleProgress(const Console& console)
    : m_show(!console.quiet && ZvPlatform::IsTerminal()), m_started(IZvClock::System().MonotonicSeconds()) {}

ConsoleProgress::~ConsoleProgress() {
    if (m_drawn)
        std::fprintf(stderr, "\r\033[K");
}

bool ConsoleProgress::Step(std::string_view what, uint64_t done, uint64_t total) {
    if (ZvPlatform::WasInterrupted())
        return false;
    if (!m_show)
        return true;
    const double now = IZvClock::System().MonotonicSeconds();
    if (now - m_started < 0.5 || now - m_last < 0.1)
        return true;
    m_last = now;
    m_drawn = true;
    constexpr int kWidth = 30;
    if (total) {
        const double share = std::min(1.0, double(done) / double(total));
        const std::string bar(size_t(share * kWidth), '#');
        std::fprintf(stderr, "\r\033[K%-*s| %3.0f %% %.*s", kWidth, bar.c_str(), share * 100,
                     int(what.size()), what.data());
    } else {
        std::fprintf(stderr, "\r\033[K%s %.*s", Console::Grouped(done).c_str(), int(what.size()),
                     what.data());
    }
    std::fflush(stderr);
    return true;
}
