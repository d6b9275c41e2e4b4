#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"

/// A program kept in the drawing: source text for the script interpreter.
class ZV_API ZvProgram : public ZvTableRecord {
public:
    /// When the program runs by itself.
    enum class Trigger : int32_t { Manual, DrawingOpened, DrawingSaved, DrawingClosed };

    uint16_t GetRecordCode() const override { return ZvTableCode::Program; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    const XStringW& GetSource() const { return m_source; }
    void SetSource(const XStringW& text);
    /// "lua" by default.
    const XStringW& GetLanguage() const { return m_language; }
    void SetLanguage(const XStringW& language);
    const XStringW& GetDescription() const { return m_description; }
    void SetDescription(const XStringW& text);
    /// Arguments given when the user starts the program from a list.
    const XStringW& GetArguments() const { return m_arguments; }
    void SetArguments(const XStringW& text);
    Trigger GetTrigger() const { return m_trigger; }
    void SetTrigger(Trigger trigger);
    bool IsEnabled() const { return m_enabled; }
    void SetEnabled(bool on);

protected:
    void Fields(ZvRecordFields& visit) override;

private:
    XStringW m_source;
    XStringW m_language{u"lua"};
    XStringW m_description;
    XStringW m_arguments;
    Trigger m_trigger = Trigger::Manual;
    bool m_enabled = true;
};
