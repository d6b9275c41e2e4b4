#include "Apps/zvd/EditSession.h"
#include "Apps/zvd/ConsoleHost.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Platform/Platform.h"
#include <utility>

const EditSession::Command EditSession::kCommands[] = {
    {"add", "add polyline|polygon|point X,Y … [/ X,Y …] [layer=NAME]", 2, 100000, &EditSession::Add},
    {"erase", "erase WHAT", 1, 1, &EditSession::Erase},
    {"move", "move WHAT DX,DY", 2, 2, &EditSession::Move},
    {"rotate", "rotate WHAT DEGREES [about=X,Y]", 2, 2, &EditSession::Rotate},
    {"scale", "scale WHAT FACTOR [about=X,Y]", 2, 2, &EditSession::Scale},
    {"grip", "grip NAME INDEX X,Y", 3, 3, &EditSession::Grip},
    {"tolayer", "tolayer WHAT LAYER", 2, 2, &EditSession::ToLayer},
    {"property", "property WHAT [color=C] [width=W] [fill=B]", 1, 1, &EditSession::Property},
    {"attribute", "attribute WHAT FIELD=VALUE …", 1, 1, &EditSession::Attribute},
    {"order", "order WHAT front|back", 2, 2, &EditSession::Order},
    {"select", "select WHAT|none", 1, 1, &EditSession::Select},
    {"convert", "convert WHAT multipoint|polyline|polygon", 2, 2, &EditSession::Convert},
    {"replace", "replace NAME polyline|polygon|point X,Y …", 3, 100000, &EditSession::Replace},
    {"connect", "connect NAME NAME", 2, 2, &EditSession::Connect},
    {"round", "round WHAT STEP", 2, 2, &EditSession::Round},
    {"hide", "hide WHAT", 1, 1, &EditSession::Hide},
    {"show", "show WHAT", 1, 1, &EditSession::Hide},
    {"protect", "protect WHAT", 1, 1, &EditSession::Protect},
    {"release", "release WHAT", 1, 1, &EditSession::Protect},
    {"text", "text WHAT FIELD TEXT", 3, 3, &EditSession::Text},
    {"layer",
     "layer new|delete NAME, layer rename OLD NEW, layer merge FROM TO, layer edit NAME [color=C] "
     "[visible=yes|no]",
     2, 3, &EditSession::Layer},
    {"layout",
     "layout new|delete NAME, layout rename OLD NEW, layout add NAME polyline|polygon|point X,Y …, layout "
     "clear "
     "NAME|all",
     2, 100000, &EditSession::Layout},
    {"record", "record TABLE new|delete NAME, record TABLE rename OLD NEW", 3, 4, &EditSession::AnyRecord},
    {"describe", "describe TABLE NAME TEXT", 3, 3, &EditSession::Describe},
    {"undo", "undo [TIMES]", 0, 1, &EditSession::Undo},
    {"redo", "redo [TIMES]", 0, 1, &EditSession::Redo},
    {"section", "section begin|end [barrier|rollback]", 1, 2, &EditSession::Section},
    {"history", "history", 0, 0, &EditSession::History},
    {"forget", "forget all|WHAT, forget layer NAME", 1, 2, &EditSession::Forget},
    {"delete", "delete WHAT", 1, 1, &EditSession::Delete},
    {"import", "import FILE …", 1, 1000, &EditSession::Import},
    {"backup", "backup [FOLDER]", 0, 1, &EditSession::Backup},
    {"save", "save [FILE]", 0, 1, &EditSession::Save},
    {"count", "count WHAT", 1, 1, &EditSession::Count},
    {"units", "units m|km|cm|mm|in|pt|ft|yd|mi", 1, 1, &EditSession::Units},
    {"measure", "measure WHAT", 1, 1, &EditSession::Measure},
    {"list", "list WHAT", 1, 1, &EditSession::List},
    {"distance", "distance X,Y X,Y", 2, 2, &EditSession::Distance},
};

EditSession::EditSession(ZvDrawing& drawing, LineHost& host, std::filesystem::path file)
    : m_drawing(drawing), m_host(host), m_file(std::move(file)), m_last(&drawing) {}

std::string EditSession::Help() {
    std::string text;
    for (const Command& command : kCommands)
        text += std::string("  ") + command.usage + "\n";
    return text + "WHAT: all, selected, last, layer:NAME, box:X0,Y0,X1,Y1, crossing:X0,Y0,X1,Y1, "
                  "outline:X,Y,X,Y,X,Y, "
                  "near:X,Y,RADIUS, or names of entities: "
                  "17,20-25\n";
}

