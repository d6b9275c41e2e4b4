#include "Zelvan/RenC/ZvDasher.h"
#include <algorithm>
#include <cmath>

void ZvDasher::SetPattern(const std::vector<float>& pattern) {
    m_pattern.clear();
    m_total = 0;
    for (float length : pattern) {
        m_pattern.push_back(length > 0 && std::isfinite(length) ? length : 0);
        m_total += m_pattern.back();
    }
    if (m_pattern.size() % 2)
        m_pattern.push_back(0);
    if (m_total < kShortest)
        m_pattern.clear();
}

void ZvDasher::Skip(double length) {
    length = std::fmod(length, m_total);
    while (length >= m_left) {
        length -= m_left;
        NextSlot();
    }
    m_left -= length;
}
