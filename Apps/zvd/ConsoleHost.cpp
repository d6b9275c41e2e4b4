#include "Apps/zvd/ConsoleHost.h"

ZvAnswer ConsoleHost::Ask(const ZvQuestion& question) {
    static constexpr const char* kNames[] = {"OK", "Cancel", "Yes", "No"};
    const ZvAnswer answer = ZvSilentHost::Ask(question);
    m_console.Warn(question.text.ToUtf8() + " [" + kNames[int(answer)] + "]");
    return answer;
}

std::unique_ptr<ZvCore::IProgress> ConsoleHost::StartProgress(const XStringW&) {
    return std::make_unique<ConsoleProgress>(m_console);
}
