#include "Zelvan/Ports/ZvSilentHost.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Log.h"

namespace {

const char* NameOf(ZvAnswer answer) {
    switch (answer) {
    case ZvAnswer::Ok:
        return "OK";
    case ZvAnswer::Cancel:
        return "Cancel";
    case ZvAnswer::Yes:
        return "Yes";
    default:
        return "No";
    }
}

} // namespace

ZvAnswer ZvSilentHost::Ask(const ZvQuestion& question) {
    if (question.buttons == ZvQuestion::Buttons::Ok)
        ZvLog::Write(ZvLog::Level::Info, "message: " + question.text.ToUtf8());
    else
        ZvLog::Write(ZvLog::Level::Info,
                     "question: " + question.text.ToUtf8() + " - answered " + NameOf(question.defaultAnswer));
    m_questions.push_back({question, question.defaultAnswer});
    return question.defaultAnswer;
}

int ZvSilentHost::Choose(const ZvChoice& choice) {
    const bool known = choice.defaultChoice >= 0 && size_t(choice.defaultChoice) < choice.choices.size();
    ZvLog::Write(ZvLog::Level::Info, "choice: " + choice.text.ToUtf8() + " - answered " +
                                         (known ? choice.choices[size_t(choice.defaultChoice)].ToUtf8()
                                                : std::string("nothing")));
    m_questions.push_back({{choice.text, ZvQuestion::Buttons::Ok, ZvAnswer::Ok, choice.title}, ZvAnswer::Ok});
    return choice.defaultChoice;
}

void ZvSilentHost::ShowErrors(const XStringW& heading, const IOErrorSet& errors) {
    ZvLog::Write(ZvLog::Level::Error, heading.ToUtf8() + "\n" + errors.ToString());
}

std::vector<std::filesystem::path> ZvSilentHost::AskFile(ZvFileRequest& request) {
    ZvLog::Write(ZvLog::Level::Info, "file dialog: " + request.title.ToUtf8() + " - cancelled");
    return {};
}

void ZvSilentHost::Print(const XStringW& text) {
    ZvLog::Write(ZvLog::Level::Info, text.Trimmed().ToUtf8());
    m_printed += text;
}

std::unique_ptr<ZvCore::IProgress> ZvSilentHost::StartProgress(const XStringW& title) {
    ZvLog::Write(ZvLog::Level::Info, title.ToUtf8());
    return std::make_unique<ZvCore::NoProgress>();
}
