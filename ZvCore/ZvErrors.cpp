#include "ZvCore/ZvErrors.h"
#include "ZvCore/Log.h"
#include <algorithm>

namespace {

struct Row {
    int code;
    std::string_view meaning;
};

constexpr Row kMeanings[] = {
    {ZvErrors::kFatal, "the operation cannot go on"},
    {int(ZvErrorCode::NoDefaultLayer), "no default layer, or the checksum could not be written"},
    {int(ZvErrorCode::OutOfMemory), "out of memory"},
    {int(ZvErrorCode::NameTable), "the name table is inconsistent"},
    {int(ZvErrorCode::BrushIndex), "brush index out of range"},
    {int(ZvErrorCode::TableIndex), "table record index out of range"},
    {int(ZvErrorCode::BadRecordName), "record name not allowed"},
    {int(ZvErrorCode::Checksum), "a checksum could not be computed"},
    {int(ZvErrorCode::UnknownSection), "the section of the undo information is not open"},
    {int(ZvErrorCode::NullInSplit), "null entity while a tree node is split"},
    {int(ZvErrorCode::BlockDigest), "the digest of a block does not fit its bytes"},
    {int(ZvErrorCode::BlockStack), "a block could not be compressed or was not open"},
    {int(ZvErrorCode::NeedsNewerProgram), "the file needs a newer version of the program"},
    {int(ZvErrorCode::BlockUnreadable), "a block could not be decompressed"},
    {int(ZvErrorCode::NullName), "null entity name"},
    {int(ZvErrorCode::NameTaken), "the entity name is taken"},
    {int(ZvErrorCode::EntityTwiceInVerb), "the verb holds the entity already"},
    {int(ZvErrorCode::ModifiedTwice), "the verb holds the modified entities already"},
    {int(ZvErrorCode::VerbLayerGone), "Layer not found during Undo."},
    {int(ZvErrorCode::VerbEntityGone), "Entity referenced by Undo/Redo operation is no longer available."},
    {int(ZvErrorCode::VerbRecordGone), "a record referenced by Undo or Redo is no longer available"},
};
constexpr size_t kMostRecent = 256;

struct State {
    std::vector<ZvErrors::Entry> recent;
    ZvErrors::Sink sink;
};

State& TheState() {
    static State state;
    return state;
}

void ToLog(const ZvErrors::Entry& entry) {
    ZvLog::Printf(ZvLog::Level::Error, "error %d (%s): %s", entry.code,
                  std::string(ZvErrors::Meaning(entry.code)).c_str(), entry.context.c_str());
}

} // namespace

void ZvErrors::Report(int code, std::string_view context) {
    State& state = TheState();
    const Entry entry{code, std::string(context)};
    if (state.recent.size() == kMostRecent)
        state.recent.erase(state.recent.begin());
    state.recent.push_back(entry);
    if (const Sink sink = state.sink) // a copy: the sink may replace itself
        sink(entry);
    else
        ToLog(entry);
}

std::string_view ZvErrors::Meaning(int code) {
    for (const Row& row : kMeanings)
        if (row.code == code)
            return row.meaning;
    return "unknown error";
}

const std::vector<ZvErrors::Entry>& ZvErrors::Recent() {
    return TheState().recent;
}

void ZvErrors::ClearRecent() {
    TheState().recent.clear();
}

ZvErrors::Sink ZvErrors::SetSink(Sink sink) {
    std::swap(TheState().sink, sink);
    return sink;
}

ZvErrorCapture::ZvErrorCapture()
    : m_former(ZvErrors::SetSink([this](const ZvErrors::Entry& entry) { m_entries.push_back(entry); })) {}

ZvErrorCapture::~ZvErrorCapture() {
    ZvErrors::SetSink(std::move(m_former));
}

bool ZvErrorCapture::Has(int code) const {
    return std::any_of(m_entries.begin(), m_entries.end(), [code](const auto& e) { return e.code == code; });
}

bool ZvErrorCapture::HasText(std::string_view part) const {
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [part](const auto& e) { return e.context.find(part) != std::string::npos; });
}