EditOutcome EditSession::Run(const EditLine& line) {
    EditOutcome outcome;
    for (const Command& command : kCommands) {
        if (line.command != command.name)
            continue;
        if (line.words.size() < command.least || line.words.size() > command.most)
            Refuse(outcome, std::string("write: ") + command.usage);
        else
            outcome.done = (this->*command.action)(line, outcome);
        if (const std::string more = m_host.TakeMessages(); outcome.text.find(more) == std::string::npos)
            outcome.text += "; " + more;
        while (outcome.text.ends_with('\n'))
            outcome.text.pop_back();
        return outcome;
    }
    std::string known;
    for (const Command& command : kCommands)
        known += (known.empty() ? "" : ", ") + std::string(command.name);
    Refuse(outcome, "there is no '" + line.command + "': use one of " + known);
    return outcome;
}

bool EditSession::Refuse(EditOutcome& outcome, std::string why) {
    outcome.text = std::move(why);
    return false;
}

bool EditSession::Do(std::unique_ptr<ZvVerb> verb, EditOutcome& outcome) {
    const std::string name = verb->GetName().ToUtf8();
    ZvVerbStack& stack = *m_drawing.Verbs();
    const int count = verb->Entities().Count();
    (void)m_host.TakePrinted();
    const int sequence = m_drawing.DoVerb(verb.release());
    const std::string why = m_host.TakeMessages();
    const ZvVerb* kept = sequence ? stack.FindSequence(sequence) : nullptr;
    if (!kept && !why.empty())
        return Refuse(outcome, why);
    outcome.text = name + (count > 0 ? ": " + std::to_string(count) : "");
    if (!kept && stack.Budget() != 0)
        outcome.text = name + ": nothing to change";
    else if (kept && !kept->Refusal().IsEmpty())
        outcome.text += "; not all of it: " + kept->Refusal().ToUtf8();
    for (const std::string& note : {m_host.TakePrinted(), why})
        outcome.text += note.empty() ? "" : "; " + note;
    return true;
}

// --- what is meant ------------------------------------------------------------------------------------------

bool EditSession::Resolve(const std::string& what, ZvSelection& found, EditOutcome& outcome) const {
    const auto names = [&](const char* prefix) { return what.rfind(prefix, 0) == 0; };
    found = ZvSelection(&m_drawing);
    if (what == "all") {
        m_drawing.SelectAll(found);
    } else if (what == "selected") {
        found = m_drawing.CurrentSelection();
    } else if (what == "last") {
        found = m_last;
    } else if (names("layer:")) {
        ZvLayer* layer = FindLayer(what.substr(6), outcome);
        if (!layer)
            return false;
        layer->Tree().ForEach([&](ZvEntity* entity) {
            found.Insert(entity);
            return true;
        });
    } else if (names("box:")) {
        if (!ResolveBox(what.substr(4), false, found, outcome))
            return false;
    } else if (names("crossing:")) {
        if (!ResolveBox(what.substr(9), true, found, outcome))
            return false;
    } else if (names("outline:")) {
        if (!ResolveOutline(what.substr(8), found, outcome))
            return false;
    } else if (names("near:")) {
        if (!ResolveNear(what.substr(5), found, outcome))
            return false;
    } else if (!ResolveNames(what, found, outcome)) {
        return false;
    }
    std::vector<ZvEntity*> entities;
    found.GetValidEntities(entities);
    found = ZvSelection(&m_drawing);
    for (const ZvEntity* entity : entities)
        if (!entity->IsErased())
            found.Insert(entity);
    return true;
}

bool EditSession::ResolveSome(const std::string& what, ZvSelection& found, EditOutcome& outcome) const {
    if (!Resolve(what, found, outcome))
        return false;
    return !found.IsEmpty() || Refuse(outcome, "'" + what + "' means no entity of the drawing");
}

