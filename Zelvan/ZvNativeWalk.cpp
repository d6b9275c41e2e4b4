#include "Zelvan/ZvNativeWalk.h"
#include "Zelvan/ZvNativeBlockPipe.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvServer.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Guid.h"
#include "ZvCore/MD5.h"
#include <algorithm>
#include <cstring>

namespace {

constexpr uint64_t kDigestChunk = uint64_t(4) << 20;
/// Content of one compressed block that a walk is willing to inflate.
constexpr uint64_t kBlockBudget = uint64_t(1) << 34;

const char* const kEverything = "the whole drawing";

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

bool IsZero(const ZvCore::Digest& digest) {
    return digest == ZvCore::Digest{};
}

std::string DigestText(const ZvCore::Digest& digest) {
    return IsZero(digest) ? "none" : ZvCore::MD5::ToHex(digest);
}

} // namespace

ZvNativeWalk::~ZvNativeWalk() = default;

// --- telling ---------------------------------------------------------------------------------------------------------------

std::string ZvNativeWalk::Path() const {
    std::string path;
    for (const Step& step : m_path)
        path += (path.empty() ? "" : "/") + step.name + (step.number ? std::to_string(*step.number) : "");
    return path;
}

void ZvNativeWalk::Tell(const ZvNativeStream& stream, uint64_t at, uint64_t length, const char* label,
                        const std::string& value) {
    if (WantsFields())
        m_visitor.Field(stream, at, length, int(m_path.size()), label, value);
}

void ZvNativeWalk::Tell(const ZvNativeCursor& from, uint64_t length, const char* label,
                        const std::string& value) {
    Tell(from.Stream(), from.At(), length, label, value);
}

void ZvNativeWalk::Problem(const ZvNativeStream& stream, uint64_t at, const std::string& what,
                           const std::string& loss) {
    m_visitor.Problem(stream, at, int(m_path.size()), Path(), what, loss);
}

void ZvNativeWalk::Problem(const ZvNativeCursor& at, const std::string& what, const std::string& loss) {
    Problem(at.Stream(), at.At(), what, loss);
}

bool ZvNativeWalk::String(ZvNativeCursor& cursor, const char* label, XStringW* text) {
    const ZvNativeCursor before = cursor;
    ZvNativeCursor at = cursor;
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!at.Read(encoding) || !at.Read(length) || encoding > 1 || length < 0 ||
        uint64_t(length) << encoding > at.Left())
        return false;
    XStringW value;
    if (text || WantsFields()) {
        if (encoding == 0) {
            value = ZvNativeFile::ReadCharString(reinterpret_cast<const char*>(at.Here()), size_t(length));
        } else if (length > 0) { // at any address
            value.Str().resize(size_t(length));
            std::memcpy(value.Str().data(), at.Here(), size_t(length) * sizeof(char16_t));
        }
        if (text)
            *text = value;
    }
    at.Skip(uint64_t(length) << encoding);
    Tell(before, at.At() - before.At(), label, Quoted(value.ToUtf8()));
    cursor = at;
    return true;
}

// --- file and header ---------------------------------------------------------------------------------------------------------

bool ZvNativeWalk::TakeFile(ZvCore::IFile& file) {
    const uint64_t length = file.Length();
    m_file.size = length;
    m_file.bytes = file.View(0, size_t(length));
    if (m_file.bytes)
        return true;
    const uint64_t position = file.Position();
    m_copy = std::make_unique<ZvCore::MemFile>();
    uint8_t* bytes = m_copy->Expand(size_t(length));
    const bool read = bytes && file.Seek(0) && file.ReadChunked(bytes, length, size_t(kDigestChunk));
    file.Seek(position);
    m_file.bytes = bytes;
    return read;
}

bool ZvNativeWalk::Run(ZvCore::IFile& file) {
    if (!TakeFile(file)) {
        Problem(m_file, 0, "the file cannot be read: " + (m_copy ? file.ErrorText() : std::string()),
                kEverything);
        return false;
    }
    if (!FileHeader(m_file))
        return false;
    m_header = m_inner;
    if (m_header.version > ZvNativeFile::kVersion && m_header.minimumReader > ZvNativeFile::kVersion)
        Problem(m_file, 92, "the file needs format " + std::to_string(m_header.minimumReader) + " to be read",
                kEverything);
    CheckFileDigest(m_file);
    if (m_cancelled)
        return true;
    if (m_header.IsSolid())
        SolidBody(m_file);
    else
        Sections(m_file);
    return true;
}

