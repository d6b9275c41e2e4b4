#include "ZvCore/MD5.h"
#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace ZvCore {

// Names, order and constants are those of RFC 1321, section 3.4.
namespace {

constexpr size_t kBlock = 64;

// floor(2^32 * |sin(i)|), i = 1..64.
constexpr uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501, //
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821, //
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8, //
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a, //
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70, //
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665, //
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1, //
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

/// One buffer on its way: a, b, c, d and the block that is read.
struct Lane {
    uint32_t state[4];
    uint32_t v[4];
    const uint8_t* block;
};

template <size_t I>
[[gnu::always_inline]] inline void Step(Lane& lane) {
    constexpr size_t round = I / 16;
    constexpr size_t word = (round == 0 ? I : round == 1 ? 5 * I + 1 : round == 2 ? 3 * I + 5 : 7 * I) % 16;
    uint32_t& a = lane.v[(64 - I) % 4];
    const uint32_t b = lane.v[(65 - I) % 4], c = lane.v[(66 - I) % 4], d = lane.v[(67 - I) % 4];
    uint32_t x;
    std::memcpy(&x, lane.block + 4 * word, 4);
    // What b, the result of the step before, does not enter is added first: it need not wait.
    uint32_t sum = a + x + kSines[I];
    if constexpr (round == 0)
        sum += d ^ (b & (c ^ d));
    else if constexpr (round == 1)
        sum = sum + (c & ~d) + (b & d); // the halves have no bit in common
    else if constexpr (round == 2)
        sum += b ^ (c ^ d);
    else
        sum += c ^ (b | ~d);
    a = b + std::rotl(sum, kShifts[round][I % 4]);
}

[[gnu::always_inline]] inline void Begin(Lane& lane) {
    std::copy(lane.state, lane.state + 4, lane.v);
}

[[gnu::always_inline]] inline void End(Lane& lane) {
    for (int i = 0; i < 4; ++i)
        lane.state[i] += lane.v[i];
    lane.block += kBlock;
}

template <size_t... I>
void DigestOne(Lane& target, size_t count, std::index_sequence<I...>) {
    Lane lane = target;
    for (; count > 0; --count) {
        Begin(lane);
        (Step<I>(lane), ...);
        End(lane);
    }
    target = lane;
}

/// Every step waits for the one before it in the same buffer, so two buffers side by side take hardly longer
/// than one.
template <size_t... I>
void DigestTwo(Lane& targetA, Lane& targetB, size_t count, std::index_sequence<I...>) {
    Lane a = targetA, b = targetB;
    for (; count > 0; --count) {
        Begin(a), Begin(b);
        ((Step<I>(a), Step<I>(b)), ...);
        End(a), End(b);
    }
    targetA = a, targetB = b;
}

using AllSteps = std::make_index_sequence<64>;

} // namespace

MD5::MD5() : m_state{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476} {}

void MD5::Blocks(const uint8_t* bytes, size_t count) {
    Lane lane{{m_state[0], m_state[1], m_state[2], m_state[3]}, {}, bytes};
    DigestOne(lane, count, AllSteps());
    std::copy(lane.state, lane.state + 4, m_state);
}

void MD5::Update(const void* bytes, size_t count) {
    const auto* at = static_cast<const uint8_t*>(bytes);
    const size_t waiting = size_t(m_total % kBlock);
    m_total += count;
    if (waiting > 0) {
        const size_t taken = std::min(count, kBlock - waiting);
        std::memcpy(m_pending + waiting, at, taken);
        if (waiting + taken < kBlock)
            return;
        Blocks(m_pending, 1);
        at += taken;
        count -= taken;
    }
    Blocks(at, count / kBlock);
    if (count % kBlock > 0)
        std::memcpy(m_pending, at + count / kBlock * kBlock, count % kBlock);
}

Digest MD5::Finish() {
    const uint64_t bits = m_total * 8;
    static constexpr uint8_t padding[kBlock] = {0x80};
    Update(padding, 1 + (kBlock + 55 - m_total % kBlock) % kBlock);
    Update(&bits, sizeof bits);
    Digest digest;
    std::memcpy(digest.data(), m_state, digest.size());
    return digest;
}

Digest MD5::Of(const void* bytes, size_t count) {
    MD5 md5;
    md5.Update(bytes, count);
    return md5.Finish();
}

void MD5::UpdatePair(MD5& first, const void* a, size_t countA, MD5& second, const void* b, size_t countB) {
    const auto* bytesA = static_cast<const uint8_t*>(a);
    const auto* bytesB = static_cast<const uint8_t*>(b);
    // Up to the next whole block of each, one after the other.
    const size_t headA = std::min(countA, (kBlock - size_t(first.m_total % kBlock)) % kBlock);
    const size_t headB = std::min(countB, (kBlock - size_t(second.m_total % kBlock)) % kBlock);
    first.Update(bytesA, headA);
    second.Update(bytesB, headB);
    bytesA += headA, countA -= headA;
    bytesB += headB, countB -= headB;
    const size_t common = std::min(countA, countB) / kBlock;
    if (common > 0) {
        Lane laneA{{first.m_state[0], first.m_state[1], first.m_state[2], first.m_state[3]}, {}, bytesA};
        Lane laneB{{second.m_state[0], second.m_state[1], second.m_state[2], second.m_state[3]}, {}, bytesB};
        DigestTwo(laneA, laneB, common, AllSteps());
        std::copy(laneA.state, laneA.state + 4, first.m_state);
        std::copy(laneB.state, laneB.state + 4, second.m_state);
        first.m_total += common * kBlock;
        second.m_total += common * kBlock;
    }
    first.Update(bytesA + common * kBlock, countA - common * kBlock);
    second.Update(bytesB + common * kBlock, countB - common * kBlock);
}

void MD5::OfPair(const void* a, size_t countA, const void* b, size_t countB, Digest& digestA,
                 Digest& digestB) {
    MD5 first, second;
    UpdatePair(first, a, countA, second, b, countB);
    digestA = first.Finish();
    digestB = second.Finish();
}

std::string MD5::ToHex(const Digest& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (uint8_t byte : digest) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace ZvCore
