#pragma once
#include "Zelvan/Ports/IZvHost.h"
#include "ZvCore/Api.h"
#include "ZvCore/IOErrorSet.h"
#include <filesystem>
#include <string>
#include <vector>

class ZvDrawing;
class ZvFileFormat;

/// The questions that a drawing asks by itself, with their exact texts, through its host. Without a host:
/// default answers, texts to the log.
class ZV_API ZvDrawingDialogs {
public:
    explicit ZvDrawingDialogs(ZvDrawing& drawing) : m_drawing(drawing) {}

    /// Empty when cancelled. `includeUnused` and `customMerge` take the state of the dialog's options when
    /// given.
    std::vector<std::filesystem::path> AskOpen(bool many, bool* includeUnused = nullptr,
                                               bool* customMerge = nullptr);
    /// The name has an extension of a save format. Empty when cancelled.
    std::filesystem::path AskSave(const std::filesystem::path& start = {});
    /// Nothing for an empty set.
    void ShowLoadErrors(const IOErrorSet& errors);
    void ShowSaveErrors(const IOErrorSet& errors);
    /// After a fatal error: whether to try to save. False without a host.
    bool AskSaveAfterFatalError();
    /// The text in front of the forced end of the process.
    void TellOutOfSync();

private:
    void ShowErrors(int heading, const IOErrorSet& errors);
    ZvDrawing& m_drawing;
};
