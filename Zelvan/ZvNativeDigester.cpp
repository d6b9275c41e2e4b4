#include "Zelvan/ZvNativeDigester.h"
#include "Zelvan/ZvNativeHeader.h"
#include <algorithm>
#include <chrono>

namespace {

/// Between two looks at whether to stop.
constexpr uint64_t kStep = uint64_t(1) << 20;
constexpr uint8_t kZeros[16] = {};
constexpr std::chrono::milliseconds kPatience(3);

} // namespace

ZvNativeDigester::ZvNativeDigester(const uint8_t* bytes, uint64_t length) : m_bytes(bytes), m_length(length) {
    m_whole.Update(bytes, ZvNativeHeader::kDigestOffset);
    m_whole.Update(kZeros, sizeof kZeros);
    m_at = ZvNativeHeader::kDigestOffset + sizeof kZeros;
    m_worker = std::thread([this] { Work(); });
}

ZvNativeDigester::~ZvNativeDigester() {
    m_stop = true;
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void ZvNativeDigester::Expect(uint64_t at, uint64_t length, const ZvCore::Digest& digest) {
    {
        const std::lock_guard lock(m_mutex);
        m_pieces.push_back({at, length, digest});
    }
    m_changed.notify_all();
}

ZvNativeDigester::Verdict ZvNativeDigester::Finish(ZvCore::IProgress* progress) {
    Verdict verdict;
    {
        std::unique_lock lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
        while (!m_done && !verdict.cancelled) {
            m_changed.wait_for(lock, std::chrono::milliseconds(100));
            verdict.cancelled = progress && !progress->Step("Checking", m_at, m_length);
        }
    }
    m_stop = verdict.cancelled;
    m_changed.notify_all();
    m_worker.join();
    verdict.blocksFit = m_blocksFit;
    verdict.whole = m_whole.Finish();
    return verdict;
}

void ZvNativeDigester::Work() {
    Piece piece;
    while (Next(piece))
        Check(piece);
    Whole(m_length);
    const std::lock_guard lock(m_mutex);
    m_done = true;
    m_changed.notify_all();
}

/// The next piece in the order in which they were told. While none is there the whole waits a little, too (it is cheaper beside a
/// piece), and then goes on alone.
bool ZvNativeDigester::Next(Piece& piece) {
    std::unique_lock lock(m_mutex);
    const auto ready = [this] { return m_stop || m_closed || !m_pieces.empty(); };
    while (!m_changed.wait_for(lock, kPatience, ready)) {
        lock.unlock();
        Whole(std::min(m_length, m_at + kStep));
        lock.lock();
    }
    if (m_stop || m_pieces.empty())
        return false;
    piece = m_pieces.front();
    m_pieces.pop_front();
    return true;
}

void ZvNativeDigester::Whole(uint64_t to) {
    for (uint64_t at = m_at; at < to && !m_stop;) {
        const uint64_t count = std::min(kStep, to - at);
        m_whole.Update(m_bytes + at, size_t(count));
        m_at = at += count;
    }
}

void ZvNativeDigester::Check(const Piece& piece) {
    Whole(piece.at);
    const uint64_t end = piece.at + piece.length;
    ZvCore::MD5 md5;
    for (uint64_t at = piece.at; at < end && !m_stop;) {
        const uint64_t count = std::min(kStep, end - at);
        if (m_at == at) {
            ZvCore::MD5::UpdatePair(m_whole, m_bytes + at, size_t(count), md5, m_bytes + at, size_t(count));
            m_at = at + count;
        } else { // the whole is past it: pieces came in another order than that of the file
            md5.Update(m_bytes + at, size_t(count));
        }
        at += count;
    }
    if (!m_stop && md5.Finish() != piece.digest)
        m_blocksFit = false;
}
