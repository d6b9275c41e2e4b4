#include "Zelvan/ZvTextScan.h"
#include <charconv>
#include <cmath>

void ZvTextScan::SkipBlanks() {
    while (m_pos < m_text.size() &&
           (m_text[m_pos] == ' ' || (m_text[m_pos] >= '\t' && m_text[m_pos] <= '\r')))
        ++m_pos;
}

bool ZvTextScan::AtEnd() {
    SkipBlanks();
    return m_pos == m_text.size();
}

bool ZvTextScan::Literal(std::string_view expected) {
    SkipBlanks();
    if (m_text.compare(m_pos, expected.size(), expected) != 0)
        return false;
    m_pos += expected.size();
    return true;
}

bool ZvTextScan::Whole(std::string_view expected) {
    const size_t start = m_pos;
    if (Literal(expected) && AtEnd())
        return true;
    m_pos = start;
    return false;
}

namespace {

/// `from_chars` does not take a plus sign.
const char* AfterPlus(const char* from, const char* end) {
    return from + 1 < end && *from == '+' && from[1] != '-' && from[1] != '+' ? from + 1 : from;
}

} // namespace

bool ZvTextScan::Int(int& value) {
    SkipBlanks();
    const char* end = m_text.data() + m_text.size();
    int read = 0;
    const auto [stop, error] = std::from_chars(AfterPlus(m_text.data() + m_pos, end), end, read);
    if (error != std::errc())
        return false;
    m_pos = size_t(stop - m_text.data());
    value = read;
    return true;
}

bool ZvTextScan::Number(double& value) {
    SkipBlanks();
    const char* end = m_text.data() + m_text.size();
    double read = 0;
    const auto [stop, error] = std::from_chars(AfterPlus(m_text.data() + m_pos, end), end, read);
    if (error != std::errc() || !std::isfinite(read))
        return false;
    m_pos = size_t(stop - m_text.data());
    value = read;
    return true;
}

bool ZvTextScan::Hex(uint32_t& value) {
    SkipBlanks();
    const char* end = m_text.data() + m_text.size();
    uint32_t read = 0;
    const auto [stop, error] = std::from_chars(m_text.data() + m_pos, end, read, 16);
    if (error != std::errc())
        return false;
    m_pos = size_t(stop - m_text.data());
    value = read;
    return true;
}

std::string_view ZvTextScan::Rest() {
    SkipBlanks();
    return std::string_view(m_text).substr(m_pos);
}
