#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <string>

namespace ZvCore {

/// Byte stream with a position: the one way in which persistence touches bytes. After any I/O failure
/// `Error()` stays true and `ErrorText()` says what failed first, until `ClearError`; meanwhile reads and
/// seeks are still tried, and writes are refused once one of them failed. Reading past the end is a failure
/// that gives what there is. A writable stream can be positioned past its end (writing there fills the gap
/// with zeros), a read-only one cannot.
class ZV_API IFile {
public:
    virtual ~IFile() = default;

    virtual bool Error() const = 0;
    virtual std::string ErrorText() const = 0;
    /// Both return the number of bytes moved; less than asked for only after a failure.
    virtual size_t Write(const void* bytes, size_t count) = 0;
    virtual size_t Read(void* bytes, size_t count) = 0;
    virtual uint64_t Position() const = 0;
    virtual uint64_t Length() const = 0;
    virtual bool Seek(uint64_t position) = 0;
    virtual bool SeekRelative(int64_t distance) = 0;
    /// The bytes [position, position + count) where they already lie in memory, without moving the position;
    /// null when the stream cannot show them (not in memory, or past the end). Valid until the next write or
    /// the end of the stream.
    virtual const uint8_t* View(uint64_t position, size_t count) const;
    /// Forgets the failure (after a caller has dealt with it).
    virtual void ClearError() = 0;

    bool ReadInt64(int64_t& value) { return Read(&value, 8) == 8; }
    bool ReadInt32(int32_t& value) { return Read(&value, 4) == 4; }
    template <class T>
    bool ReadValue(T& value) {
        return Read(&value, sizeof(T)) == sizeof(T);
    }
    template <class T>
    bool WriteValue(const T& value) {
        return Write(&value, sizeof(T)) == sizeof(T);
    }
    /// Reads the `stored` bytes of a record into a buffer of `wanted` bytes: zero-fills a short record, skips
    /// the excess of a long one. False when the stream holds less than `stored`; the buffer is zero-filled
    /// then, too.
    bool ReadPad(void* buffer, size_t wanted, uint64_t stored);
    /// Reads `length` bytes in calls of at most `chunk` bytes each.
    bool ReadChunked(void* buffer, uint64_t length, size_t chunk);
    /// Copies `count` bytes from the other file's position, advancing both.
    bool Write(IFile& from, uint64_t count);
    uint64_t Remaining() const { return Length() > Position() ? Length() - Position() : 0; }
};

} // namespace ZvCore

#include "ZvCore/MemFile.h" // the stream that nearly every user of IFile makes
