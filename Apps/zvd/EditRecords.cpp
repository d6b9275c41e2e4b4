// Lines about records of tables: layers, layouts and the others.
#include "Apps/zvd/EditSession.h"
#include "Apps/zvd/EditShape.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPaperAggregate.h"
#include "Zelvan/Verbs/ZvVRecordErase.h"
#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/Verbs/ZvVRecordNew.h"
#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvTableTable.h"

namespace {

struct NamedTable {
    const char* word;
    ZvTableCode::Code code;
};
constexpr NamedTable kTables[] = {
    {"layer", ZvTableCode::Layer},     {"linetype", ZvTableCode::LineType},
    {"block", ZvTableCode::Block},     {"textstyle", ZvTableCode::TextStyle},
    {"texture", ZvTableCode::Texture}, {"layout", ZvTableCode::Layout},
    {"view", ZvTableCode::View},
};

/// The entities of a tree that are not erased.
ZvSelection Contents(ZvDrawing& drawing, const ZvBNode& tree) {
    ZvSelection found(&drawing);
    tree.ForEach([&](ZvEntity* entity) {
        if (!entity->IsErased())
            found.Insert(entity);
        return true;
    });
    return found;
}

} // namespace

ZvTable* EditSession::FindTable(const std::string& word, EditOutcome& outcome) const {
    std::string known;
    for (const NamedTable& table : kTables) {
        if (word == table.word)
            return m_drawing.TableTable()->Get(table.code);
        known += (known.empty() ? "" : ", ") + std::string(table.word);
    }
    Refuse(outcome, "there are no records of '" + word + "': known are " + known);
    return nullptr;
}

ZvTableRecord* EditSession::FindRecord(const std::string& table, const std::string& name,
                                       EditOutcome& outcome) const {
    const ZvTable* found = FindTable(table, outcome);
    ZvTableRecord* record = found ? found->GetByName(XStringW::FromUtf8(name)) : nullptr;
    const char* const prefix = table == "layer" || table == "layout" ? "" : "record ";
    if (found && !record)
        Refuse(outcome, "there is no " + table + " '" + name + "': make it with: " + prefix + table +
                            " new \"" + name + "\"");
    return record;
}

// --- what all records can do ------------------------------------------------------------------------------------

/// What is done says to which record.
bool EditSession::DoNamed(std::unique_ptr<ZvVerb> verb, const std::string& name, EditOutcome& outcome) {
    if (!Do(std::move(verb), outcome))
        return false;
    outcome.text += " '" + name + "'";
    return true;
}

/// The words behind the name of the table: new NAME, delete NAME, rename OLD NEW.
bool EditSession::Record(const std::string& table, const std::vector<std::string>& words,
                         EditOutcome& outcome) {
    ZvTable* records = FindTable(table, outcome);
    if (!records)
        return false;
    if (words[0] == "new" && words.size() == 2) {
        const XStringW name = XStringW::FromUtf8(words[1]);
        if (records->GetByName(name))
            return Refuse(outcome, "there is a " + table + " '" + words[1] + "' already");
        if (!records->IsNewNameValid(name))
            return Refuse(outcome, "'" + words[1] + "' cannot be a name");
        return DoNamed(std::make_unique<ZvVRecordNew>(*records, name), words[1], outcome);
    }
    ZvTableRecord* record = FindRecord(table, words[1], outcome);
    if (!record)
        return false;
    if (words[0] == "delete" && words.size() == 2) {
        auto verb = std::make_unique<ZvVRecordErase>(*record);
        return verb->IsNullOp()
                   ? Refuse(outcome, "the drawing cannot do without the " + table + " '" + words[1] + "'")
                   : DoNamed(std::move(verb), words[1], outcome);
    }
    if (words[0] != "rename" || words.size() != 3)
        return Refuse(outcome, "write: " + table + " new|delete NAME, or: " + table + " rename OLD NEW");
    if (records->GetByName(XStringW::FromUtf8(words[2])))
        return Refuse(outcome, "there is a " + table + " '" + words[2] + "' already");
    if (!records->IsNewNameValid(XStringW::FromUtf8(words[2])))
        return Refuse(outcome, "'" + words[2] + "' cannot be a name");
    auto verb = std::make_unique<ZvVRecordModify>(*record);
    verb->Set("Name", XStringW::FromUtf8(words[2]));
    return DoNamed(std::move(verb), words[2], outcome);
}

bool EditSession::AnyRecord(const EditLine& line, EditOutcome& outcome) {
    return Record(line.words[0], {line.words.begin() + 1, line.words.end()}, outcome);
}