void ZvNativeWalk::Assume(const ZvNativeHeader& header,
                          const std::map<uint16_t, bool>& clientsAndWhetherBuiltIn) {
    m_header = m_inner = header;
    m_version = header.version;
    for (const auto& [id, builtIn] : clientsAndWhetherBuiltIn)
        m_clients[id].isBuiltIn = builtIn;
}

bool ZvNativeWalk::FileHeader(const ZvNativeStream& stream) {
    const Level level(*this, "header");
    uint8_t bytes[ZvNativeHeader::kSize] = {};
    uint64_t size = 0;
    ZvNativeCursor cursor(stream, 0, stream.size);
    (void)cursor.Read(size);
    std::memcpy(bytes, stream.bytes, size_t(std::min<uint64_t>(stream.size, sizeof bytes)));
    m_inner.Parse(bytes);
    if (m_inner.HasMagic() && size > ZvNativeHeader::kLargestSize) {
        Problem(stream, 0, "the header size " + std::to_string(size) + " cannot be true", kEverything);
        return false;
    }
    if (m_inner.HasMagic() && size > stream.size) {
        Problem(stream, stream.size,
                "the stream ends in its header, after " + std::to_string(stream.size) + " of " +
                    std::to_string(size) + " bytes",
                kEverything);
        return false;
    }
    if (size < sizeof bytes) {
        std::memset(bytes + size, 0, size_t(sizeof bytes - size));
        m_inner.Parse(bytes);
    }
    if (!m_inner.HasMagic()) {
        Problem(stream, 8, "the signature is not that of a drawing file", kEverything);
        return false;
    }
    m_version = m_inner.version;
    const ZvNativeHeader& h = m_inner;
    Tell(stream, 0, 8, "header size", std::to_string(h.size));
    Tell(stream, 8, 8, "signature", Quoted("zvdfzvd"));
    Tell(stream, 16, 4, "format version", std::to_string(h.version));
    Tell(stream, 20, 8, "stream length", std::to_string(h.length));
    Tell(stream, 28, 4, "entity record head size", std::to_string(h.entityHeadSize));
    Tell(stream, 32, 4, "client records", std::to_string(h.clientCount));
    Tell(stream, 36, 8, "clients section at", std::to_string(h.clientsOffset));
    Tell(stream, 44, 8, "tables section at", std::to_string(h.tablesOffset));
    Tell(stream, 52, 8, "settings block at", std::to_string(h.settingsOffset));
    Tell(stream, 60, 16, "digest", DigestText(h.digest));
    Tell(stream, 76, 8, "flags", std::to_string(h.flags));
    Tell(stream, 84, 8, "solid block at", std::to_string(h.solidOffset));
    Tell(stream, 92, 4, "minimum reader version", std::to_string(h.minimumReader));
    Tell(stream, 96, 8, "written by the program of", DateTime{h.buildStamp}.ToString().ToUtf8());
    if (h.entityHeadSize < 12 || h.entityHeadSize > 4096)
        Problem(stream, 28,
                "the entity record head size " + std::to_string(h.entityHeadSize) + " is not in 12..4096",
                kEverything);
    return true;
}

void ZvNativeWalk::CheckFileDigest(const ZvNativeStream& stream) {
    if (m_inner.length != stream.size && m_inner.size >= ZvNativeHeader::kSize)
        Problem(stream, 20,
                "the stated length " + std::to_string(m_inner.length) + " is not that of the stream, " +
                    std::to_string(stream.size),
                m_inner.length > stream.size ? "what stood behind the end" : "nothing, bytes were appended");
    if (!m_options.digests || !m_inner.HasDigest() || m_inner.length > stream.size ||
        m_inner.length < ZvNativeHeader::kSize)
        return;
    static constexpr uint8_t zeros[16] = {};
    ZvCore::MD5 md5;
    md5.Update(stream.bytes, ZvNativeHeader::kDigestOffset);
    md5.Update(zeros, sizeof zeros);
    for (uint64_t at = ZvNativeHeader::kDigestOffset + sizeof zeros; at < m_inner.length;) {
        const uint64_t count = std::min(kDigestChunk, m_inner.length - at);
        md5.Update(stream.bytes + at, size_t(count));
        at += count;
        if (m_options.progress && !m_options.progress->Step("Checking", at, m_inner.length)) {
            m_cancelled = true;
            return;
        }
    }
    if (md5.Finish() != m_inner.digest)
        Problem(stream, 60, "the digest does not fit the bytes: some of them changed since they were written",
                "programs refuse to load the file unless told to skip the checksum");
}

