#pragma once
#include "ZvCore/IFile.h"
#include <cstring>
#include <memory>
#include <vector>

namespace ZvCore {

/// A growing stream in memory, or a read-only view of bytes that somebody else keeps. Records are written and
/// read piece by piece, so the small cases of Write, Read and Seek are inline; call them through MemFile&
/// where it matters.
class ZV_API MemFile final : public IFile {
public:
    MemFile() = default;
    /// Takes the bytes; position 0.
    explicit MemFile(std::vector<uint8_t> bytes);
    ~MemFile() override;
    MemFile(const MemFile&) = delete;
    MemFile& operator=(const MemFile&) = delete;
    /// Read-only view; `bytes` must outlive the file. Writing to it is a failure.
    static std::unique_ptr<MemFile> OverView(const uint8_t* bytes, size_t count);

    bool Error() const override { return m_failed; }
    std::string ErrorText() const override { return m_why; }
    size_t Write(const void* bytes, size_t count) override {
        if (count > m_writable || m_position > m_writable - count || m_position > m_length)
            return WriteSlow(bytes, count);
        if (count)
            std::memcpy(m_data + m_position, bytes, count);
        m_position += count;
        if (m_position > m_length)
            m_length = m_position;
        return count;
    }
    size_t Read(void* bytes, size_t count) override {
        if (count > m_length || m_position > m_length - count)
            return ReadSlow(bytes, count);
        if (count)
            std::memcpy(bytes, m_data + m_position, count);
        m_position += count;
        return count;
    }
    uint64_t Position() const override { return m_position; }
    uint64_t Length() const override { return m_length; }
    bool Seek(uint64_t position) override {
        if (position > m_length && m_isView)
            return SeekFailed(position);
        m_position = position;
        return true;
    }
    bool SeekRelative(int64_t distance) override;
    const uint8_t* View(uint64_t position, size_t count) const override {
        return position <= m_length && count <= m_length - position ? m_data + position : nullptr;
    }
    void ClearError() override;
    using IFile::Write;

    /// Writes beyond this many bytes fail ("out of memory budget"). 0: no limit.
    void SetBudget(uint64_t bytes);
    const uint8_t* Data() const { return m_data; }
    /// False when there is no memory for that, or the budget is less.
    bool Reserve(size_t bytes);
    /// Makes the stream `count` bytes long, position 0, for the caller to fill through the pointer; the bytes
    /// are not set. Null (a failure of the stream) when there is no memory or no budget for them. Not for a
    /// view.
    uint8_t* Expand(size_t count);
    /// Gives the bytes away; the file is empty afterwards. Not for a view.
    std::vector<uint8_t> Take();

private:
    size_t WriteSlow(const void* bytes, size_t count);
    size_t ReadSlow(void* bytes, size_t count);
    bool SeekFailed(uint64_t position);
    bool Grow(uint64_t wanted);
    bool Fail(std::string why);
    bool RefuseWrites(std::string why);
    void Drop();

    uint8_t* m_data = nullptr; // from malloc, unless it lies in m_adopted or belongs to the owner of a view
    uint64_t m_length = 0;
    uint64_t m_position = 0;
    uint64_t m_writable =
        0; // bytes that a write may touch without a further look: 0 for a view and after a failed write
    uint64_t m_capacity = 0;
    uint64_t m_budget = 0;
    bool m_isView = false;
    bool m_failed = false;
    bool m_refuseWrites = false;
    std::vector<uint8_t> m_adopted; // not empty while m_data lies in it
    std::string m_why;
};

} // namespace ZvCore
