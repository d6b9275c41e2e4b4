#pragma once
#include "Apps/zvd/EditLine.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Mat4T.h"
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class LineHost;
class ZvDrawing;
class ZvLayer;
class ZvTable;
class ZvTableRecord;
class ZvVerb;

/// What one line of an edit script did.
struct EditOutcome {
    bool done = false;
    std::string text;            ///< what was done, or why not and what to do
    std::vector<uint32_t> names; ///< entities that the line made
};

/// A drawing under the lines of an edit script: each line is one verb, done by the drawing's stack, or a word to the stack.
/// Docs/edit-language.md is the language.
class EditSession {
public:
    /// `host`: that of the drawing.
    EditSession(ZvDrawing& drawing, LineHost& host, std::filesystem::path file);

    EditOutcome Run(const EditLine& line);
    /// Lines that saved.
    int Saves() const { return m_saves; }
    /// The language in short, a line a command.
    static std::string Help();

private:
    using Action = bool (EditSession::*)(const EditLine&, EditOutcome&);
    struct Command {
        const char* name;
        const char* usage;
        size_t least, most; ///< words that it takes
        Action action;
    };
    static const Command kCommands[];

    // The answers of actions: true when done, else `outcome.text` says why not.
    bool Add(const EditLine& line, EditOutcome& outcome);
    bool Erase(const EditLine& line, EditOutcome& outcome);
    bool Move(const EditLine& line, EditOutcome& outcome);
    bool Rotate(const EditLine& line, EditOutcome& outcome);
    bool Scale(const EditLine& line, EditOutcome& outcome);
    bool Grip(const EditLine& line, EditOutcome& outcome);
    bool ToLayer(const EditLine& line, EditOutcome& outcome);
    bool Property(const EditLine& line, EditOutcome& outcome);
    bool Attribute(const EditLine& line, EditOutcome& outcome);
    bool Order(const EditLine& line, EditOutcome& outcome);
    bool Select(const EditLine& line, EditOutcome& outcome);
    bool Convert(const EditLine& line, EditOutcome& outcome);
    bool Replace(const EditLine& line, EditOutcome& outcome);
    bool Connect(const EditLine& line, EditOutcome& outcome);
    bool Round(const EditLine& line, EditOutcome& outcome);
    bool Hide(const EditLine& line, EditOutcome& outcome);
    bool Protect(const EditLine& line, EditOutcome& outcome);
    bool Text(const EditLine& line, EditOutcome& outcome);
    bool Layer(const EditLine& line, EditOutcome& outcome);
    bool Layout(const EditLine& line, EditOutcome& outcome);
    bool AnyRecord(const EditLine& line, EditOutcome& outcome);
    bool Describe(const EditLine& line, EditOutcome& outcome);
    bool Undo(const EditLine& line, EditOutcome& outcome);
    bool Redo(const EditLine& line, EditOutcome& outcome);
    bool Section(const EditLine& line, EditOutcome& outcome);
    bool History(const EditLine& line, EditOutcome& outcome);
    bool Forget(const EditLine& line, EditOutcome& outcome);
    bool Delete(const EditLine& line, EditOutcome& outcome);
    bool Import(const EditLine& line, EditOutcome& outcome);
    bool Backup(const EditLine& line, EditOutcome& outcome);
    bool Save(const EditLine& line, EditOutcome& outcome);
    bool Count(const EditLine& line, EditOutcome& outcome);
    bool Units(const EditLine& line, EditOutcome& outcome);
    bool Measure(const EditLine& line, EditOutcome& outcome);
    bool List(const EditLine& line, EditOutcome& outcome);
    bool Distance(const EditLine& line, EditOutcome& outcome);

    /// Says what could not be changed, too. True where there was nothing to change.
    bool Do(std::unique_ptr<ZvVerb> verb, EditOutcome& outcome);
    bool DoNamed(std::unique_ptr<ZvVerb> verb, const std::string& name, EditOutcome& outcome);
    bool Transform(const std::string& what, const Mat4d& xform, EditOutcome& outcome);
    bool Switch(const std::string& which, uint16_t flag, bool on, EditOutcome& outcome);
    bool Record(const std::string& table, const std::vector<std::string>& words, EditOutcome& outcome);
    bool MergeLayers(const EditLine& line, EditOutcome& outcome);
    bool ClearLayouts(const EditLine& line, EditOutcome& outcome);
    bool EditLayer(ZvLayer& layer, const EditLine& line, EditOutcome& outcome);
    /// The entities that a word means: "all", "selected", "last", "layer:NAME", "box:x0,y0,x1,y1", "crossing:" the same,
    /// "outline:x,y,x,y,x,y", "near:x,y,radius", or names "17,20-25".
    bool Resolve(const std::string& what, ZvSelection& found, EditOutcome& outcome) const;
    /// The same; false when that is none.
    bool ResolveSome(const std::string& what, ZvSelection& found, EditOutcome& outcome) const;
    bool ResolveNames(const std::string& what, ZvSelection& found, EditOutcome& outcome) const;
    bool ResolveBox(const std::string& box, bool crossing, ZvSelection& found, EditOutcome& outcome) const;
    bool ResolveOutline(const std::string& outline, ZvSelection& found, EditOutcome& outcome) const;
    bool ResolveNear(const std::string& place, ZvSelection& found, EditOutcome& outcome) const;
    ZvTable* FindTable(const std::string& word, EditOutcome& outcome) const;
    ZvTableRecord* FindRecord(const std::string& table, const std::string& name, EditOutcome& outcome) const;
    ZvLayer* FindLayer(const std::string& name, EditOutcome& outcome) const;
    bool Steps(const EditLine& line, bool undo, EditOutcome& outcome);
    static bool Refuse(EditOutcome& outcome, std::string why);

    ZvDrawing& m_drawing;
    LineHost& m_host;
    std::filesystem::path m_file;
    ZvSelection m_last; ///< what the newest line with `add` made
    std::vector<int> m_sections;
    int m_saves = 0;
};
