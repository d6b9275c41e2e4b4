#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/ZvErrors.h"
#include <system_error>

// Reading a large file before it is known to be sound. Digesting it takes as long as reading it, so both go on at once, on two
// threads. When the digests fit, the outcome is that of reading in order. When anything does not fit, what was read is forgotten
// and the file is read in order: questions, refusals and partial loads are those of a file that was examined first.

namespace {

constexpr uint64_t kSmallestFile = uint64_t(4) << 20;
constexpr int kFirstVersion = 1050; // older files differ in too much to be worth it

} // namespace

bool ZvNativeFile::Impl::MayReadAhead() {
    if (!options.threads || !options.verifyChecksum || options.merge || !callerView ||
        callerView->Length() < kSmallestFile || drawing->NameTable().Count() > 0)
        return false;
    XStringW reason;
    bool stopped = false;
    if (!IsValid(*callerView, false, nullptr, reason, stopped))
        return false;
    ZvNativeHeader found;
    found.Parse(callerView->Data());
    return found.size == kHeaderSize && found.version >= kFirstVersion && found.version <= kVersion &&
           found.HasDigest() && !found.IsSolid() && found.length == callerView->Length();
}

/// False when the file must be read in order; `good` then means nothing.
bool ZvNativeFile::Impl::ReadAhead(bool& good) {
    ZvCore::BinXmlNode before("root");
    drawing->StoreSettings(before);
    const DateTime date = drawing->FileDate();
    try {
        digester = std::make_unique<ZvNativeDigester>(callerView->Data(), callerView->Length());
    } catch (const std::system_error&) {
        return false; // no thread to be had
    }
    std::vector<ZvErrors::Entry> reported;
    bool fits = false;
    {
        const ZvErrorCapture capture; // told only when they turn out to be true
        good = ReadSections();
        const ZvNativeDigester::Verdict verdict = digester->Finish(cancelled ? nullptr : options.progress);
        cancelled = cancelled || verdict.cancelled;
        fits = cancelled || (verdict.blocksFit && verdict.whole == header.digest);
        reported = capture.Entries();
    }
    digester.reset();
    if (fits) {
        for (const ZvErrors::Entry& entry : reported)
            ZvErrors::Report(entry.code, entry.context);
        return true;
    }
    ForgetRead();
    drawing->Reset();
    drawing->LoadSettings(before, false);
    drawing->LoadSettings(before, true);
    drawing->SetFileDate(date);
    return false;
}

/// Back to the state behind Begin.
void ZvNativeFile::Impl::ForgetRead() {
    stack.clear();
    descs.clear();
    errors.Clear();
    damaged.clear();
    header = {};
    recordsLost = 0;
    aborted = touched = solidOpen = false;
    listDepth = 0;
    Begin(*drawing, *caller);
}
