#include "Tests/Support/SimulatedFiles.h"
#include <algorithm>
#include <cstring>
#include <random>
#include <unordered_set>

namespace {

constexpr uint64_t kSector = 512;

std::string FolderKey(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

} // namespace

class SimulatedFiles::Stream final : public ZvCore::IStoredFile {
public:
    Stream(SimulatedFiles& files, int node, bool writable)
        : m_files(files), m_node(node), m_writable(writable) {}
    bool Error() const override { return !m_why.empty(); }
    std::string ErrorText() const override { return m_why; }
    void ClearError() override { m_why.clear(); }
    uint64_t Position() const override { return m_position; }
    uint64_t Length() const override { return Bytes().size(); }
    bool Seek(uint64_t position) override {
        m_position = position;
        return m_writable || position <= Length() || Fail("seek past the end");
    }
    bool SeekRelative(int64_t distance) override { return Seek(m_position + uint64_t(distance)); }
    size_t Write(const void* bytes, size_t count) override;
    size_t Read(void* bytes, size_t count) override;
    const uint8_t* View(uint64_t position, size_t count) const override {
        return !m_writable && position + count <= Length()
                   ? reinterpret_cast<const uint8_t*>(Bytes().data()) + position
                   : nullptr;
    }
    bool SyncToDisk() override;

private:
    std::string& Bytes() const { return m_files.m_nodes[size_t(m_node)].bytes; }
    bool Fail(const char* why) {
        m_why = why;
        return false;
    }
    SimulatedFiles& m_files;
    int m_node;
    bool m_writable;
    uint64_t m_position = 0;
    std::string m_why;
};

size_t SimulatedFiles::Stream::Write(const void* bytes, size_t count) {
    if (m_files.Trip() || !m_writable || Error()) {
        Fail(kFault);
        return 0;
    }
    const uint64_t grows = std::max<uint64_t>(Length(), m_position + count) - Length();
    if (grows > m_files.m_room) {
        Fail("the disk is full");
        return 0;
    }
    m_files.m_room -= m_files.m_room == UINT64_MAX ? 0 : grows;
    Bytes().resize(std::max<size_t>(Bytes().size(), size_t(m_position) + count));
    std::memcpy(Bytes().data() + m_position, bytes, count);
    Step step{Step::Write, m_node, m_position, {}, {}, {}};
    step.bytes.assign(static_cast<const char*>(bytes), count);
    std::vector<Step>& log = m_files.m_log;
    if (!log.empty() && log.back().kind == Step::Write && log.back().node == m_node &&
        log.back().offset + log.back().bytes.size() == m_position)
        log.back().bytes += step.bytes;
    else
        log.push_back(std::move(step));
    m_position += count;
    m_files.m_nodes[size_t(m_node)].modified = m_files.now;
    return count;
}

size_t SimulatedFiles::Stream::Read(void* bytes, size_t count) {
    if (m_files.Trip() || m_position + count > Length()) {
        Fail(kFault);
        return 0;
    }
    std::memcpy(bytes, Bytes().data() + m_position, count);
    m_position += count;
    return count;
}

bool SimulatedFiles::Stream::SyncToDisk() {
    if (m_files.Trip())
        return Fail(kFault);
    if (!m_files.m_lies)
        m_files.m_log.push_back({Step::Sync, m_node, 0, {}, {}, {}});
    return !Error();
}

SimulatedFiles::SimulatedFiles(const Contents& contents, const std::map<std::string, DateTime>& times) {
    for (const auto& [path, bytes] : contents) {
        MakeFolder(FolderKey(path));
        Put(path, bytes);
        if (const auto time = times.find(path); time != times.end())
            SetModified(path, time->second);
    }
    Settle();
}

SimulatedFiles::Contents SimulatedFiles::All() const {
    Contents all;
    for (const auto& [path, node] : m_names)
        all[path] = m_nodes[size_t(node)].bytes;
    return all;
}

std::string SimulatedFiles::Get(const Path& path) const {
    const auto found = m_names.find(path.generic_string());
    return found == m_names.end() ? std::string() : m_nodes[size_t(found->second)].bytes;
}

void SimulatedFiles::Put(const Path& path, std::string bytes) {
    m_names[path.generic_string()] = int(m_nodes.size());
    m_nodes.push_back({std::move(bytes), now});
}

void SimulatedFiles::Settle() {
    m_log.clear();
    m_namesBefore = m_names;
    m_nodesBefore = m_nodes;
    m_calls = 0;
}

void SimulatedFiles::Name(std::vector<std::pair<std::string, int>> changes) {
    for (const auto& [path, node] : changes) {
        if (node < 0)
            m_names.erase(path);
        else
            m_names[path] = node;
    }
    m_log.push_back({Step::Names, -1, 0, {}, std::move(changes), {}});
    now.ticks += DateTime::kTicksPerSecond;
}

const char* SimulatedFiles::Objection(const Path& path) const {
    const std::string folder = FolderKey(path.generic_string());
    if (IsNameTooLong(path))
        return "the name is too long";
    return m_folders.contains(folder) && !m_closed.contains(folder) ? nullptr : "access denied";
}

std::unique_ptr<ZvCore::IStoredFile> SimulatedFiles::Open(const Path& path, Mode mode, std::string& why) {
    const std::string key = path.generic_string();
    const auto found = m_names.find(key);
    const bool exists = found != m_names.end();
    if (Trip())
        why = kFault;
    else if (mode == Mode::Read && !exists)
        why = "no such file";
    else if (mode == Mode::CreateNew && exists)
        why = "it exists already";
    else if (const char* objection = mode == Mode::Read ? nullptr : Objection(path))
        why = objection;
    else {
        if (mode == Mode::Read)
            return std::make_unique<Stream>(*this, found->second, false);
        m_nodes.push_back({{}, now});
        Name({{key, int(m_nodes.size()) - 1}});
        return std::make_unique<Stream>(*this, m_names[key], true);
    }
    why = "cannot open '" + key + "': " + why;
    return nullptr;
}

ZvCore::IFileSystem::Info SimulatedFiles::Look(const Path& path) {
    Info info;
    if (const auto found = m_names.find(path.generic_string()); found != m_names.end()) {
        info.exists = true;
        info.length = m_nodes[size_t(found->second)].bytes.size();
        info.modified = m_nodes[size_t(found->second)].modified;
    }
    info.isReadOnly = m_readOnly.contains(path.generic_string());
    info.isFolder = m_folders.contains(path.generic_string());
    info.exists = info.exists || info.isFolder;
    return info;
}

std::string SimulatedFiles::List(const Path& folder, std::vector<Path>& names) {
    names.clear();
    if (Trip())
        return kFault;
    for (const auto& [path, node] : m_names)
        if (FolderKey(path) == folder.generic_string())
            names.push_back(Path(path).filename());
    return {};
}

std::string SimulatedFiles::Rename(const Path& from, const Path& to) {
    const auto found = m_names.find(from.generic_string());
    if (Trip())
        return kFault;
    if (found == m_names.end())
        return "no such file";
    if (const char* objection = Objection(to))
        return objection;
    if (m_folders.contains(to.generic_string()))
        return "it is a folder";
    if (m_held.contains(to.generic_string()))
        return "another program uses it";
    const int node = found->second;
    const auto there = m_names.find(to.generic_string());
    if (there == m_names.end() || there->second != node) // as POSIX has it: two names of one file both stay
        Name({{from.generic_string(), -1}, {to.generic_string(), node}});
    return {};
}

std::string SimulatedFiles::Link(const Path& from, const Path& to) {
    const auto found = m_names.find(from.generic_string());
    if (Trip() || !m_hasLinks)
        return kFault;
    if (found == m_names.end() || m_names.contains(to.generic_string()))
        return "it exists already";
    if (const char* objection = Objection(to))
        return objection;
    if (m_folders.contains(to.generic_string()))
        return "it is a folder";
    Name({{to.generic_string(), found->second}});
    return {};
}

std::string SimulatedFiles::Delete(const Path& path) {
    if (Trip())
        return kFault;
    if (m_names.contains(path.generic_string()))
        Name({{path.generic_string(), -1}});
    return {};
}

std::string SimulatedFiles::SyncFolder(const Path& folder) {
    if (Trip())
        return kFault;
    m_log.push_back({Step::SyncNames, -1, 0, {}, {}, folder.generic_string()});
    return {};
}

bool SimulatedFiles::CanWriteIn(const Path& folder) {
    return m_folders.contains(folder.generic_string()) && !m_closed.contains(folder.generic_string());
}

// --- power cuts --------------------------------------------------------------------------------------------

struct SimulatedFiles::Stored {
    std::string bytes;
    std::vector<const Step*> waiting;

