// Lines about the history of the edits, and those that reach outside of it: deletion for good, backups, imports.
#include "Apps/zvd/EditSession.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>

namespace {

std::string Number(uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + (count == 1 ? one : many);
}

/// The names of the verbs [from, to), at most the newest few of them.
std::string NamesOf(const std::vector<ZvVerb*>& verbs, size_t from, size_t to) {
    constexpr size_t kMost = 20;
    std::string text = to - from > kMost ? "…" : "";
    for (size_t i = std::max(from, to > kMost ? to - kMost : 0); i < to; ++i)
        text += (text.empty() ? "" : ", ") + verbs[i]->GetName().ToUtf8();
    return text;
}

} // namespace

bool EditSession::History(const EditLine&, EditOutcome& outcome) {
    const ZvVerbStack& stack = *m_drawing.Verbs();
    const std::vector<ZvVerb*> verbs = stack.GetVerbStack();
    const auto done = size_t(stack.Position());
    outcome.text = Number(done, " step", " steps") + " to undo";
    if (done)
        outcome.text += " (" + NamesOf(verbs, 0, done) + ")";
    if (done < verbs.size())
        outcome.text += ", " + std::to_string(verbs.size() - done) + " to redo (" +
                        NamesOf(verbs, done, verbs.size()) + ")";
    outcome.text += ", " + Number(stack.MemUsage(), " byte", " bytes");
    return true;
}

bool EditSession::Forget(const EditLine& line, EditOutcome& outcome) {
    ZvVerbStack& stack = *m_drawing.Verbs();
    const int before = stack.StackSize();
    if (line.words[0] == "all" && line.words.size() == 1) {
        stack.PurgeUndo();
    } else if (line.words[0] == "layer" && line.words.size() == 2) {
        ZvLayer* layer = FindLayer(line.words[1], outcome);
        if (!layer)
            return false;
        stack.PurgeUndoForLayer(layer);
    } else {
        ZvSelection what;
        if (line.words.size() != 1)
            return Refuse(outcome, "write: forget all, forget layer NAME, or: forget WHAT");
        if (!ResolveSome(line.words[0], what, outcome))
            return false;
        stack.PurgeUndoForEntities(&what);
    }
    outcome.text = "forgotten: " + Number(uint64_t(before - stack.StackSize()), " step", " steps");
    return true;
}

bool EditSession::Delete(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    m_last.Remove(what);
    m_drawing.Verbs()->DeleteEntitiesClean(&what);
    outcome.text = "deleted for good: " + std::to_string(what.Count());
    return true;
}

bool EditSession::Backup(const EditLine& line, EditOutcome& outcome) {
    ZvDrawingIO& io = *m_drawing.DrawingIO();
    ZvBackupSettings settings = io.BackupSettings();
    if (!line.words.empty())
        settings.directory = ZvPlatform::PathFromUtf8(line.words[0]);
    io.SetBackupSettings(&settings);
    const std::filesystem::path file = io.GetPeriodicBackupFilename(io.DrawingFileName());
    const bool written = !file.empty() && Zv::Ok(io.PeriodicBackup(true));
    const std::string folder = ZvPlatform::PathToUtf8(file.empty() ? settings.directory : file.parent_path());
    io.SetBackupSettings(nullptr);
    if (!written)
        return Refuse(outcome, "no backup was written: '" + folder + "' cannot be written to, or is full");
    outcome.text = "backed up to " + ZvPlatform::PathToUtf8(file);
    return true;
}

/// Recordings and images among the files are told and passed over, as where files are opened by hand.
bool EditSession::Import(const EditLine& line, EditOutcome& outcome) {
    std::vector<std::filesystem::path> files;
    for (const std::string& word : line.words)
        files.push_back(ZvPlatform::PathFromUtf8(word));
    ZvDrawingIO& io = *m_drawing.DrawingIO();
    IOErrorSet errors;
    const auto count = [this] {
        std::vector<ZvEntity*> entities;
        m_drawing.NameTable().GetAllNonErased(entities);
        return entities.size();
    };
    const auto before = count();
    const int opened = io.GenericFileLoader(files, [&](const std::filesystem::path& file) {
        return io.LoadFile(file, ZvIOFlag::Merge | ZvIOFlag::KeepName | ZvIOFlag::Quiet, &errors);
    });
    if (opened != int(files.size())) {
        const std::string why = errors.ToString();
        return Refuse(outcome,
                      std::to_string(opened) + " of " + Number(files.size(), " file", " files") +
                          " imported: " + (why.empty() ? "images and recordings are passed over" : why));
    }
    outcome.text = "imported: " + Number(count() - before, " entity", " entities");
    return true;
}
