#include "Apps/zvd/ConsoleHost.h"

namespace {

void Append(std::string& line, const XStringW& text) {
    line += (line.empty() ? "" : " ") + text.Trimmed().ToUtf8();
}

} // namespace

ZvAnswer ConsoleHost::Ask(const ZvQuestion& question) {
    static constexpr const char* kNames[] = {"OK", "Cancel", "Yes", "No"};
    const ZvAnswer answer = ZvSilentHost::Ask(question);
    m_console.Warn(question.text.ToUtf8() + " [" + kNames[int(answer)] + "]");
    return answer;
}

std::unique_ptr<ZvCore::IProgress> ConsoleHost::StartProgress(const XStringW&) {
    return std::make_unique<ConsoleProgress>(m_console);
}

ZvAnswer LineHost::Ask(const ZvQuestion& question) {
    if (question.buttons != ZvQuestion::Buttons::Ok)
        return ConsoleHost::Ask(question);
    Append(m_messages, question.text);
    return ZvSilentHost::Ask(question);
}

int LineHost::Choose(const ZvChoice& choice) {
    Append(m_messages, choice.text);
    return ZvSilentHost::Choose(choice);
}

void LineHost::Print(const XStringW& text) {
    Append(m_printed, text);
    ZvSilentHost::Print(text);
}
