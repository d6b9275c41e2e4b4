#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Codec.h"
#include "ZvCore/ZvErrors.h"
#include <cstring>

ZvNativeFile::ZvNativeFile(ZvNativeOptions options)
    : m_impl(std::make_unique<Impl>(*this, std::move(options))) {}

ZvNativeFile::~ZvNativeFile() = default;

ZvCore::IFile& ZvNativeFile::File() {
    return m_impl->Target();
}

ZvNativeDesc& ZvNativeFile::Desc() {
    return *m_impl->desc;
}

const ZvNativeOptions& ZvNativeFile::Options() const {
    return m_impl->options;
}

void ZvNativeFile::GetErrors(IOErrorSet& errors) const {
    errors.AddAll(m_impl->errors);
}

void ZvNativeFile::AddError(int code, std::string text) {
    ZvErrors::Report(code, text);
    m_impl->errors.Add(code, std::move(text));
}

void ZvNativeFile::Abort() {
    m_impl->aborted = true;
}

bool ZvNativeFile::IsAborted() const {
    return m_impl->aborted;
}

int ZvNativeFile::MinimumReaderVersion(int version) {
    struct Range {
        int first, last, minimum;
    };
    static constexpr Range kRanges[] = {{1070, 1075, 1070}, {1067, 1069, 1067}, {1066, 1066, 1064},
                                        {1065, 1065, 1064}, {1062, 1062, 1062}, {1061, 1061, 1061}};
    for (const Range& range : kRanges)
        if (version >= range.first && version <= range.last)
            return range.minimum;
    return version;
}

void ZvNativeFile::GetCompressionFormat(int level, uint32_t& method, int& formatLevel) {
    method = ZvNativeBlockHead::Zlib;
    formatLevel = level;
}

bool ZvNativeFile::Compress(uint32_t method, int level, const std::vector<uint8_t>& source,
                            std::vector<uint8_t>& target) {
    std::string why;
    return method == ZvNativeBlockHead::Zlib &&
           ZvCore::Codec::Deflate(level, source.data(), source.size(), target, why);
}

bool ZvNativeFile::Decompress(uint32_t method, const std::vector<uint8_t>& source,
                              std::vector<uint8_t>& target, size_t expected) {
    if (method != ZvNativeBlockHead::Zlib || expected / ZvCore::Codec::kMaxExpansion > source.size())
        return false;
    std::string why;
    target.resize(expected);
    return ZvCore::Codec::Inflate(source.data(), source.size(), target.data(), expected, why);
}

void ZvNativeFile::Attach(ZvDrawing& drawing, ZvCore::IFile& stream) {
    m_impl->Begin(drawing, stream);
    for (const ZvServer::Client* client : drawing.Server()->Clients()) {
        ZvNativeDesc::Client own{client->name, client->guid, client->code, client->code, {}};
        m_impl->desc->clients[client->code] = std::make_shared<ZvNativeDesc::Client>(std::move(own));
    }
}

// --- framing -------------------------------------------------------------------------------------------------------------

uint64_t ZvNativeFile::StoreRecordStart() {
    return m_impl->desc->Position();
}

void ZvNativeFile::WriteRecordLength32(uint64_t start) {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t at = desc.Position();
    desc.Seek(start);
    desc.WriteValue(uint32_t(at - start));
    desc.Seek(at);
}

void ZvNativeFile::WriteRecordLength64(uint64_t start) {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t at = desc.Position();
    desc.Seek(start);
    desc.WriteValue(at - start);
    desc.Seek(at);
}

// --- the drawing that is read or written for -------------------------------------------------------------------------------

ZvNativeFile::DrawingScope::DrawingScope(ZvNativeFile& file, ZvDrawing& drawing)
    : m_file(file), m_former(file.m_impl->desc) {
    Impl& impl = *file.m_impl;
    auto desc = std::make_unique<ZvNativeDesc>(file, drawing);
    desc->version = m_former->version;
    desc->flags = m_former->flags;
    desc->entityHeadSize = m_former->entityHeadSize;
    desc->file = m_former->file;
    desc->memory = m_former->memory;
    desc->recordEnd = m_former->recordEnd;
    desc->clients = m_former->clients;
    desc->heap = m_former->heap ? &drawing.EntityHeap() : nullptr;
    impl.desc = desc.get();
    impl.descs.push_back(std::move(desc));
}

ZvNativeFile::DrawingScope::~DrawingScope() {
    Impl& impl = *m_file.m_impl;
    for (const auto& [client, count] : impl.desc->recordsWritten)
        m_former->recordsWritten[client] += count;
    m_former->clients.insert(impl.desc->clients.begin(), impl.desc->clients.end());
    impl.desc = m_former;
    impl.Retarget();
}

ZvNativeDesc& ZvNativeFile::DrawingScope::Desc() {
    return *m_file.m_impl->desc;
}

// --- inside ------------------------------------------------------------------------------------------------------------------

void ZvNativeFile::Impl::Begin(ZvDrawing& into, ZvCore::IFile& file) {
    drawing = &into;
    caller = &file;
    descs.push_back(std::make_unique<ZvNativeDesc>(api, into));
    desc = descs.back().get();
    Retarget();
}

void ZvNativeFile::Impl::Retarget() {
    if (!stack.empty()) {
        desc->memory = stack.back().content.get();
        desc->file = desc->memory;
    } else {
        desc->memory = callerView ? callerView.get() : dynamic_cast<ZvCore::MemFile*>(caller);
        desc->file = callerView ? callerView.get() : caller;
    }
}

void ZvNativeFile::Impl::Warn(int code, std::string text) {
    errors.Add(code, std::move(text), IOErrorSet::Severity::Warning);
}

bool ZvNativeFile::Impl::Unreadable(const char* what, uint64_t at, const std::string& why) {
    api.AddError(
        int(ZvErrorCode::BlockUnreadable),
        XStringA::Format(ZvStrings::Get(ZvStr::LoadUnreadable), what, static_cast<long long>(at), why.c_str())
            .Str());
    aborted = true;
    return false;
}

bool ZvNativeFile::Impl::Step(const char* what, uint64_t done, uint64_t total) {
    if (!cancelled && options.progress && !options.progress->Step(what, done, total))
        cancelled = true;
    return !cancelled;
}

Zv::Status ZvNativeFile::Impl::Outcome(bool ok) const {
    return cancelled ? Zv::Status::Cancelled : Zv::FromBool(ok && !aborted);
}
