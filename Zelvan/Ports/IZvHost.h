#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "ZvCore/Api.h"
#include "ZvCore/Progress.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <filesystem>
#include <memory>
#include <vector>

class IOErrorSet;
class ZvView;

enum class ZvAnswer { Ok, Cancel, Yes, No };

/// One question, or one message to acknowledge, with its exact text and the answer of a host that has nobody
/// to ask.
struct ZvQuestion {
    enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
    XStringW text;
    Buttons buttons = Buttons::Ok;
    ZvAnswer defaultAnswer = ZvAnswer::Ok;
    XStringW title; ///< empty: the program's name

    static ZvQuestion YesNo(XStringW text, ZvAnswer defaultAnswer, XStringW title = {}) {
        return {std::move(text), Buttons::YesNo, defaultAnswer, std::move(title)};
    }
};

/// Several courses of action to choose from.
struct ZvChoice {
    XStringW text;
    std::vector<XStringW> choices;
    int defaultChoice = 0; ///< of a host that has nobody to ask
    XStringW title;        ///< empty: the program's name
};

/// A file to choose.
struct ZvFileRequest {
    struct Filter {
        XStringW name;     ///< "Zelvan Drawing"
        XStringW patterns; ///< "*.zvf;*.zvd"
    };
    XStringW title;
    bool save = false;
    bool many = false; ///< opening only
    std::vector<Filter> filters;
    std::u16string defaultExtension; ///< with its point; added to a name without one when saving
    std::filesystem::path start;     ///< folder or file offered first; empty: the host's choice
    /// Options that the user can switch in the dialog; the state on return is the user's.
    struct Option {
        XStringW name;
        bool on = false;
    };
    std::vector<Option> options;
};

enum class ZvSystemCursor { Arrow, Cross, Hand, Move, SizeAll, Wait, Text, None };

/// The frame and view windows around the engine: everything that a person is shown or asked. One call a
/// question. Window thread only.
class ZV_API IZvHost {
public:
    enum class Pane { View, CommandWindow, StatusBar, QuickBar };

    virtual ~IZvHost() = default;

    // --- questions -----------------------------------------------------------------------------------
    virtual ZvAnswer Ask(const ZvQuestion& question) = 0;
    void Tell(const XStringW& text, const XStringW& title = {}) {
        (void)Ask({text, ZvQuestion::Buttons::Ok, ZvAnswer::Ok, title});
    }
    bool AskYesNo(const XStringW& text, bool defaultYes, const XStringW& title = {}) {
        return Ask(ZvQuestion::YesNo(text, defaultYes ? ZvAnswer::Yes : ZvAnswer::No, title)) ==
               ZvAnswer::Yes;
    }
    /// Index of the choice. Hosts without such a dialog tell the text and take the default.
    virtual int Choose(const ZvChoice& choice) {
        Tell(choice.text, choice.title);
        return choice.defaultChoice;
    }
    /// Dialogs for settings; false when the host has none.
    virtual bool OpenDrawingOptions() { return false; }
    virtual bool OpenConfiguration(const XStringW& page) {
        (void)page;
        return false;
    }
    /// The errors of one load or save under a heading; never called with an empty set.
    virtual void ShowErrors(const XStringW& heading, const IOErrorSet& errors) = 0;
    /// The files chosen; empty when the user cancels.
    virtual std::vector<std::filesystem::path> AskFile(ZvFileRequest& request) = 0;

    // --- command window and status bar ---------------------------------------------------------------
    /// As it is: line ends are in the text.
    virtual void Print(const XStringW& text) = 0;
    /// The prompt in front of the line that the user types; empty for none.
    virtual void SetPrompt(const XStringW& prompt) = 0;
    virtual void SetStatusText(const XStringW& text) = 0;
    virtual bool IsShown(Pane pane) const = 0;
    virtual void SetFocus(Pane pane) = 0;

    // --- long work -----------------------------------------------------------------------------------
    /// Begins and ends nest; see ZvWaitCursor.
    virtual void BeginWait() = 0;
    virtual void EndWait() = 0;
    /// A progress display that lasts as long as the object; never null.
    virtual std::unique_ptr<ZvCore::IProgress> StartProgress(const XStringW& title) = 0;

    // --- view windows --------------------------------------------------------------------------------
    /// The pixels of the view's window are out of date.
    virtual void InvalidateView(ZvView& view, const Rect2I& pixels) = 0;
    virtual void SetSystemCursor(ZvSystemCursor cursor) = 0;
    /// Identifier of the item chosen, 0 for none. Blocks; `at` is in pixels of the current view.
    virtual int ShowPopupMenu(const ZvMenu& menu, CPoint at) = 0;
    virtual void ClosePopupMenu() = 0;
    /// Keys that reach the engine wherever the focus is. False when another program holds the key.
    virtual bool RegisterHotKey(int id, int virtualKey) = 0;
    virtual void UnregisterHotKey(int id) = 0;
    /// Ticks reach the command processor under that identifier until the timer is stopped.
    virtual void StartTimer(int id, int milliseconds) = 0;
    virtual void StopTimer(int id) = 0;
};

/// Wait cursor for a scope; a null host is allowed.
class ZvWaitCursor {
public:
    explicit ZvWaitCursor(IZvHost* host) : m_host(host) {
        if (m_host)
            m_host->BeginWait();
    }
    ~ZvWaitCursor() {
        if (m_host)
            m_host->EndWait();
    }
    ZvWaitCursor(const ZvWaitCursor&) = delete;
    ZvWaitCursor& operator=(const ZvWaitCursor&) = delete;

private:
    IZvHost* m_host;
};
