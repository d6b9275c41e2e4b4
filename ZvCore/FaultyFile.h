#pragma once
#include "ZvCore/IFile.h"

namespace ZvCore {

/// Passes everything to another file and fails the Nth call that moves bytes or the position (1 = the first),
/// and every one after it. It never shows bytes in memory, so that every reader comes through `Read`. For
/// tests of damage and of full disks.
class ZV_API FaultyFile : public IFile {
public:
    /// `failAt` 0: never fails, only counts.
    FaultyFile(IFile& inner, uint64_t failAt) : m_inner(inner), m_failAt(failAt) {}

    bool Error() const override { return m_failed || m_inner.Error(); }
    std::string ErrorText() const override;
    size_t Write(const void* bytes, size_t count) override;
    size_t Read(void* bytes, size_t count) override;
    uint64_t Position() const override { return m_inner.Position(); }
    uint64_t Length() const override { return m_inner.Length(); }
    bool Seek(uint64_t position) override;
    bool SeekRelative(int64_t distance) override;
    /// The inner file's failure only: what was made to fail goes on failing.
    void ClearError() override { m_inner.ClearError(); }
    using IFile::Write;

    uint64_t Calls() const { return m_calls; }

private:
    bool Trip();
    IFile& m_inner;
    uint64_t m_failAt;
    uint64_t m_calls = 0;
    bool m_failed = false;
};

} // namespace ZvCore
