#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/BinXml.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <utility>

namespace fs = std::filesystem;

void ZvDrawingIO::SetBackupSettings(const ZvBackupSettings* settings) {
    m_backupSettings = settings ? settings : &ZvBackupSettings::Application();
}

ZvBackups ZvDrawingIO::Backups() const {
    return {*m_files, *m_backupSettings, m_drawing.Clock(), m_drawing.Host()};
}

int ZvDrawingIO::PeriodicBackupPurge(const fs::path& directory) const {
    return Backups().PeriodicBackupPurge(directory);
}

bool ZvDrawingIO::CheckBackupPath(bool quiet) const {
    return Backups().CheckBackupPath(quiet, m_fileName);
}

fs::path ZvDrawingIO::GetInstantBackupFilename(const fs::path& path) const {
    return Backups().GetInstantBackupFilename(path);
}

fs::path ZvDrawingIO::GetPeriodicBackupFilename(const fs::path& path) const {
    return Backups().GetPeriodicBackupFilename(path, m_drawing.GetGuid(), m_lastPeriodic);
}

/// Of a file that follows the drawing's, above all that the directory of backups holds of it.
ZvSaveStamp ZvDrawingIO::NextStamp(const fs::path& target) const {
    ZvSaveStamp next;
    next.basedOn = m_stamp.digest;
    next.revision = std::max(m_stamp.revision, Backups().NewestRevision(target, m_drawing.GetGuid())) + 1;
    return next;
}

void ZvDrawingIO::StoreStamp(ZvCore::BinXmlNode& settings) const {
    if (m_stampToWrite)
        m_stampToWrite->Store(settings);
}

void ZvDrawingIO::LoadStamp(const ZvCore::BinXmlNode& settings) {
    m_stamp.revision = std::max(m_stamp.revision, settings.GetInt("Revision", 0));
}

Zv::Status ZvDrawingIO::PeriodicBackup(bool force) {
    if (m_saving || m_loading || (!force && (!m_unsaved || m_backupSettings->periodicMinutes <= 0)))
        return Zv::Status::NotStarted;
    const fs::path file = GetPeriodicBackupFilename(m_fileName);
    if (file.empty())
        return Zv::Status::NotStarted;
    const auto print = [&](const std::string& text) {
        if (IZvHost* host = m_drawing.Host())
            host->Print(XStringW::FromUtf8(text));
        else
            ZvLog::Write(ZvLog::Level::Info, text);
    };
    print(ZvStrings::Get(ZvStr::PeriodicBegins));
    IOErrorSet errors;
    ZvDrawingLock lock; // tells purges elsewhere that the temporary file beside it is being written
    const bool isFree = LockFor(file, lock, errors);
    ZvFileOptions options;
    options.files = m_files;
    ++m_saving;
    m_drawing.SuspendAutoCleanup();
    m_stampToWrite = NextStamp(m_fileName);
    const Zv::Status status = isFree ? WriteAndReplace(file, *m_drawing.FileFormats().GetNativeSaveFormat(),
                                                       false, 0, options, errors)
                                     : Zv::Status::NotStarted;
    m_stamp.revision = std::exchange(m_stampToWrite, {})->revision;
    lock.Release();
    m_drawing.ResumeAutoCleanup();
    --m_saving;
    if (!Zv::Ok(status)) {
        print(XStringA::Format(ZvStrings::Get(ZvStr::PeriodicFailed), errors.ToString().c_str()).Str());
        return status;
    }
    m_lastPeriodic = ZvBackups::PeriodicNumber(file);
    m_unsaved = false;
    print(ZvStrings::Get(ZvStr::PeriodicDone));
    (void)PeriodicBackupPurge(ZvCore::IFileSystem::FolderOf(file));
    return status;
}
