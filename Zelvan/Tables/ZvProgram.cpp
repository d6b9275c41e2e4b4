#include "Zelvan/Tables/ZvProgram.h"
#include "Zelvan/Tables/ZvRecordFields.h"

std::unique_ptr<ZvTableRecord> ZvProgram::NewOfKind() const {
    return std::make_unique<ZvProgram>();
}

void ZvProgram::SetSource(const XStringW& text) {
    m_source = text;
    IncModified();
}

void ZvProgram::SetLanguage(const XStringW& language) {
    m_language = language;
    IncModified();
}

void ZvProgram::SetDescription(const XStringW& text) {
    m_description = text;
    IncModified();
}

void ZvProgram::SetArguments(const XStringW& text) {
    m_arguments = text;
    IncModified();
}

void ZvProgram::SetTrigger(Trigger trigger) {
    m_trigger = trigger;
    IncModified();
}

void ZvProgram::SetEnabled(bool on) {
    m_enabled = on;
    IncModified();
}

void ZvProgram::Fields(ZvRecordFields& visit) {
    visit.Field("Source", m_source);
    visit.Field("Language", m_language);
    visit.Field("Description", m_description);
    visit.Field("Arguments", m_arguments);
    visit.Enum("Trigger", m_trigger, Trigger::DrawingClosed);
    visit.Field("Enabled", m_enabled);
}
