#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <new>

namespace {

constexpr int kSolidFirstVersion = 1022;
constexpr int kDateFirstVersion = 1073;
constexpr uint32_t kSmallestEntityHead = 12;
constexpr uint32_t kLargestEntityHead = 4096;

/// The date of a file: stored from format 1073 on, before that the release of the last program that wrote the format.
DateTime FileDateOf(const ZvNativeHeader& header) {
    if (header.version >= kDateFirstVersion)
        return DateTime{header.buildStamp};
    return header.version >= 1069 ? DateTime::FromUtc(2012, 9, 3) : DateTime::FromUtc(2010, 7, 26);
}

} // namespace

Zv::Status ZvNativeFile::ReadFile(ZvDrawing* drawing, ZvCore::IFile* file) {
    Impl& impl = *m_impl;
    impl.Begin(*drawing, *file);
    bool good = false;
    try {
        good = impl.Read();
    } catch (const std::bad_alloc&) {
        AddError(int(ZvErrorCode::OutOfMemory), ZvStrings::Get(ZvStr::LoadOutOfMemory));
    }
    if (impl.touched)
        impl.FinishRead();
    if (!impl.callerView && file->Error()) {
        impl.errors.Add(0, ZvStrings::Get(ZvStr::LoadReadFailed));
        good = false;
    }
    return impl.Outcome(good);
}

bool ZvNativeFile::Impl::Read() {
    const uint64_t length = caller->Length();
    if (const uint8_t* bytes = caller->View(0, size_t(length))) {
        callerView = ZvCore::MemFile::OverView(bytes, size_t(length));
        Retarget();
    }
    bool good = false;
    return MayReadAhead() && ReadAhead(good) ? good : ReadInOrder();
}

bool ZvNativeFile::Impl::ReadInOrder() {
    return CheckValid() && ReadSections();
}

bool ZvNativeFile::Impl::ReadSections() {
    if (!ReadHeader())
        return false;
    const DateTime date = FileDateOf(header);
    ZvLog::Printf(ZvLog::Level::Info, "file version %d\n", header.version);
    if (!CheckVersion())
        return false;
    if (header.version >= kSolidFirstVersion && header.IsSolid() && !ReadSolidHeadBegin())
        return false;
    if (!CheckSections())
        return false;
    touched = true;
    drawing->SetFileDate(date);
    return ReadBody();
}

/// Refuses, with a reason for the user.
bool ZvNativeFile::Impl::Refuse(const std::string& reason) {
    api.AddError(int(ZvErrorCode::BlockUnreadable),
                 XStringA::Format(ZvStrings::Get(ZvStr::LoadRefused), reason.c_str()).Str());
    return false;
}

bool ZvNativeFile::Impl::CheckValid() {
    XStringW reason;
    if (IsValid(Target(), options.verifyChecksum, options.progress, reason, cancelled))
        return true;
    if (cancelled)
        return false;
    if (!options.host)
        return Refuse(reason.IsEmpty() ? ZvStrings::Get(ZvStr::LoadBadHeader) : reason.ToUtf8());
    XStringW text = ZvStrings::GetW(ZvStr::LoadCorruptQuestion);
    if (!reason.IsEmpty())
        text += XStringW(u"\n\n(") + reason + XStringW(u")");
    return options.host->AskYesNo(text, false) || Refuse(reason.ToUtf8());
}

/// Reads the header at the start of the current stream over the one held.
bool ZvNativeFile::Impl::ReadHeader() {
    uint64_t size = 0;
    uint8_t bytes[ZvNativeHeader::kSize];
    if (!desc->Seek(0) || !desc->ReadValue(size) || size > ZvNativeHeader::kLargestSize || !desc->Seek(0) ||
        !desc->ReadPad(bytes, sizeof bytes, size))
        return Refuse(ZvStrings::Get(ZvStr::LoadBadHeader));
    header.Parse(bytes);
    if (!header.HasMagic())
        return Refuse(ZvStrings::Get(ZvStr::LoadBadSignature));
    if (header.entityHeadSize < kSmallestEntityHead || header.entityHeadSize > kLargestEntityHead)
        return Refuse(
            XStringA::Format(ZvStrings::Get(ZvStr::LoadBadEntityHead), header.entityHeadSize).Str());
    desc->version = header.version;
    desc->flags = header.flags;
    desc->entityHeadSize = header.entityHeadSize;
    return true;
}

bool ZvNativeFile::Impl::CheckVersion() {
    if (header.version <= kVersion)
        return true;
    if (header.minimumReader > kVersion) {
        api.AddError(int(ZvErrorCode::NeedsNewerProgram),
                     XStringA::Format(ZvStrings::Get(ZvStr::LoadNeedsNewer), options.fileName.c_str(),
                                      header.version, header.minimumReader, kVersion)
                         .Str());
        return false;
    }
    const bool ask =
        options.host && options.askNewerVersion && !(header.flags & ZvNativeHeader::kFlagNoNewerQuestion);
    if (ask)
        return options.host->AskYesNo(ZvStrings::GetW(ZvStr::LoadNewerQuestion), true,
                                      ZvStrings::GetW(ZvStr::LoadNewerTitle));
    Warn(0, XStringA::Format(ZvStrings::Get(ZvStr::LoadNewerWarning), header.version, kVersion).Str());
    return true;
}

bool ZvNativeFile::Impl::ReadSolidHeadBegin() {
    const uint64_t end = desc->RecordEnd();
    if (header.solidOffset < kHeaderSize || header.solidOffset >= end)
        return Refuse(XStringA::Format(ZvStrings::Get(ZvStr::LoadSectionOutside), "body",
                                       static_cast<long long>(header.solidOffset),
                                       static_cast<long long>(end))
                          .Str());
    if (!desc->Seek(header.solidOffset) || !api.StartDecompressBlock())
        return false;
    solidOpen = true;
    XStringW reason;
    if (!IsValid(Target(), options.verifyChecksum, options.progress, reason, cancelled))
        return !cancelled && Refuse(reason.ToUtf8());
    if (!ReadHeader())
        return false;
    return !header.IsSolid() || Refuse(ZvStrings::Get(ZvStr::LoadSolidInSolid));
}

bool ZvNativeFile::Impl::CheckSections() {
    const struct {
        const char* name;
        uint64_t offset;
    } sections[] = {{"clients", header.clientsOffset},
                    {"settings", header.settingsOffset},
                    {"tables", header.tablesOffset}};
    const uint64_t end = desc->RecordEnd();
    for (const auto& section : sections)
        if (section.offset < kHeaderSize || section.offset >= end)
            return Refuse(XStringA::Format(ZvStrings::Get(ZvStr::LoadSectionOutside), section.name,
                                           static_cast<long long>(section.offset),
                                           static_cast<long long>(end))
                              .Str());
    return true;
}

bool ZvNativeFile::Impl::ReadBody() {
    // The second look at the settings leaves references to records alone in files from before this moment.
    const DateTime referencesByName = DateTime::FromUtc(2004, 11, 8, 13, 26, 23);
    const bool merging = options.merge != nullptr;
    bool good = ReadClients();
    if (good && !merging)
        good = ReadSettings(false);
    if (good && !aborted)
        good = ReadTables();
    if (good && !merging && !aborted && !cancelled)
        good = ReadSettings(drawing->FileDate() >= referencesByName);
    return good;
}

bool ZvNativeFile::Impl::ReadTables() {
    if (!desc->Seek(header.tablesOffset))
        return false;
    desc->heap = &drawing->EntityHeap();
    return Zv::Ok(drawing->TableTable()->NativeIn(*desc));
}
