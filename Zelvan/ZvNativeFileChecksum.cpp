#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/MD5.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

constexpr size_t kChunk = 4'194'304;
constexpr uint64_t kAllocationMargin = 65'536;
constexpr int kFirstCheckedVersion = 1013;

/// The position comes back whatever happens to the stream in between; so does the absence of an error.
class PositionGuard {
public:
    explicit PositionGuard(ZvCore::IFile& file)
        : m_file(file), m_position(file.Position()), m_hadError(file.Error()) {}
    ~PositionGuard() {
        if (!m_hadError)
            m_file.ClearError();
        m_file.Seek(m_position);
    }
    PositionGuard(const PositionGuard&) = delete;
    PositionGuard& operator=(const PositionGuard&) = delete;

private:
    ZvCore::IFile& m_file;
    uint64_t m_position;
    bool m_hadError;
};

enum class DigestResult { Good, ReadError, Cancelled };

/// MD5 of the bytes [0, length), the digest field of the header taken as zero.
DigestResult DigestOfStream(ZvCore::IFile& file, uint64_t length, ZvCore::IProgress* progress,
                            const char* what, ZvCore::Digest& digest) {
    static constexpr uint8_t kZeros[16] = {};
    ZvCore::MD5 md5;
    std::vector<uint8_t> buffer;
    if (!file.Seek(0))
        return DigestResult::ReadError;
    for (uint64_t at = 0; at < length;) {
        const size_t count = size_t(std::min<uint64_t>(kChunk, length - at));
        const uint8_t* bytes = file.View(at, count);
        if (!bytes) {
            buffer.resize(std::max(buffer.size(), count));
            if (!file.Seek(at) || file.Read(buffer.data(), count) != count)
                return DigestResult::ReadError;
            bytes = buffer.data();
        }
        if (at == 0) {
            // A chunk is longer than the header, or it is the whole stream.
            const size_t before = std::min(count, ZvNativeHeader::kDigestOffset);
            const size_t field = std::min<size_t>(count - before, sizeof kZeros);
            md5.Update(bytes, before);
            md5.Update(kZeros, field);
            md5.Update(bytes + before + field, count - before - field);
        } else {
            md5.Update(bytes, count);
        }
        at += count;
        if (progress && !progress->Step(what, at, length))
            return DigestResult::Cancelled;
    }
    digest = md5.Finish();
    return DigestResult::Good;
}

bool CanAllocate(uint64_t bytes) {
    if (bytes > uint64_t(SIZE_MAX / 2))
        return false;
    const std::unique_ptr<void, void (*)(void*)> block(std::malloc(size_t(bytes)), std::free);
    return block != nullptr;
}

bool ReadAnyHeader(ZvCore::IFile& file, ZvNativeHeader& header) {
    uint64_t size = 0;
    if (!file.Seek(0) || !file.ReadValue(size) || size > ZvNativeHeader::kLargestSize)
        return false;
    uint8_t bytes[ZvNativeHeader::kSize];
    const bool whole = file.Seek(0) && file.ReadPad(bytes, sizeof bytes, size);
    header.Parse(bytes);
    return whole;
}

} // namespace

bool ZvNativeFile::IsValidFile(ZvCore::IFile* file, bool checkChecksum, XStringW& reason) {
    bool cancelled = false;
    return Impl::IsValid(*file, checkChecksum, nullptr, reason, cancelled);
}

bool ZvNativeFile::Impl::IsValid(ZvCore::IFile& file, bool checkChecksum, ZvCore::IProgress* progress,
                                 XStringW& reason, bool& cancelled) {
    const PositionGuard guard(file);
    reason.Clear();
    uint64_t size = 0;
    if (file.Seek(0) && file.ReadValue(size) && size > ZvNativeHeader::kLargestSize)
        return false;
    ZvNativeHeader header;
    if (!ReadAnyHeader(file, header) || !header.HasMagic()) {
        reason =
            ZvStrings::GetW(file.Error() && file.Length() >= ZvNativeHeader::kSize ? ZvStr::LoadReadFailed
                                                                                   : ZvStr::LoadBadSignature);
        return false;
    }
    if (!checkChecksum || header.version < kFirstCheckedVersion || !header.HasDigest())
        return true;
    if (header.length < ZvNativeHeader::kSize || header.length > file.Length()) {
        reason = ZvStrings::GetW(ZvStr::LoadBadChecksum);
        return false;
    }
    if (!CanAllocate(header.length + kAllocationMargin)) {
        reason = ZvStrings::GetW(ZvStr::LoadNoMemory);
        ZvErrors::Report(ZvErrorCode::OutOfMemory, "During IsValidFile");
        return false;
    }
    ZvCore::Digest digest;
    const DigestResult result = DigestOfStream(file, header.length, progress, "Checking", digest);
    cancelled = result == DigestResult::Cancelled;
    if (result == DigestResult::Good && digest == header.digest)
        return true;
    if (result != DigestResult::Cancelled)
        reason = ZvStrings::GetW(result == DigestResult::ReadError ? ZvStr::LoadReadFailed
                                                                   : ZvStr::LoadBadChecksum);
    return false;
}

bool ZvNativeFile::Impl::CalculateChecksum() {
    ZvCore::IFile& file = Target();
    const uint64_t position = file.Position();
    header.digest = {};
    if (!WriteHeader()) {
        api.AddError(int(ZvErrorCode::NoDefaultLayer), "Writing global checksum");
        return false;
    }
    const DigestResult result =
        DigestOfStream(file, file.Length(), options.progress, "Checksum", header.digest);
    if (result == DigestResult::Cancelled) {
        cancelled = true;
        return false;
    }
    if (result != DigestResult::Good) {
        header.digest = {};
        api.AddError(int(ZvErrorCode::Checksum), "Creating global checksum.");
        return false;
    }
    return file.Seek(position);
}
