#pragma once
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/BinXml.h"
#include "ZvCore/IFile.h"
#include "ZvCore/Progress.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct ZvNativePayload;

/// A stream in memory being walked: the file, or the content of a block.
struct ZvNativeStream {
    const uint8_t* bytes = nullptr;
    uint64_t size = 0;
    int number = 0;          ///< 0 the file, else in order of appearance
    uint64_t fileOffset = 0; ///< where in the file the outermost block begins that holds it
    bool inBlock = false;
};

/// A bounded place in a stream. Reads fail (and leave the place alone) past the bound.
class ZvNativeCursor {
public:
    ZvNativeCursor(const ZvNativeStream& stream, uint64_t from, uint64_t to)
        : m_stream(&stream), m_at(from), m_end(to < stream.size ? to : stream.size) {
        if (m_at > m_end)
            m_at = m_end;
    }
    const ZvNativeStream& Stream() const { return *m_stream; }
    uint64_t At() const { return m_at; }
    uint64_t End() const { return m_end; }
    uint64_t Left() const { return m_end - m_at; }
    const uint8_t* Here() const { return m_stream->bytes + m_at; }
    bool Skip(uint64_t count) {
        if (count > Left())
            return false;
        m_at += count;
        return true;
    }
    void SkipAll() { m_at = m_end; }
    template <class T>
    bool Read(T& value) {
        if (sizeof(T) > Left())
            return false;
        std::memcpy(&value, Here(), sizeof(T));
        m_at += sizeof(T);
        return true;
    }
    /// The next `count` bytes (fewer: what there is) as a place of their own.
    ZvNativeCursor Part(uint64_t count) const {
        return {*m_stream, m_at, count < Left() ? m_at + count : m_end};
    }

private:
    const ZvNativeStream* m_stream;
    uint64_t m_at;
    uint64_t m_end;
};

/// Hears what a walk comes across.
class IZvNativeVisitor {
public:
    virtual ~IZvNativeVisitor() = default;
    /// Fields are told only to those who want them; problems always.
    virtual bool WantsFields() const = 0;
    /// How many entities of one list are told field by field.
    virtual uint64_t MaxEntities() const { return 0; }
    virtual void Field(const ZvNativeStream& stream, uint64_t at, uint64_t length, int depth,
                       const std::string& label, const std::string& value) = 0;
    virtual void Problem(const ZvNativeStream& stream, uint64_t at, int depth, const std::string& where,
                         const std::string& what, const std::string& loss) = 0;
    virtual void Entity(bool known) { (void)known; }
    virtual void Block() {}
    virtual void TableRecord() {}
    virtual bool Stopped() const { return false; }
};

/// Goes through a native file from the header to the last record without making anything of it, and tells a visitor what stands
/// where and what is wrong. Used to examine and to explain files.
class ZvNativeWalk {
public:
    struct Options {
        bool digests = true;
        ZvCore::IProgress* progress = nullptr;
    };
    ZvNativeWalk(IZvNativeVisitor& visitor, const Options& options)
        : m_visitor(visitor), m_options(options) {}
    ~ZvNativeWalk();

    /// False when the stream is no native file at all.
    bool Run(ZvCore::IFile& file);
    /// Instead of Run, for payloads that were found outside of a sound file: what its header and its clients would have said.
    void Assume(const ZvNativeHeader& header, const std::map<uint16_t, bool>& clientsAndWhetherBuiltIn);
    const ZvNativeHeader& Header() const { return m_header; } ///< the outermost one
    bool WasCancelled() const { return m_cancelled; }
    uint64_t OwnEntities() const { return m_ownEntities; } ///< without those inside of others

