#include "ZvCore/FaultyFile.h"

namespace ZvCore {

bool FaultyFile::Trip() {
    ++m_calls;
    if (m_failAt > 0 && m_calls >= m_failAt)
        m_failed = true;
    return m_failed;
}

std::string FaultyFile::ErrorText() const {
    return m_failed ? "made to fail at call " + std::to_string(m_failAt) : m_inner.ErrorText();
}

size_t FaultyFile::Write(const void* bytes, size_t count) {
    return Trip() ? 0 : m_inner.Write(bytes, count);
}

size_t FaultyFile::Read(void* bytes, size_t count) {
    return Trip() ? 0 : m_inner.Read(bytes, count);
}

bool FaultyFile::Seek(uint64_t position) {
    return !Trip() && m_inner.Seek(position);
}

bool FaultyFile::SeekRelative(int64_t distance) {
    return !Trip() && m_inner.SeekRelative(distance);
}

} // namespace ZvCore
