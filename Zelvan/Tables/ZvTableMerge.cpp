#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/ZvErrors.h"

// Records that come from another drawing.

ZvMergeFate ZvTable::DecidePreFate(const ZvTableRecord&, const ZvMergeProfile& profile) const {
    return profile.For(GetFullCode()).takeTable ? ZvMergeFate::Insert : ZvMergeFate::Skip;
}

ZvMergeFate ZvTable::DecideGuidConflictFate(const ZvTableRecord&, const ZvTableRecord&,
                                            const ZvMergeProfile& profile) const {
    return profile.For(GetFullCode()).guidConflict;
}

ZvMergeFate ZvTable::DecideNameConflictFate(const ZvTableRecord& incoming, const ZvTableRecord& existing,
                                            const ZvMergeProfile& profile) const {
    // What the program made for itself is the same in every drawing.
    if (incoming.IsInternal() && existing.IsInternal())
        return ZvMergeFate::UseExisting;
    return profile.For(GetFullCode()).nameConflict;
}

ZvMergeFate ZvTable::DecideFate(const ZvTableRecord& incoming, ZvTableRecord*& existing,
                                const ZvMergeProfile& profile) {
    ZvMergeFate fate = DecidePreFate(incoming, profile);
    existing = GetByGuid(incoming.GetGuid());
    if (fate == ZvMergeFate::Insert && existing) {
        fate = DecideGuidConflictFate(incoming, *existing, profile);
    } else if (!existing) {
        existing = GetByName(incoming.GetName());
        if (fate == ZvMergeFate::Insert && existing)
            fate = DecideNameConflictFate(incoming, *existing, profile);
    }
    for (IZvMergeHandler* handler : m_mergeHandlers)
        if (handler->DecideFate(*this, incoming, existing, fate))
            break;
    if (!existing && (fate == ZvMergeFate::UseExisting || fate == ZvMergeFate::Replace))
        fate = ZvMergeFate::Insert;
    return fate;
}

ZvMergeResult ZvTable::Merge(std::unique_ptr<ZvTableRecord> incoming, const ZvMergeProfile& profile) {
    if (!incoming || incoming->GetFullCode() != GetFullCode())
        return {};
    ZvTableRecord* existing = nullptr;
    const ZvMergeFate fate = DecideFate(*incoming, existing, profile);
    if (fate == ZvMergeFate::Skip)
        return {};
    if (fate == ZvMergeFate::Replace)
        existing->Merge(*incoming);
    if (fate == ZvMergeFate::Replace || fate == ZvMergeFate::UseExisting)
        return {existing, fate};

    incoming->SetTableId(0);
    if (GetByGuid(incoming->GetGuid()))
        incoming->SetGuidFinal(Guid::New());
    if ((incoming->GetName().IsEmpty() || !IsFreeName(incoming->GetName())) &&
        !AssignDefaultName(*incoming, incoming->GetName()))
        return {};
    ZvTableRecord* record = incoming.get();
    if (!Zv::Ok(Insert(std::move(incoming))))
        return {};
    return {record, fate};
}

void ZvTable::AddCustomMergeHandler(IZvMergeHandler* handler) {
    if (handler)
        m_mergeHandlers.push_back(handler);
}

void ZvTable::NotifyMergeHandlersOfRead(int fileIndex, ZvTableRecord* result) {
    for (IZvMergeHandler* handler : m_mergeHandlers)
        handler->OnRecordRead(*this, fileIndex, result);
}

Zv::Status ZvTable::LoadFromFile(const std::string& path, const ZvMergeProfile& profile) {
    if (!m_parent)
        return Zv::Status::Failure;
    const auto refuse = [&](const std::string& why) {
        ZvErrors::Report(
            ZvErrorCode::BlockUnreadable,
            XStringA::Format(ZvStrings::Get(ZvStr::TableFileUnreadable), path.c_str(), why.c_str()).View());
        return Zv::Status::Failure;
    };
    std::string why;
    const auto disk = ZvCore::DiskFile::Open(std::filesystem::path(XStringW::FromUtf8(path).Str()),
                                             ZvCore::DiskFile::Mode::Read, why);
    if (!disk)
        return refuse(why);
    ZvDrawingSetup setup;
    setup.createDefaults = false;
    ZvDrawing source(setup);
    ZvNativeOptions options;
    options.fileName = path;
    ZvNativeFile file(options);
    if (!Zv::Ok(file.ReadFile(&source, disk.get()))) {
        IOErrorSet errors;
        file.GetErrors(errors);
        return refuse(errors.ToString());
    }
    const ZvTable* from = source.TableTable()->GetByFullCode(GetFullCode());
    ZvUsageTable wanted;
    for (int i = 0; from && i < from->Count(); ++i)
        if (!from->Get(i)->IsInternal())
            wanted.Use(GetFullCode(), i);
    ZvNativeFile unused;
    ZvNativeDesc desc(unused, *m_parent);
    return m_parent->TableTable()->CopyRecords(*source.TableTable(), wanted, profile, desc);
}