bool EditSession::Describe(const EditLine& line, EditOutcome& outcome) {
    const ZvTableRecord* record = FindRecord(line.words[0], line.words[1], outcome);
    if (!record)
        return false;
    auto verb = std::make_unique<ZvVTextChange>(m_drawing);
    return verb->AddRecord(*record, "Description", XStringW::FromUtf8(line.words[2]))
               ? Do(std::move(verb), outcome)
               : Refuse(outcome, "a " + line.words[0] + " has no description");
}

// --- layers -----------------------------------------------------------------------------------------------------

bool EditSession::Layer(const EditLine& line, EditOutcome& outcome) {
    const std::string& what = line.words[0];
    if (what == "merge" && line.words.size() == 3)
        return MergeLayers(line, outcome);
    if (what != "edit")
        return Record("layer", line.words, outcome);
    ZvLayer* layer = FindLayer(line.words[1], outcome);
    return layer && EditLayer(*layer, line, outcome);
}

/// Both halves are one step of undo.
bool EditSession::MergeLayers(const EditLine& line, EditOutcome& outcome) {
    ZvLayer *from = FindLayer(line.words[1], outcome),
            *to = from ? FindLayer(line.words[2], outcome) : nullptr;
    if (!to)
        return false;
    auto erase = std::make_unique<ZvVRecordErase>(*from);
    if (from == to || erase->IsNullOp())
        return Refuse(outcome, "the layer '" + line.words[1] + "' cannot go into '" + line.words[2] + "'");
    auto verb = std::make_unique<ZvVAggregate>(&m_drawing);
    verb->SetName(u"Merge layers");
    verb->Add(std::make_unique<ZvVMoveToLayer>(*to, Contents(m_drawing, from->Tree())));
    verb->Add(std::move(erase));
    return Do(std::move(verb), outcome);
}

bool EditSession::EditLayer(ZvLayer& layer, const EditLine& line, EditOutcome& outcome) {
    if (line.settings.empty())
        return Refuse(outcome, "nothing to set: write for example: layer edit NAME color=Red");
    auto verb = std::make_unique<ZvVRecordModify>(layer);
    for (const auto& [key, value] : line.settings) {
        if (key == "color")
            verb->Set("Color", EditShape::ColorText(value));
        else if (key == "visible" && (value == "yes" || value == "no"))
            verb->Set("Visible", value == "yes");
        else
            return Refuse(outcome,
                          "'" + key + "=" + value + "' cannot be set: known are color=C, visible=yes|no");
    }
    return Do(std::move(verb), outcome);
}

// --- layouts ----------------------------------------------------------------------------------------------------

bool EditSession::Layout(const EditLine& line, EditOutcome& outcome) {
    const std::string& what = line.words[0];
    if (what == "clear")
        return ClearLayouts(line, outcome);
    if (what != "add")
        return Record("layout", line.words, outcome);
    const auto* layout = static_cast<const ZvLayout*>(FindRecord("layout", line.words[1], outcome));
    if (!layout || !layout->Drawing() || line.words.size() < 4)
        return layout ? Refuse(outcome, "write: layout add NAME polyline|polygon|point X,Y …") : false;
    ZvDrawing& sheet = *layout->Drawing();
    std::vector<std::unique_ptr<ZvEntity>> made =
        EditShape::Make(sheet, {line.words.begin() + 2, line.words.end()}, outcome.text);
    if (made.empty())
        return false;
    auto created = std::make_unique<ZvVEntNew>(&sheet);
    for (auto& entity : made) {
        if (!EditShape::Style(*entity, line, outcome.text))
            return false;
        created->Add(std::move(entity));
    }
    auto verb = std::make_unique<ZvVPaperAggregate>(&m_drawing);
    verb->Add(std::move(created));
    return Do(std::move(verb), outcome);
}

/// One sheet or all of them, in one step of undo.
bool EditSession::ClearLayouts(const EditLine& line, EditOutcome& outcome) {
    auto verb = std::make_unique<ZvVPaperAggregate>(&m_drawing);
    verb->SetName(u"Clear layouts");
    const bool all = line.words[1] == "all";
    if (!all && !FindRecord("layout", line.words[1], outcome))
        return false;
    for (const ZvLayout* layout : m_drawing.LayoutTable()->GetOrdered()) {
        if (layout->IsErased() || !layout->Drawing() ||
            !(all || layout->GetName() == XStringW::FromUtf8(line.words[1])))
            continue;
        ZvSelection contents(layout->Drawing());
        layout->Drawing()->SelectAll(contents);
        if (!contents.IsEmpty())
            verb->Add(std::make_unique<ZvVErase>(contents));
    }
    return verb->IsNullOp() ? Refuse(outcome, "there is nothing on the sheet") : Do(std::move(verb), outcome);
}
