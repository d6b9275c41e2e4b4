#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <iterator>

namespace fs = std::filesystem;

namespace {

/// From so many files on the user is asked.
constexpr size_t kManyFiles = 5;

const char16_t* const kRecordings[] = {u"-video", u".zelvid"};
const char16_t* const kImages[] = {u".png", u".jpg", u".jpeg", u".tif", u".tiff",
                                   u".bmp", u".gif", u".jp2",  u".ecw", u".sid"};

template <size_t N>
bool EndsInOneOf(const fs::path& file, const char16_t* const (&endings)[N]) {
    const XStringW name = XStringW::FromUtf8(ZvPlatform::PathToUtf8(file.filename())).ToLower();
    return std::any_of(std::begin(endings), std::end(endings),
                       [&](const char16_t* ending) { return name.EndsWith(ending); });
}

} // namespace

int ZvDrawingIO::GenericFileLoader(const std::vector<fs::path>& files,
                                   const std::function<Zv::Status(const fs::path&)>& open) {
    if (files.size() >= kManyFiles && !m_drawing.Dialogs()->AskOpenMany(int(files.size())))
        return 0;
    bool first = true;
    const auto intoThis = [&](const fs::path& file) {
        const Zv::Status status = LoadFile(file, first ? 0 : ZvIOFlag::Merge | ZvIOFlag::KeepName);
        first = first && !Zv::Ok(status);
        return status;
    };
    int opened = 0;
    for (const fs::path& file : files)
        opened += OpenOne(file, open ? open : intoThis);
    return opened;
}

bool ZvDrawingIO::OpenOne(const fs::path& file, const std::function<Zv::Status(const fs::path&)>& open) {
    const std::string name = ZvPlatform::PathToUtf8(file);
    IZvHost* host = m_drawing.Host();
    if (EndsInOneOf(file, kRecordings)) {
        IZvCommandRunner* runner = m_drawing.CmdProcessor();
        if (runner && runner->ExecuteLine(XStringW::FromUtf8("ScreenRecord \"" + name + "\"")))
            return true;
        IOErrorSet errors;
        errors.Add(0, XStringA::Format(ZvStrings::Get(ZvStr::NoScreenRecorder), name.c_str()).Str());
        ShowLoadErrors(errors);
        return false;
    }
    if (EndsInOneOf(file, kImages)) {
        const XStringW text = XStringW::Format(ZvStrings::Get(ZvStr::IgnoringBitmap), name.c_str());
        if (host)
            host->Print(text);
        else
            ZvLog::Write(ZvLog::Level::Warning, text.ToUtf8());
        return false;
    }
    return Zv::Ok(open(file));
}

fs::path ZvDrawingIO::LocateMedia(const fs::path& media) {
    const ZvCore::IFileSystem::Info there = m_files->Look(media);
    return there.exists && !there.isFolder ? media : m_drawing.Dialogs()->AskMedia(media);
}

/// Asks where linked images are that are not at their paths (relative ones: from the file's folder), until one is given up.
void ZvDrawingIO::LocateLinkedImages(const fs::path& file) {
    ZvBitmapTable& bitmaps = *m_drawing.BitmapTable();
    for (int i = 0; i < bitmaps.Count(); ++i) {
        ZvBitmapRec& image = *bitmaps.Get(i);
        if (!image.IsLinked() || image.IsErased() || !image.GetBytes().empty())
            continue;
        fs::path linked = m_files->FolderOf(file) / ZvPlatform::PathFromUtf8(image.GetPath().ToUtf8());
        linked = linked.lexically_normal();
        const fs::path found = LocateMedia(linked);
        if (found.empty())
            return;
        if (found == linked)
            continue;
        image.SetLinked(XStringW::FromUtf8(ZvPlatform::PathToUtf8(found)), image.IsEmbedOnSave());
        SetDrawingDirty(true);
    }
}
