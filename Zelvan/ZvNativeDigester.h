#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/MD5.h"
#include "ZvCore/Progress.h"
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

/// Digests a whole native file that lies in memory on a thread of its own while another thread reads it, and along the way the
/// blocks that the reader comes across: two digests side by side cost hardly more than one.
class ZV_API ZvNativeDigester {
public:
    /// The bytes must outlive this. The digest field of the header counts as zero. Begins at once; throws std::system_error when
    /// there is no thread to be had.
    ZvNativeDigester(const uint8_t* bytes, uint64_t length);
    /// Stops early when Finish was not called.
    ~ZvNativeDigester();
    ZvNativeDigester(const ZvNativeDigester&) = delete;
    ZvNativeDigester& operator=(const ZvNativeDigester&) = delete;

    /// The bytes [at, at + length) are meant to have that digest. From the thread that made this.
    void Expect(uint64_t at, uint64_t length, const ZvCore::Digest& digest);

    struct Verdict {
        ZvCore::Digest whole{};
        bool blocksFit = false;
        bool cancelled = false;
    };
    /// Waits for the rest. `progress` may be null.
    Verdict Finish(ZvCore::IProgress* progress);

private:
    struct Piece {
        uint64_t at;
        uint64_t length;
        ZvCore::Digest digest;
    };
    void Work();
    bool Next(Piece& piece);
    void Whole(uint64_t to);
    void Check(const Piece& piece);

    const uint8_t* m_bytes;
    const uint64_t m_length;
    ZvCore::MD5 m_whole;
    std::atomic<uint64_t> m_at{0}; ///< what of the whole is digested
    std::atomic<bool> m_stop{false};
    bool m_blocksFit = true;
    bool m_closed = false;
    bool m_done = false;
    std::deque<Piece> m_pieces;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_worker;
};
