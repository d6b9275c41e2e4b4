#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Progress.h"
#include "ZvCore/XString.h"
#include <memory>

class ZvDrawing;

/// What code without a command of its own needs of the user: messages, a yes or no, progress. Works without a
/// host: texts go to the log, questions get their default answer.
class ZV_API ZvSimpleUI {
public:
    explicit ZvSimpleUI(const ZvDrawing& drawing) : m_drawing(drawing) {}

    void Message(const XStringW& text) const;
    bool AskYesNo(const XStringW& text, bool defaultYes) const;
    void StatusBar(const XStringW& text) const;
    /// Prints to the command window.
    void Print(const XStringW& text) const;
    /// Never null.
    std::unique_ptr<ZvCore::IProgress> StartProgress(const XStringW& title) const;

private:
    const ZvDrawing& m_drawing;
};