void ZvNativeWalk::SolidBody(const ZvNativeStream& stream) {
    if (!Offset(stream, 84, "body", m_inner.solidOffset))
        return;
    ZvNativeCursor cursor(stream, m_inner.solidOffset, stream.size);
    const Level level(*this, "body");
    const ZvNativeStream* body = OpenBlock(cursor, "body block", kEverything);
    if (!body)
        return;
    if (FileHeader(*body)) {
        if (m_inner.IsSolid())
            Problem(*body, 76, "the body is said to hold a compressed body again", kEverything);
        else {
            CheckFileDigest(*body);
            Sections(*body);
        }
    }
    CloseBlock();
}

bool ZvNativeWalk::Offset(const ZvNativeStream& stream, uint64_t field, const char* name, uint64_t offset) {
    if (offset >= ZvNativeHeader::kSize && offset < stream.size)
        return true;
    Problem(stream, field,
            std::string("the ") + name + " section is said to begin at " + std::to_string(offset) +
                ", outside of the stream",
            kEverything);
    return false;
}

void ZvNativeWalk::Sections(const ZvNativeStream& stream) {
    if (m_cancelled || !Offset(stream, 52, "settings", m_inner.settingsOffset) ||
        !Offset(stream, 44, "tables", m_inner.tablesOffset) ||
        !Offset(stream, 36, "clients", m_inner.clientsOffset))
        return;
    // The clients come last in the file but are needed first: what an entity is depends on them.
    const bool telling = !m_quiet;
    m_quiet = true;
    Clients({stream, m_inner.clientsOffset, stream.size});
    m_quiet = !telling;
    Settings({stream, m_inner.settingsOffset, stream.size});
    Tables({stream, m_inner.tablesOffset, stream.size});
    if (!m_cancelled && !m_visitor.Stopped())
        Summary(m_inner.clientsOffset, stream);
    if (m_visitor.WantsFields())
        Clients({stream, m_inner.clientsOffset, stream.size});
}

/// Stated against seen, once all records were met.
void ZvNativeWalk::Summary(uint64_t at, const ZvNativeStream& stream) {
    const Level level(*this, "clients");
    for (const auto& [id, client] : m_clients)
        if (client.stated != client.seen)
            Problem(stream, at,
                    "client " + std::to_string(id) + " is said to have written " +
                        std::to_string(client.stated) + " records, there are " + std::to_string(client.seen),
                    "nothing by itself; records may be missing");
}

// --- blocks ----------------------------------------------------------------------------------------------------------------

const ZvNativeStream* ZvNativeWalk::OpenBlock(ZvNativeCursor& cursor, const char* label, const char* loss) {
    const ZvNativeCursor start = cursor;
    uint8_t bytes[ZvNativeBlockHead::kSize];
    if (cursor.Left() < sizeof bytes) {
        Problem(cursor, std::string(label) + ": the stream ends in the block's head", loss);
        cursor.SkipAll();
        return nullptr;
    }
    std::memcpy(bytes, cursor.Here(), sizeof bytes);
    cursor.Skip(sizeof bytes);
    ZvNativeBlockHead head;
    head.Parse(bytes);
    m_visitor.Block();
    if (WantsFields())
        Tell(start, sizeof bytes + head.stored, label,
             "method " + std::to_string(head.method) + ", " + std::to_string(head.length) + " bytes in " +
                 std::to_string(head.stored) + ", digest " + DigestText(head.digest));
    const std::string wrong = ZvNativeBlock::CheckHead(head, cursor.Left(), kBlockBudget);
    if (!wrong.empty()) {
        Problem(start, std::string(label) + ": " + wrong, loss);
        cursor.SkipAll();
        return nullptr;
    }
    ZvNativeBlock::Opened opened = ZvNativeBlock::Open(head, cursor.Here(), {}, m_options.digests);
    cursor.Skip(head.stored);
    if (opened.result == ZvNativeBlock::Result::BadDigest)
        Problem(start, std::string(label) + ": the digest does not fit the bytes", loss);
    if (!opened.content) {
        Problem(start, std::string(label) + ": " + opened.why, loss);
        return nullptr;
    }
    auto stream = std::make_unique<ZvNativeStream>();
    stream->bytes = opened.content->Data();
    stream->size = opened.content->Length();
    stream->number = ++m_streams;
    stream->inBlock = true;
    stream->fileOffset = start.Stream().inBlock ? start.Stream().fileOffset : start.At();
    m_contents.push_back(std::move(opened.content));
    m_open.push_back(std::move(stream));
    return m_open.back().get();
}

void ZvNativeWalk::CloseBlock() {
    m_open.pop_back();
    m_contents.pop_back();
}

// --- settings --------------------------------------------------------------------------------------------------------------