    /// What the medium may hold: 0 everything, 1 nothing of what waits, 2 its length alone, 3 the first half of it, else sectors at
    /// random.
    std::string After(int mode, std::mt19937& random) const {
        std::string result = bytes;
        if (mode == 1)
            return result;
        const size_t count = mode == 3 ? waiting.size() / 2 : waiting.size();
        std::map<uint64_t, bool> lost; // by sector
        for (size_t i = 0; i < count; ++i) {
            const Step& step = *waiting[i];
            result.resize(std::max<size_t>(result.size(), size_t(step.offset) + step.bytes.size()));
            for (uint64_t at = 0; at < step.bytes.size() && mode != 2;) {
                const uint64_t sector = (step.offset + at) / kSector;
                const uint64_t n =
                    std::min<uint64_t>(step.bytes.size() - at, (sector + 1) * kSector - step.offset - at);
                if (mode < 4 || !lost.try_emplace(sector, random() % 2 == 0).first->second)
                    std::memcpy(result.data() + step.offset + at, step.bytes.data() + at, size_t(n));
                at += n;
            }
        }
        return result;
    }
};

size_t SimulatedFiles::ForEachCut(const Cuts& cuts, const std::function<void(SimulatedFiles&)>& visit) const {
    std::mt19937 random(1);
    std::unordered_set<std::string> seen;
    std::map<std::string, int> names = m_namesBefore;
    std::vector<const Step*> waitingNames;
    std::map<int, Stored> stored;
    for (size_t i = 0; i < m_nodes.size(); ++i)
        stored[int(i)].bytes = i < m_nodesBefore.size() ? m_nodesBefore[i].bytes : std::string();
    const auto apply = [](std::map<std::string, int>& to, const Step& step) {
        for (const auto& [path, node] : step.names) {
            if (node < 0)
                to.erase(path);
            else
                to[path] = node;
        }
    };
    const auto tryState = [&](uint64_t kept, int mode) {
        std::map<std::string, int> here = names;
        for (size_t i = 0; i < waitingNames.size(); ++i)
            if (i >= 64 || kept >> i & 1)
                apply(here, *waitingNames[i]);
        Contents contents;
        std::map<std::string, DateTime> times;
        std::string key;
        std::map<int, std::string> after; // two names of a file hold the same
        for (const auto& [path, node] : here) {
            if (!after.contains(node))
                after[node] = stored[node].After(mode, random);
            contents[path] = after[node];
            times[path] = m_nodes[size_t(node)].modified;
            key += path + '\0' + after[node] + '\0';
        }
        if (!seen.insert(std::move(key)).second)
            return;
        SimulatedFiles files(contents, times);
        files.m_folders = m_folders;
        files.now = now;
        visit(files);
    };
    size_t writes = 0;
    for (size_t k = 0; k <= m_log.size(); ++k) {
        const bool inWrites =
            k < m_log.size() && k > 0 && m_log[k].kind == Step::Write && m_log[k - 1].kind == Step::Write;
        writes = inWrites ? writes + 1 : 0;
        if (writes % cuts.writeStride == 0) {
            const bool tears = std::any_of(stored.begin(), stored.end(),
                                           [](const auto& s) { return !s.second.waiting.empty(); });
            const size_t count = waitingNames.size();
            const uint64_t whole = count >= 64 ? UINT64_MAX : (uint64_t(1) << count) - 1;
            for (int mode = 0; mode < (tears ? cuts.modes : 1); ++mode) {
                if (count <= cuts.mostSubsets)
                    for (uint64_t kept = 0; kept <= whole; ++kept)
                        tryState(kept, mode);
                else
                    for (size_t i = 0; i <= count; ++i) { // one lost; all up to one
                        tryState(whole & ~(uint64_t(1) << i), mode);
                        tryState((uint64_t(1) << i) - 1, mode);
                    }
            }
        }
        if (k == m_log.size())
            break;
        const Step& step = m_log[k];
        if (step.kind == Step::Write) {
            stored[step.node].waiting.push_back(&step);
        } else if (step.kind == Step::Sync) {
            stored[step.node].bytes = stored[step.node].After(0, random);
            stored[step.node].waiting.clear();
        } else if (step.kind == Step::Names) {
            waitingNames.push_back(&step);
        } else {
            std::erase_if(waitingNames, [&](const Step* waiting) {
                const bool synced = FolderKey(waiting->names.front().first) == step.folder;
                if (synced)
                    apply(names, *waiting);
                return synced;
            });
        }
    }
    return seen.size();
}