bool EditSession::ResolveNames(const std::string& what, ZvSelection& found, EditOutcome& outcome) const {
    for (size_t at = 0; at <= what.size();) {
        const size_t comma = std::min(what.find(',', at), what.size());
        const std::string_view range = std::string_view(what).substr(at, comma - at);
        const size_t dash = range.find('-');
        const auto first = EditLine::Whole(range.substr(0, dash));
        const auto last = dash == std::string_view::npos ? first : EditLine::Whole(range.substr(dash + 1));
        if (!first || !last || *last < *first || *last > 0xFFFFFFFF || *last - *first > 10'000'000)
            return Refuse(outcome,
                          "'" + what + "' is none of all, selected, last, layer:NAME, box:X0,Y0,X1,Y1, " +
                              "crossing:X0,Y0,X1,Y1, outline:X,Y,X,Y,X,Y, near:X,Y,RADIUS, or names such "
                              "as 17,20-25");
        for (uint64_t name = *first; name <= *last; ++name)
            found.InsertIfExists(ZvName(uint32_t(name)));
        at = comma + 1;
    }
    return true;
}

ZvLayer* EditSession::FindLayer(const std::string& name, EditOutcome& outcome) const {
    ZvLayer* layer = m_drawing.LayerTable()->GetByName(XStringW::FromUtf8(name));
    if (!layer)
        Refuse(outcome, "there is no layer '" + name + "': make it with: layer new \"" + name + "\"");
    return layer;
}

// --- words to the stack and the file ----------------------------------------------------------------------------

bool EditSession::Steps(const EditLine& line, bool undo, EditOutcome& outcome) {
    const auto times = line.words.empty() ? std::optional<uint64_t>(1) : EditLine::Whole(line.words[0]);
    if (!times || *times == 0)
        return Refuse(outcome, "'" + line.words[0] + "' is no number of steps");
    ZvVerbStack& stack = *m_drawing.Verbs();
    for (uint64_t i = 0; i < *times; ++i) {
        if (undo ? !stack.CanUndo() : !stack.CanRedo())
            return Refuse(outcome, "after " + std::to_string(i) + " steps there is nothing to " +
                                       (undo ? "undo" : "redo"));
        if (!(undo ? stack.Undo() : stack.Redo()))
            return Refuse(outcome, "step " + std::to_string(i + 1) + ": " + m_host.TakeMessages());
    }
    outcome.text = std::string(undo ? "undone: " : "redone: ") + std::to_string(*times);
    return true;
}

bool EditSession::Undo(const EditLine& line, EditOutcome& outcome) {
    return Steps(line, true, outcome);
}

bool EditSession::Redo(const EditLine& line, EditOutcome& outcome) {
    return Steps(line, false, outcome);
}

bool EditSession::Section(const EditLine& line, EditOutcome& outcome) {
    ZvVerbStack& stack = *m_drawing.Verbs();
    const std::string& which = line.words[0];
    const std::string flag = line.words.size() > 1 ? line.words[1] : "";
    if (which == "begin" && (flag.empty() || flag == "barrier")) {
        m_sections.push_back(stack.VerbBeginSection(flag.empty() ? 0 : ZvVerbStack::kSectionBarrier));
        outcome.text = "section " + std::to_string(m_sections.back()) + " begun";
        return true;
    }
    if (which != "end" || !(flag.empty() || flag == "rollback"))
        return Refuse(outcome, "write: section begin [barrier], or: section end [rollback]");
    if (m_sections.empty())
        return Refuse(outcome, "no section is open: write 'section begin' first");
    const int section = m_sections.back();
    m_sections.pop_back();
    if (!stack.VerbEndSection(section, flag == "rollback" ? ZvVerbStack::kSectionRollBack : 0))
        return Refuse(outcome, "section " + std::to_string(section) + ": " + m_host.TakeMessages());
    outcome.text = "section " + std::to_string(section) + (flag.empty() ? " ended" : " rolled back");
    return true;
}

bool EditSession::Save(const EditLine& line, EditOutcome& outcome) {
    const std::filesystem::path target =
        line.words.empty() ? m_file : ZvPlatform::PathFromUtf8(line.words[0]);
    const ZvFileFormat* format = m_drawing.FileFormats().GetSaveFormat(target);
    IOErrorSet errors;
    if (!Zv::Ok(m_drawing.DrawingIO()->SaveFile(target, format, 0, &errors)))
        return Refuse(outcome, "cannot save '" + ZvPlatform::PathToUtf8(target) + "': " + errors.ToString());
    ++m_saves;
    outcome.text = "saved " + ZvPlatform::PathToUtf8(m_drawing.DrawingIO()->DrawingFileName());
    return true;
}

bool EditSession::Count(const EditLine& line, EditOutcome& outcome) {
    ZvSelection found;
    if (!Resolve(line.words[0], found, outcome))
        return false;
    outcome.text = std::to_string(found.Count());
    return true;
}
