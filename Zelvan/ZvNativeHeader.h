#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/MD5.h"
#include <cstddef>
#include <cstdint>
#include <string>

// The fixed records of the native file, as values: each reads itself from its bytes and writes itself back. All
// integers are little-endian in the file.

/// The 104 bytes at the start of a file, and at the start of the body of a solid one.
struct ZV_API ZvNativeHeader {
    static constexpr size_t kSize = 104;
    static constexpr uint64_t kLargestSize = 0x100000;
    static constexpr uint64_t kFlagSolid = 1;
    static constexpr uint64_t kFlagNoNewerQuestion = 2;
    static constexpr size_t kDigestOffset = 60;
    static constexpr char kMagic[8] = {'z', 'v', 'd', 'f', 'z', 'v', 'd', 0};

    uint64_t size = kSize;
    char magic[8] = {};
    int32_t version = 0;
    uint64_t length = 0; ///< of the stream that the digest covers
    uint32_t entityHeadSize = 0;
    uint32_t clientCount = 0;
    uint64_t clientsOffset = 0;
    uint64_t tablesOffset = 0;
    uint64_t settingsOffset = 0;
    ZvCore::Digest digest{}; ///< all zero: none
    uint64_t flags = 0;
    uint64_t solidOffset = 0;
    int32_t minimumReader = 0;
    uint64_t buildStamp = 0; ///< units of 100 ns since 1601-01-01 UTC

    void Parse(const uint8_t bytes[kSize]);
    void Store(uint8_t bytes[kSize]) const;
    /// The first seven bytes count.
    bool HasMagic() const;
    bool IsSolid() const { return flags & kFlagSolid; }
    bool HasDigest() const { return digest != ZvCore::Digest{}; }
};

/// In front of every block.
struct ZV_API ZvNativeBlockHead {
    static constexpr size_t kSize = 36;
    enum Method : uint32_t { Stored = 0, Zlib = 1 };

    uint32_t method = Stored;
    uint64_t length = 0; ///< of the content
    uint64_t stored = 0; ///< bytes that follow the head
    ZvCore::Digest digest{};

    void Parse(const uint8_t bytes[kSize]);
    void Store(uint8_t bytes[kSize]) const;
    bool HasDigest() const { return digest != ZvCore::Digest{}; }
};

/// In front of every entity's payload.
struct ZV_API ZvNativeRecordHead {
    static constexpr size_t kSize = 30;
    static constexpr int kColorValueFirstVersion =
        1050; ///< before it the colour's index stood before its value

    uint64_t length = kSize; ///< of the whole record, the head included
    uint16_t client = 0;
    uint16_t type = 0;
    uint64_t name = 0;
    uint32_t colorValue = 0;
    int16_t colorIndex = 0;
    uint32_t flags = 0;

    void Parse(const uint8_t bytes[kSize], int version);
    void Store(uint8_t bytes[kSize]) const;
    /// All-ones means no name. False for any other value above 32 bits.
    bool Name32(uint32_t& out) const;
};

/// One for each client, in the clients section.
struct ZV_API ZvNativeClientRecord {
    static constexpr size_t kSize = 1064;
    static constexpr size_t kNameSize = 1024;

    std::string name; ///< UTF-8, cut to 1023 bytes between two characters
    uint32_t id = 0;
    uint8_t guid[16] = {};
    uint32_t records = 0;
    uint32_t types = 0; ///< object type records that follow

    void Parse(const uint8_t bytes[kSize]);
    void Store(uint8_t bytes[kSize]) const;
};

struct ZV_API ZvNativeTypeRecord {
    static constexpr size_t kSize = 138;
    static constexpr size_t kNameSize = 64;

    uint16_t type = 0;
    uint32_t hasName = 1; ///< any other value: to be ignored
    std::string name;     ///< UTF-8, cut to 63 bytes between two characters

    void Parse(const uint8_t bytes[kSize]);
    void Store(uint8_t bytes[kSize]) const;
};
