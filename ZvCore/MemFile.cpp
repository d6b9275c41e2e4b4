#include "ZvCore/MemFile.h"
#include <algorithm>
#include <cstdlib>

namespace ZvCore {

namespace {

constexpr uint64_t kFirstCapacity = 256;

} // namespace

MemFile::MemFile(std::vector<uint8_t> bytes) : m_adopted(std::move(bytes)) {
    if (m_adopted.empty()) {
        m_adopted = {};
        return;
    }
    m_data = m_adopted.data();
    m_length = m_capacity = m_writable = m_adopted.size();
}

MemFile::~MemFile() {
    Drop();
}

std::unique_ptr<MemFile> MemFile::OverView(const uint8_t* bytes, size_t count) {
    auto file = std::make_unique<MemFile>();
    file->m_data = const_cast<uint8_t*>(bytes); // m_writable stays 0, so that nothing writes there
    file->m_length = count;
    file->m_isView = true;
    return file;
}

/// Back to an empty stream without memory; settings and failures stay.
void MemFile::Drop() {
    if (!m_isView && m_adopted.empty())
        std::free(m_data);
    m_adopted = {};
    m_data = nullptr;
    m_length = m_position = m_capacity = m_writable = 0;
}

bool MemFile::Fail(std::string why) {
    if (!m_failed)
        m_why = std::move(why);
    m_failed = true;
    return false;
}

bool MemFile::RefuseWrites(std::string why) {
    m_refuseWrites = true;
    m_writable = 0;
    return Fail(std::move(why));
}

void MemFile::ClearError() {
    m_failed = false;
    m_refuseWrites = false;
    m_why.clear();
    SetBudget(m_budget);
}

void MemFile::SetBudget(uint64_t bytes) {
    m_budget = bytes;
    m_writable = m_isView || m_refuseWrites ? 0 : m_budget > 0 ? std::min(m_capacity, m_budget) : m_capacity;
}

/// Memory for `wanted` bytes at least, contents kept.
bool MemFile::Grow(uint64_t wanted) {
    if (m_budget > 0 && wanted > m_budget)
        return RefuseWrites("out of memory budget (" + std::to_string(m_budget) + " bytes)");
    if (wanted > m_capacity) {
        uint64_t capacity = std::max({wanted, m_capacity * 2, kFirstCapacity});
        if (m_budget > 0)
            capacity = std::min(capacity, m_budget);
        const bool isAdopted = !m_adopted.empty();
        void* fresh =
            capacity <= SIZE_MAX / 2 ? std::realloc(isAdopted ? nullptr : m_data, size_t(capacity)) : nullptr;
        if (!fresh)
            return RefuseWrites("out of memory (" + std::to_string(wanted) + " bytes wanted)");
        if (isAdopted) {
            std::memcpy(fresh, m_data, size_t(m_length));
            m_adopted = {};
        }
        m_data = static_cast<uint8_t*>(fresh);
        m_capacity = capacity;
    }
    SetBudget(m_budget);
    return true;
}

size_t MemFile::WriteSlow(const void* bytes, size_t count) {
    if (m_refuseWrites)
        return 0;
    if (m_isView) {
        RefuseWrites("cannot write: the bytes in memory are read-only");
        return 0;
    }
    if (count == 0)
        return 0;
    if (m_position > UINT64_MAX - count) {
        RefuseWrites("out of memory");
        return 0;
    }
    if (!Grow(m_position + count))
        return 0;
    if (m_position > m_length) {
        std::memset(m_data + m_length, 0, size_t(m_position - m_length));
        m_length = m_position;
    }
    return Write(bytes, count);
}

size_t MemFile::ReadSlow(void* bytes, size_t count) {
    const size_t there = m_position < m_length ? size_t(m_length - m_position) : 0;
    Fail("read past the end: " + std::to_string(count) + " bytes at " + std::to_string(m_position) + " of " +
         std::to_string(m_length));
    return there > 0 ? Read(bytes, there) : 0;
}

bool MemFile::SeekFailed(uint64_t position) {
    return Fail("seek past the end: to " + std::to_string(position) + " of " + std::to_string(m_length));
}

bool MemFile::SeekRelative(int64_t distance) {
    if (distance < 0 && uint64_t(-(distance + 1)) >= m_position)
        return Fail("seek before the start");
    return Seek(m_position + uint64_t(distance));
}

bool MemFile::Reserve(size_t bytes) {
    if (m_isView || (m_budget > 0 && bytes > m_budget))
        return false;
    if (bytes <= m_capacity)
        return true;
    const bool refused = m_refuseWrites, failed = m_failed;
    if (Grow(bytes))
        return true;
    if (!refused && !failed) // not having reserved is no failure of the stream
        ClearError();
    return false;
}

uint8_t* MemFile::Expand(size_t count) {
    static uint8_t nothing = 0;
    if (m_isView || m_refuseWrites || !Grow(count))
        return nullptr;
    m_length = count;
    m_position = 0;
    return m_data ? m_data : &nothing;
}

std::vector<uint8_t> MemFile::Take() {
    std::vector<uint8_t> bytes;
    if (!m_isView && !m_adopted.empty()) {
        bytes = std::move(m_adopted);
        m_adopted = {};
        m_data = nullptr;
        bytes.resize(size_t(m_length));
    } else if (m_length > 0) {
        bytes.assign(m_data, m_data + m_length);
    }
    Drop();
    return bytes;
}

} // namespace ZvCore