    // --- for the parts of the walk that stand in sources of their own -------------------------------------------------------
    int Version() const { return m_version; }
    void Tell(const ZvNativeCursor& from, uint64_t length, const char* label, const std::string& value);
    void Tell(const ZvNativeStream& stream, uint64_t at, uint64_t length, const char* label,
              const std::string& value);
    void Problem(const ZvNativeCursor& at, const std::string& what, const std::string& loss);
    void Problem(const ZvNativeStream& stream, uint64_t at, const std::string& what, const std::string& loss);
    bool WantsFields() const { return m_visitor.WantsFields() && !m_quiet; }
    template <class T>
    bool Number(ZvNativeCursor& cursor, const char* label, T& value);
    /// A string record; false past the end.
    bool String(ZvNativeCursor& cursor, const char* label, XStringW* text = nullptr);
    /// The head of a block at the cursor, which then stands behind the block. Null when the content cannot be had.
    const ZvNativeStream* OpenBlock(ZvNativeCursor& cursor, const char* label, const char* loss);
    void CloseBlock();
    void EntityList(ZvNativeCursor& cursor);
    /// The long form; see ZvNativeFile::WriteEntityChunks.
    void EntityChunks(ZvNativeCursor& cursor);
    void Node(const ZvNativeStream& stream, uint64_t at, const ZvCore::BinXmlNode& node);

    /// A level of nesting with a name in the path of findings.
    class Level {
    public:
        Level(ZvNativeWalk& walk, std::string name) : m_walk(walk) {
            m_walk.m_path.push_back({std::move(name), {}});
        }
        /// Its name is put together when somebody asks for it.
        Level(ZvNativeWalk& walk, const char* name, uint64_t number) : m_walk(walk) {
            m_walk.m_path.push_back({name, number});
        }
        ~Level() { m_walk.m_path.pop_back(); }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        ZvNativeWalk& m_walk;
    };

private:
    bool TakeFile(ZvCore::IFile& file);
    bool FileHeader(const ZvNativeStream& stream);
    void CheckFileDigest(const ZvNativeStream& stream);
    void Body(const ZvNativeStream& stream);
    void SolidBody(const ZvNativeStream& stream);
    void Sections(const ZvNativeStream& stream);
    /// `field`: where in the header the offset stands.
    bool Offset(const ZvNativeStream& stream, uint64_t field, const char* name, uint64_t offset);
    void Settings(ZvNativeCursor cursor);
    void Clients(ZvNativeCursor cursor);
    void ClientRecords(ZvNativeCursor& cursor);
    bool OneClient(ZvNativeCursor& cursor);
    void Tables(ZvNativeCursor cursor);
    void TablesSection(ZvNativeCursor& cursor);
    bool Frame(ZvNativeCursor& cursor, uint32_t number, uint32_t tables);
    bool Group(ZvNativeCursor& cursor, uint32_t code, uint32_t& seen);
    bool TableRecord(ZvNativeCursor& cursor, uint32_t code, uint32_t number);
    void RecordFields(ZvNativeCursor& cursor, uint32_t code);
    bool Contents(ZvNativeCursor& cursor, uint32_t code);
    void Attributes(ZvNativeCursor& cursor);
    bool Record(ZvNativeCursor& cursor, uint64_t index, int64_t count);
    void TellRecord(const ZvNativeCursor& start, const ZvNativeRecordHead& head, const ZvNativePayload* kind);
    std::string Path() const;
    void Summary(uint64_t at, const ZvNativeStream& stream);

    struct Client {
        std::string name;
        uint32_t stated = 0; ///< records by the client record
        uint32_t seen = 0;
        uint64_t at = 0;
        bool isBuiltIn = false;
    };
    IZvNativeVisitor& m_visitor;
    Options m_options;
    ZvNativeHeader m_header;
    ZvNativeHeader m_inner; ///< of the stream that holds the sections
    int m_version = 0;
    bool m_cancelled = false;
    bool m_quiet = false;
    int m_listDepth = 0;
    uint64_t m_ownEntities = 0;
    int m_sectionDepth = 0;
    int m_streams = 0;
    std::unique_ptr<ZvCore::MemFile> m_copy;
    ZvNativeStream m_file;
    std::vector<std::unique_ptr<ZvNativeStream>> m_open;
    std::vector<std::unique_ptr<ZvCore::MemFile>> m_contents;
    struct Step {
        std::string name;
        std::optional<uint64_t> number;
    };
    std::vector<Step> m_path;
    std::map<uint32_t, Client> m_clients;
};

template <class T>
bool ZvNativeWalk::Number(ZvNativeCursor& cursor, const char* label, T& value) {
    const ZvNativeCursor before = cursor;
    if (!cursor.Read(value))
        return false;
    if (WantsFields())
        Tell(before, sizeof(T), label, std::to_string(value));
    return true;
}
