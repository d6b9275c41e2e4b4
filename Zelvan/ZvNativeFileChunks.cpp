#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "ZvCore/Log.h"
#include <algorithm>
#include <deque>

// A chain of blocks, each an entity list: u64 length of the whole chain, u64 entities, u32 blocks, then the blocks.

namespace {

constexpr uint64_t kHeadSize = 20;
/// Content of a block at which the next one is begun.
constexpr uint64_t kBlockBytes = uint64_t(2) << 20;
/// Blocks, and bytes of content, that wait between the two threads.
constexpr size_t kAhead = 3;
constexpr uint64_t kAheadBytes = uint64_t(64) << 20;

struct PackTask : ZvNativeBlockPipe::Task {
    std::unique_ptr<ZvCore::MemFile> content;
    int level = 0;
    bool digest = false;
    ZvNativeBlock::Packed packed;

    void Run() override { packed = ZvNativeBlock::Pack(std::move(content), level, digest); }
};

struct OpenTask : ZvNativeBlockPipe::Task {
    ZvNativeBlockHead head;
    const uint8_t* stored = nullptr;
    std::vector<uint8_t> hold;
    uint64_t at = 0;
    bool verify = false;
    ZvNativeBlock::Opened opened;

    void Run() override { opened = ZvNativeBlock::Open(head, stored, std::move(hold), verify); }
};

} // namespace

// --- writing ---------------------------------------------------------------------------------------------------------------

/// Writes one block's list: entities from `next` on until the block is full. Answers how many are in it.
int64_t ZvNativeFile::Impl::WriteOneChunk(const std::vector<ZvEntity*>& entities, size_t& next) {
    desc->WriteValue(int64_t(0));
    int64_t written = 0, failures = 0;
    for (; next < entities.size() && desc->Position() < kBlockBytes; ++next) {
        if (!api.IsSaved(*entities[next]))
            continue;
        const bool stored = WriteEntity(*entities[next], failures);
        written += stored;
        unwritten += !stored;
        if (desc->File().Error())
            break;
    }
    const uint64_t end = desc->Position();
    desc->Seek(0);
    desc->WriteValue(written);
    desc->Seek(end);
    return written;
}

uint64_t ZvNativeFile::UnwrittenEntities() const {
    return m_impl->unwritten;
}

int64_t ZvNativeFile::WriteEntityChunks(const std::vector<ZvEntity*>& inTreeOrder) {
    Impl& impl = *m_impl;
    std::vector<ZvEntity*> byName;
    if (impl.options.orderByName) {
        byName = inTreeOrder;
        std::sort(byName.begin(), byName.end(),
                  [](const ZvEntity* a, const ZvEntity* b) { return a->Name32() < b->Name32(); });
    }
    const std::vector<ZvEntity*>& entities = impl.options.orderByName ? byName : inTreeOrder;
    ZvNativeDesc& desc = *impl.desc;
    const uint64_t start = desc.Position();
    const uint8_t placeholder[kHeadSize] = {};
    desc.Write(placeholder, sizeof placeholder);
    const bool outermost = impl.stack.empty();
    uint64_t total = 0;
    uint32_t blocks = 0;
    std::deque<std::shared_ptr<PackTask>> waiting;
    const auto writeOldest = [&] {
        impl.pipe.Finish(*waiting.front());
        const bool good = impl.WritePacked(waiting.front()->packed);
        waiting.pop_front();
        return good;
    };
    bool good = true;
    for (size_t next = 0; good && next < entities.size();) {
        StartCompressBlock();
        const int64_t written = impl.WriteOneChunk(entities, next);
        total += uint64_t(written);
        Impl::Block block = impl.Pop();
        if (block.content->Error() || !impl.Step("Saving", next, entities.size())) {
            good = impl.BlockOverflow(*block.content);
            break;
        }
        if (!written)
            continue;
        ++blocks;
        auto task = std::make_shared<PackTask>();
        task->content = std::move(block.content);
        task->level = outermost ? std::min(impl.options.compressionLevel, 9) : 0;
        task->digest = outermost && impl.options.blockDigests;
        impl.pipe.Submit(task);
        waiting.push_back(std::move(task));
        if (waiting.size() > kAhead)
            good = writeOldest();
    }
    while (good && !waiting.empty())
        good = writeOldest();
    if (desc.File().Error())
        ZvLog::Printf(ZvLog::Level::Error, "File error: %s\n", desc.File().ErrorText().c_str());
    const uint64_t end = desc.Position();
    desc.Seek(start);
    desc.WriteValue(end - start);
    desc.WriteValue(total);
    desc.WriteValue(blocks);
    desc.Seek(end);
    return good ? int64_t(total) : 0;
}

// --- reading ---------------------------------------------------------------------------------------------------------------

bool ZvNativeFile::SkipEntityChunks() {
    ZvNativeDesc& desc = *m_impl->desc;
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    return desc.ReadValue(length) && length >= kHeadSize && length <= desc.RecordEnd() - start &&
           desc.Seek(start + length);
}

int64_t ZvNativeFile::ReadEntityChunks(ZvEntityList& entities) {
    Impl& impl = *m_impl;
    ZvNativeDesc& desc = *impl.desc;
    const uint64_t start = desc.Position();
    uint64_t length = 0, total = 0;
    uint32_t blocks = 0;
    if (!desc.ReadValue(length) || !desc.ReadValue(total) || !desc.ReadValue(blocks) || length < kHeadSize ||
        length > desc.RecordEnd() - start) {
        impl.Unreadable("list of objects", start, "its head is damaged");
        return 0;
    }
    const ZvNativeDesc::RecordScope chain(desc, start, length);
    return impl.ReadChain(blocks, total, entities);
}

/// The blocks of a chain whose head was read. Blocks are fetched and opened ahead, but what is wrong with one is told when its turn
/// comes: those before it are read whatever the second thread is at.
int64_t ZvNativeFile::Impl::ReadChain(uint32_t blocks, uint64_t total, ZvEntityList& entities) {
    entities.reserve(entities.size() +
                     size_t(std::min(total, desc->RecordRemaining() / ZvNativeRecordHead::kSize)));
    std::deque<std::shared_ptr<OpenTask>> ahead;
    std::string wrong;
    uint64_t aheadBytes = 0;
    int64_t read = 0;
    uint32_t fetched = 0;
    for (uint32_t i = 0; i < blocks; ++i) {
        while (fetched < blocks && wrong.empty() && ahead.size() <= kAhead &&
               (ahead.empty() || aheadBytes < kAheadBytes)) {
            auto task = std::make_shared<OpenTask>();
            task->at = desc->Position();
            wrong = FetchBlock(task->head, task->stored, task->hold);
            if (!wrong.empty())
                break;
            task->verify = MustVerify(task->head, task->stored);
            ++fetched;
            aheadBytes += task->head.length;
            pipe.Submit(task);
            ahead.push_back(std::move(task));
        }
        if (ahead.empty()) {
            Unreadable("block", desc->Position(), wrong);
            break;
        }
        const std::shared_ptr<OpenTask> task = std::move(ahead.front());
        ahead.pop_front();
        aheadBytes -= task->head.length;
        pipe.Finish(*task);
        const uint64_t next = desc->Position();
        if (stack.empty())
            outerBlockAt = task->at;
        if (!Step("Loading", task->at, desc->RecordEnd()))
            break;
        if (Accept(std::move(task->opened), task->at)) { // a damaged block costs its own objects only
            read += api.ReadEntityList(entities);
            api.EndDecompressBlock();
        }
        if (cancelled)
            break;
        desc->Seek(next);
    }
    return read;
}
