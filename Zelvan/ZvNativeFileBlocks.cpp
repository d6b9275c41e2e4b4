#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvCore/XString.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

namespace {

constexpr uint64_t kDefaultBudget = 524'288'000;
constexpr unsigned kBusyMemoryLoad = 81; // per cent
/// From this version on a block whose digest does not fit is an error.
constexpr int kDigestRuleVersion = 1015;
/// Stored bytes from which on the verification of a block is worth handing to another thread.
constexpr uint64_t kSmallestDeferred = 65'536;

} // namespace

uint64_t ZvNativeFile::Impl::BlockBudget() {
    if (!budget) {
        ZvPlatform::MemoryStatus status;
        budget = kDefaultBudget;
        if (ZvPlatform::GetMemoryStatus(status) && status.physicalBytes)
            budget = status.physicalBytes / (status.loadPercent < kBusyMemoryLoad ? 4 : 20);
    }
    return budget;
}

void ZvNativeFile::Impl::Push(std::unique_ptr<ZvCore::MemFile> content) {
    stack.push_back({std::move(content), desc->recordEnd});
    desc->recordEnd = ~uint64_t(0);
    Retarget();
}

ZvNativeFile::Impl::Block ZvNativeFile::Impl::Pop() {
    Block block = std::move(stack.back());
    stack.pop_back();
    Retarget();
    desc->recordEnd = block.formerRecordEnd;
    return block;
}

// --- writing ---------------------------------------------------------------------------------------------------------------

void ZvNativeFile::StartCompressBlock() {
    auto content = std::make_unique<ZvCore::MemFile>();
    content->SetBudget(m_impl->BlockBudget());
    m_impl->Push(std::move(content));
}

bool ZvNativeFile::EndCompressBlock(bool forceDigest) {
    Impl& impl = *m_impl;
    if (impl.stack.empty()) {
        AddError(int(ZvErrorCode::BlockStack), "EndCompressBlock stack underflow");
        return false;
    }
    const bool outermost = impl.stack.size() == 1;
    Impl::Block block = impl.Pop();
    if (block.content->Error())
        return impl.BlockOverflow(*block.content);
    const int level = outermost ? std::min(impl.options.compressionLevel, 9) : 0;
    return impl.WritePacked(ZvNativeBlock::Pack(std::move(block.content), level,
                                                outermost && (impl.options.blockDigests || forceDigest)));
}

bool ZvNativeFile::Impl::BlockOverflow(const ZvCore::MemFile& content) {
    aborted = true;
    if (content.Error())
        api.AddError(
            int(ZvErrorCode::OutOfMemory),
            XStringA::Format(ZvStrings::Get(ZvStr::SaveNoMemory), content.ErrorText().c_str()).Str());
    return false;
}

bool ZvNativeFile::Impl::WritePacked(const ZvNativeBlock::Packed& packed) {
    if (packed.compressFailed) {
        const std::string text =
            XStringA::Format("Error occured attempting to compress a block of size %lld. "
                             "Writing as uncompressed.",
                             static_cast<long long>(packed.head.length))
                .Str();
        ZvLog::Write(ZvLog::Level::Error, text);
        api.AddError(int(ZvErrorCode::BlockStack), text);
    }
    if (packed.head.method == ZvNativeBlockHead::Zlib)
        ZvLog::Printf(ZvLog::Level::Trace, "Compressed %lld to %lld\n",
                      static_cast<long long>(packed.head.length), static_cast<long long>(packed.head.stored));
    uint8_t head[ZvNativeBlockHead::kSize];
    packed.head.Store(head);
    return desc->Write(head, sizeof head) && desc->Write(packed.Bytes(), size_t(packed.head.stored));
}

// --- reading ---------------------------------------------------------------------------------------------------------------

std::string ZvNativeFile::Impl::FetchBlock(ZvNativeBlockHead& head, const uint8_t*& stored,
                                           std::vector<uint8_t>& hold) {
    uint8_t bytes[ZvNativeBlockHead::kSize];
    if (!desc->Read(bytes, sizeof bytes))
        return "the file ends in its head";
    head.Parse(bytes);
    const std::string wrong = ZvNativeBlock::CheckHead(head, desc->RecordRemaining(), BlockBudget());
    if (!wrong.empty())
        return wrong;
    const uint64_t content = desc->Position();
    stored = desc->file->View(content, size_t(head.stored));
    if (stored) {
        desc->Seek(content + head.stored);
        return {};
    }
    hold.resize(size_t(head.stored));
    if (!desc->Read(hold.data(), hold.size()))
        return desc->file->ErrorText();
    stored = hold.data();
    return {};
}

bool ZvNativeFile::Impl::MustVerify(const ZvNativeBlockHead& head, const uint8_t* stored) {
    if (!options.blockDigests)
        return false;
    if (!digester || !stack.empty() || head.stored < kSmallestDeferred || !head.HasDigest())
        return true;
    digester->Expect(uint64_t(stored - callerView->Data()), head.stored, head.digest);
    return false;
}

bool ZvNativeFile::Impl::Accept(ZvNativeBlock::Opened opened, uint64_t at) {
    if (opened.result == ZvNativeBlock::Result::BadDigest && desc->version >= kDigestRuleVersion) {
        api.AddError(int(ZvErrorCode::BlockDigest), "MD5 of compressed block failed.");
        aborted = true;
        return false;
    }
    if (!opened.content)
        return Unreadable("block", at, opened.why);
    Push(std::move(opened.content));
    return true;
}

bool ZvNativeFile::StartDecompressBlock() {
    ZvNativeBlockHead head;
    const uint8_t* stored = nullptr;
    std::vector<uint8_t> hold;
    const uint64_t at = m_impl->desc->Position();
    if (m_impl->stack.empty())
        m_impl->outerBlockAt = at;
    const std::string wrong = m_impl->FetchBlock(head, stored, hold);
    if (!wrong.empty())
        return m_impl->Unreadable("block", at, wrong);
    return m_impl->Accept(ZvNativeBlock::Open(head, stored, std::move(hold), m_impl->options.blockDigests),
                          at);
}

bool ZvNativeFile::SkipCompressedBlock() {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t at = desc.Position();
    uint8_t bytes[ZvNativeBlockHead::kSize];
    ZvNativeBlockHead head;
    if (!desc.Read(bytes, sizeof bytes))
        return m_impl->Unreadable("block", at, "the file ends in its head");
    head.Parse(bytes);
    if (head.stored > desc.RecordRemaining())
        return m_impl->Unreadable("block", at, "its stated length goes past the end");
    return desc.Seek(desc.Position() + head.stored);
}

void ZvNativeFile::EndDecompressBlock() {
    if (m_impl->stack.empty()) {
        ZvLog::Write(ZvLog::Level::Error, "EndDecompressBlock stack underflow.");
        AddError(int(ZvErrorCode::BlockStack), "EndDecompressBlock stack underflow.");
        return;
    }
    m_impl->Pop();
}
