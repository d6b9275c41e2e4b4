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
    /// A backup to open; `start` is the folder offered. Empty when cancelled.
    std::filesystem::path AskOpenBackup(const std::filesystem::path& start = {});
    /// Before many files are opened; yes without a host.
    bool AskOpenMany(int count);
    /// In place of a media file that is missing: the file that the user chose; empty when there is none.
    std::filesystem::path AskMedia(const std::filesystem::path& missing);
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
