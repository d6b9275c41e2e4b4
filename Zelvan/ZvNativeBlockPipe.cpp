#include "Zelvan/ZvNativeBlockPipe.h"
#include "ZvCore/Codec.h"
#include <new>
#include <system_error>

namespace ZvNativeBlock {

Packed Pack(std::unique_ptr<ZvCore::MemFile> content, int level, bool digest) {
    Packed packed;
    const uint64_t length = content->Length();
    packed.head.length = packed.head.stored = length;
    if (level >= 1 && length >= kSmallestCompressed) {
        if (ZvCore::Codec::Deflate(level, content->Data(), size_t(length), packed.compressed, packed.error)) {
            packed.head.method = ZvNativeBlockHead::Zlib;
            packed.head.stored = packed.compressed.size();
        } else {
            packed.compressFailed = true;
            packed.compressed.clear();
        }
    }
    packed.content = std::move(content);
    if (digest)
        packed.head.digest = ZvCore::MD5::Of(packed.Bytes(), size_t(packed.head.stored));
    if (packed.head.method == ZvNativeBlockHead::Zlib)
        packed.content.reset();
    return packed;
}

std::string CheckHead(const ZvNativeBlockHead& head, uint64_t remaining, uint64_t budget) {
    if (head.method > ZvNativeBlockHead::Zlib)
        return "compression method " + std::to_string(head.method) + " is unknown";
    if (head.stored > remaining)
        return "the stated " + std::to_string(head.stored) + " stored bytes go past the end (" +
               std::to_string(remaining) + " are left)";
    if (head.method == ZvNativeBlockHead::Stored)
        return head.length == head.stored ? std::string() : "the two lengths of a stored block differ";
    if (head.length / ZvCore::Codec::kMaxExpansion > head.stored)
        return std::to_string(head.stored) + " compressed bytes cannot hold the stated " +
               std::to_string(head.length);
    if (head.length > budget)
        return "the content of " + std::to_string(head.length) + " bytes exceeds the memory budget of " +
               std::to_string(budget);
    return {};
}

namespace {

Opened OpenStored(const ZvNativeBlockHead& head, const uint8_t* stored, std::vector<uint8_t> hold) {
    Opened opened;
    opened.content = hold.empty() ? ZvCore::MemFile::OverView(stored, size_t(head.length))
                                  : std::make_unique<ZvCore::MemFile>(std::move(hold));
    opened.result = Result::Good;
    return opened;
}

Opened Inflate(const ZvNativeBlockHead& head, const uint8_t* stored) {
    Opened opened;
    auto content = std::make_unique<ZvCore::MemFile>();
    uint8_t* bytes = content->Expand(size_t(head.length));
    if (!bytes && head.length) {
        opened.why = content->ErrorText();
        return opened;
    }
    if (!ZvCore::Codec::Inflate(stored, size_t(head.stored), bytes, size_t(head.length), opened.why))
        return opened;
    opened.content = std::move(content);
    opened.result = Result::Good;
    return opened;
}

} // namespace

Opened Open(const ZvNativeBlockHead& head, const uint8_t* stored, std::vector<uint8_t> hold, bool verify) {
    const bool mismatch =
        verify && head.HasDigest() && ZvCore::MD5::Of(stored, size_t(head.stored)) != head.digest;
    Opened opened = head.method == ZvNativeBlockHead::Stored ? OpenStored(head, stored, std::move(hold))
                                                             : Inflate(head, stored);
    if (mismatch)
        opened.result = Result::BadDigest;
    return opened;
}

} // namespace ZvNativeBlock

ZvNativeBlockPipe::~ZvNativeBlockPipe() {
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
        m_waiting.clear();
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void ZvNativeBlockPipe::Submit(std::shared_ptr<Task> task) {
    if (m_threads && !m_worker.joinable()) {
        try {
            m_worker = std::thread([this] { Work(); });
        } catch (const std::system_error&) {
            m_threads = false; // no thread to be had: Finish runs the tasks
        }
    }
    {
        std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(task));
    }
    m_changed.notify_all();
}

void ZvNativeBlockPipe::Finish(Task& task) {
    std::unique_lock lock(m_mutex);
    while (task.state != Task::State::Done) {
        if (auto next = TakeWaiting())
            RunTaken(lock, *next);
        else
            m_changed.wait(lock);
    }
    if (task.thrown)
        std::rethrow_exception(task.thrown);
}

void ZvNativeBlockPipe::Work() {
    std::unique_lock lock(m_mutex);
    while (!m_stop) {
        if (auto next = TakeWaiting())
            RunTaken(lock, *next);
        else
            m_changed.wait(lock);
    }
}

std::shared_ptr<ZvNativeBlockPipe::Task> ZvNativeBlockPipe::TakeWaiting() {
    if (m_waiting.empty())
        return nullptr;
    auto task = std::move(m_waiting.front());
    m_waiting.pop_front();
    task->state = Task::State::Running;
    return task;
}

void ZvNativeBlockPipe::RunTaken(std::unique_lock<std::mutex>& lock, Task& task) {
    lock.unlock();
    try {
        task.Run();
    } catch (...) {
        task.thrown = std::current_exception();
    }
    lock.lock();
    task.state = Task::State::Done;
    m_changed.notify_all();
}
