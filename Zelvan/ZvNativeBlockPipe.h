#pragma once
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/Api.h"
#include "ZvCore/IFile.h"
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// What stands between the content of a block and its bytes in a file: compression and digest. Plain data in, plain data
/// out, so that any thread can do it.
namespace ZvNativeBlock {

/// The smallest content that is worth compressing.
inline constexpr uint64_t kSmallestCompressed = 31;

struct Packed {
    ZvNativeBlockHead head;
    std::unique_ptr<ZvCore::MemFile> content;
    std::vector<uint8_t> compressed; ///< with method 1
    bool compressFailed = false;     ///< stored instead; why in `error`
    std::string error;

    const uint8_t* Bytes() const {
        return head.method == ZvNativeBlockHead::Zlib ? compressed.data() : content->Data();
    }
};
/// level 0 stores. The content is kept where it is what gets written.
ZV_API Packed Pack(std::unique_ptr<ZvCore::MemFile> content, int level, bool digest);

enum class Result { Good, BadDigest, Unreadable };
struct Opened {
    Result result = Result::Unreadable;
    std::unique_ptr<ZvCore::MemFile> content; ///< null when unreadable
    std::string why;
};
/// Why the head cannot be true, or empty: nothing may be allocated from its numbers before this said so. `remaining`: bytes that
/// follow the head in what holds the block. `budget`: most bytes of content.
ZV_API std::string CheckHead(const ZvNativeBlockHead& head, uint64_t remaining, uint64_t budget);
/// `stored`: the head.stored bytes. They must outlive the content of a block with method 0, unless `hold` owns them. With
/// `verify`, a digest that is there is compared; a block that fails it is opened nevertheless.
ZV_API Opened Open(const ZvNativeBlockHead& head, const uint8_t* stored, std::vector<uint8_t> hold,
                   bool verify);

} // namespace ZvNativeBlock

/// Runs tasks on a worker thread in the order in which they were submitted, ahead of the caller's need. The caller takes part: it
/// runs tasks that the worker has not begun instead of waiting for them. Tasks touch nothing but their own data.
/// Without threads everything runs in Finish. One caller.
class ZV_API ZvNativeBlockPipe {
public:
    class ZV_API Task {
    public:
        virtual ~Task() = default;
        virtual void Run() = 0;

    private:
        friend class ZvNativeBlockPipe;
        enum class State { Waiting, Running, Done } state = State::Waiting;
        std::exception_ptr thrown;
    };

    explicit ZvNativeBlockPipe(bool threads) : m_threads(threads) {}
    /// Drops what has not begun and waits for the rest.
    ~ZvNativeBlockPipe();
    ZvNativeBlockPipe(const ZvNativeBlockPipe&) = delete;
    ZvNativeBlockPipe& operator=(const ZvNativeBlockPipe&) = delete;

    /// The worker starts with the first task.
    void Submit(std::shared_ptr<Task> task);
    /// Returns when the task is done; throws what it threw (out of memory).
    void Finish(Task& task);

private:
    void Work();
    std::shared_ptr<Task> TakeWaiting();
    void RunTaken(std::unique_lock<std::mutex>& lock, Task& task);

    bool m_threads;
    bool m_stop = false;
    std::deque<std::shared_ptr<Task>> m_waiting;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_worker;
};
