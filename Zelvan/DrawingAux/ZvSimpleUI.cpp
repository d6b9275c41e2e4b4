#include "Zelvan/DrawingAux/ZvSimpleUI.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Log.h"

void ZvSimpleUI::Message(const XStringW& text) const {
    if (IZvHost* host = m_drawing.Host())
        host->Tell(text);
    else
        ZvLog::Write(ZvLog::Level::Info, text.ToUtf8());
}

bool ZvSimpleUI::AskYesNo(const XStringW& text, bool defaultYes) const {
    if (IZvHost* host = m_drawing.Host())
        return host->AskYesNo(text, defaultYes);
    ZvLog::Write(ZvLog::Level::Info, text.ToUtf8() + (defaultYes ? " Yes" : " No"));
    return defaultYes;
}

void ZvSimpleUI::StatusBar(const XStringW& text) const {
    if (IZvHost* host = m_drawing.Host())
        host->SetStatusText(text);
}

void ZvSimpleUI::Print(const XStringW& text) const {
    if (IZvHost* host = m_drawing.Host())
        host->Print(text);
    else
        ZvLog::Write(ZvLog::Level::Info, text.ToUtf8());
}

std::unique_ptr<ZvCore::IProgress> ZvSimpleUI::StartProgress(const XStringW& title) const {
    if (IZvHost* host = m_drawing.Host())
        return host->StartProgress(title);
    return std::make_unique<ZvCore::NoProgress>();
}
