#pragma once
#include "Zelvan/Ports/IZvHost.h"
#include <set>

/// A host without a person: answers every question with its default, writes question, answer, messages and
/// errors to the log, and keeps what was said for whoever looks afterwards (tests, command-line programs).
class ZV_API ZvSilentHost : public IZvHost {
public:
    struct Asked {
        ZvQuestion question;
        ZvAnswer answer;
    };
    const std::vector<Asked>& Questions() const { return m_questions; }
    /// What was printed, all of it.
    const XStringW& Printed() const { return m_printed; }
    const XStringW& CurrentPrompt() const { return m_prompt; }
    const XStringW& StatusText() const { return m_status; }
    bool IsWaiting() const { return m_waits > 0; }

    ZvAnswer Ask(const ZvQuestion& question) override;
    /// The default choice; kept among the questions as a message.
    int Choose(const ZvChoice& choice) override;
    void ShowErrors(const XStringW& heading, const IOErrorSet& errors) override;
    /// Cancels, always.
    std::vector<std::filesystem::path> AskFile(ZvFileRequest& request) override;
    void Print(const XStringW& text) override;
    void SetPrompt(const XStringW& prompt) override { m_prompt = prompt; }
    void SetStatusText(const XStringW& text) override { m_status = text; }
    /// Nothing is.
    bool IsShown(Pane) const override { return false; }
    void SetFocus(Pane) override {}
    void BeginWait() override { ++m_waits; }
    void EndWait() override { --m_waits; }
    std::unique_ptr<ZvCore::IProgress> StartProgress(const XStringW& title) override;
    void InvalidateView(ZvView&, const Rect2I&) override {}
    void SetSystemCursor(ZvSystemCursor) override {}
    int ShowPopupMenu(const ZvMenu&, CPoint) override { return 0; }
    void ClosePopupMenu() override {}
    bool RegisterHotKey(int id, int) override { return m_hotKeys.insert(id).second; }
    void UnregisterHotKey(int id) override { m_hotKeys.erase(id); }
    void StartTimer(int id, int) override { m_timers.insert(id); }
    void StopTimer(int id) override { m_timers.erase(id); }

private:
    std::vector<Asked> m_questions;
    XStringW m_printed, m_prompt, m_status;
    std::set<int> m_hotKeys, m_timers;
    int m_waits = 0;
};