void ZvNativeWalk::Node(const ZvNativeStream& stream, uint64_t at, const ZvCore::BinXmlNode& node) {
    const Level level(*this, node.Name());
    for (const ZvCore::BinXmlNode::Attribute& attribute : node.Attributes()) {
        struct Text {
            std::string operator()(bool v) const { return v ? "true" : "false"; }
            std::string operator()(int64_t v) const { return std::to_string(v); }
            std::string operator()(double v) const { return XStringA::Format("%.17g", v).Str(); }
            std::string operator()(const XStringW& v) const { return Quoted(v.ToUtf8()); }
            std::string operator()(const std::vector<uint8_t>& v) const {
                return std::to_string(v.size()) + " bytes";
            }
        };
        Tell(stream, at, 0, attribute.name.c_str(), std::visit(Text(), attribute.value));
    }
    for (const ZvCore::BinXmlNode& child : node.Children())
        Node(stream, at, child);
}

void ZvNativeWalk::Settings(ZvNativeCursor cursor) {
    const Level level(*this, "settings");
    const char* loss = "the drawing's settings";
    const ZvNativeStream* stream = OpenBlock(cursor, "settings block", loss);
    if (!stream)
        return;
    if (m_version >= 1048) {
        const auto view = ZvCore::MemFile::OverView(stream->bytes, size_t(stream->size));
        ZvCore::BinXmlDocument document;
        std::string why;
        if (!document.Read(*view, why))
            Problem(*stream, view->Position(), "the settings document is damaged: " + why, loss);
        else if (WantsFields())
            Node(*stream, 0, document.root);
    } else if (m_version >= 1027) {
        ZvNativeCursor content(*stream, 0, stream->size);
        if (!String(content, "settings"))
            Problem(content, "the settings text is damaged", loss);
    }
    CloseBlock();
}

// --- clients ---------------------------------------------------------------------------------------------------------------

void ZvNativeWalk::Clients(ZvNativeCursor cursor) {
    const Level level(*this, "clients");
    if (m_version < 1028) {
        ClientRecords(cursor);
        return;
    }
    const ZvNativeStream* stream = OpenBlock(cursor, "clients block", kEverything);
    if (!stream)
        return;
    ZvNativeCursor content(*stream, 0, stream->size);
    ClientRecords(content);
    CloseBlock();
}

void ZvNativeWalk::ClientRecords(ZvNativeCursor& cursor) {
    m_clients.clear();
    for (uint32_t i = 0; i < m_inner.clientCount; ++i) {
        const Level level(*this, "client " + std::to_string(i));
        if (!OneClient(cursor)) {
            Problem(cursor, "the section ends before its last record does", kEverything);
            return;
        }
    }
}

/// A record that states its own size, into a fixed form. False past the end.
static bool Sized(ZvNativeCursor& cursor, uint8_t* bytes, size_t wanted) {
    uint32_t size = 0;
    ZvNativeCursor at = cursor;
    if (!at.Read(size) || size < sizeof size || size > cursor.Left())
        return false;
    std::memset(bytes, 0, wanted);
    std::memcpy(bytes, cursor.Here(), std::min<size_t>(size, wanted));
    return cursor.Skip(size);
}

bool ZvNativeWalk::OneClient(ZvNativeCursor& cursor) {
    const ZvNativeCursor start = cursor;
    uint8_t bytes[ZvNativeClientRecord::kSize];
    if (!Sized(cursor, bytes, sizeof bytes))
        return false;
    ZvNativeClientRecord record;
    record.Parse(bytes);
    Guid guid;
    std::memcpy(guid.bytes.data(), record.guid, sizeof record.guid);
    Tell(start, sizeof bytes, "client record",
         "id " + std::to_string(record.id) + ", " + Quoted(record.name) + ", " + guid.ToString().ToUtf8() +
             ", " + std::to_string(record.records) + " records, " + std::to_string(record.types) + " types");
    Client& client = m_clients[record.id];
    if (!client.name.empty())
        Problem(start, "client id " + std::to_string(record.id) + " is given twice",
                "objects of the second client count as those of the first");
    client.name = record.name;
    client.stated += record.records;
    client.at = start.At();
    client.isBuiltIn = m_version >= 1014 && !guid.IsNull() ? guid == ZvServer::BuiltInClient().guid
                                                           : record.name == ZvServer::BuiltInClient().name;
    if (m_version < 1055)
        return true;
    for (uint32_t i = 0; i < record.types; ++i) {
        const ZvNativeCursor typeStart = cursor;
        uint8_t typeBytes[ZvNativeTypeRecord::kSize];
        if (!Sized(cursor, typeBytes, sizeof typeBytes))
            return false;
        ZvNativeTypeRecord type;
        type.Parse(typeBytes);
        Tell(typeStart, sizeof typeBytes, "object type", std::to_string(type.type) + " " + Quoted(type.name));
    }
    return true;
}
