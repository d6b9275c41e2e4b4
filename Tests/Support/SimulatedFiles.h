#pragma once
#include "ZvCore/FileSystem.h"
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// A file system in memory that remembers what was done to it, fails on demand, and shows what a power cut could leave: bytes that
/// were not synced may be lost or torn by sectors, changes of names lost one by one until their folder is synced.
class SimulatedFiles final : public ZvCore::IFileSystem {
public:
    using Contents = std::map<std::string, std::string>; ///< by path with "/"

    SimulatedFiles() = default;
    explicit SimulatedFiles(const Contents& contents, const std::map<std::string, DateTime>& times = {});
    void MakeFolder(const Path& folder) { m_folders.insert(folder.generic_string()); }
    Contents All() const;
    std::string Get(const Path& path) const;
    void Put(const Path& path, std::string bytes);

    /// From now on everything counts as on the medium and the record is empty.
    void Settle();
    /// Calls since then that a fault can hit.
    uint64_t Calls() const { return m_calls; }
    /// The call of that number (1: the next one) fails; 0: none.
    void FailAt(uint64_t call) { m_calls = 0, m_failAt = call; }
    /// Bytes that can still be written before the disk is full.
    void SetRoom(uint64_t bytes) { m_room = bytes; }
    void SetLinks(bool has) { m_hasLinks = has; }
    /// A disk that says it has synced and has not.
    void SetLyingSync() { m_lies = true; }
    void SetReadOnlyFolder(const Path& folder) { m_closed.insert(folder.generic_string()); }
    void SetReadOnly(const Path& path) { m_readOnly.insert(path.generic_string()); }
    /// As if another program had the file open in a way that keeps it from being replaced.
    void SetHeld(const Path& path) { m_held.insert(path.generic_string()); }
    void SetModified(const Path& path, DateTime time) {
        m_nodes[size_t(m_names.at(path.generic_string()))].modified = time;
    }
    DateTime now = DateTime::FromUtc(2020, 1, 1);

    /// How closely cuts are tried. The defaults take a sample that runs in moments.
    struct Cuts {
        size_t writeStride = 8; ///< of writes to one file that follow each other, a cut after every so many
        size_t mostSubsets =
            6;          ///< up to so many waiting names every subset of them is lost, of more a choice
        int modes = 10; ///< of what waiting bytes leave; from 4 on sectors at random
        static Cuts All() { return {1, 12, 64}; }
    };
    /// Calls `visit` once for every different state that a power cut at any moment since Settle could leave. How many.
    size_t ForEachCut(const Cuts& cuts, const std::function<void(SimulatedFiles& after)>& visit) const;

    std::unique_ptr<ZvCore::IStoredFile> Open(const Path& path, Mode mode, std::string& why) override;
    Info Look(const Path& path) override;
    std::string List(const Path& folder, std::vector<Path>& names) override;
    std::string Rename(const Path& from, const Path& to) override;
    std::string Link(const Path& from, const Path& to) override;
    std::string Delete(const Path& path) override;
    std::string CopyPermissions(const Path&, const Path&) override { return Trip() ? kFault : ""; }
    std::string SyncFolder(const Path& folder) override;
    bool CanWriteIn(const Path& folder) override;
    Path Resolve(const Path& path) override { return path; }

private:
    static constexpr const char* kFault = "made to fail";
    struct Node {
        std::string bytes;
        DateTime modified;
    };
    struct Step {
        enum Kind { Write, Sync, Names, SyncNames } kind;
        int node = -1;
        uint64_t offset = 0;
        std::string bytes;
        std::vector<std::pair<std::string, int>> names; ///< -1: gone
        std::string folder;
    };
    struct Stored; // what of a node is on the medium, and what not yet
    class Stream;
    bool Trip() { return ++m_calls == m_failAt; }
    void Name(std::vector<std::pair<std::string, int>> changes);
    /// Why no file of that name can be made; null when it can.
    const char* Objection(const Path& path) const;

    std::map<std::string, int> m_names;
    std::vector<Node> m_nodes;
    std::set<std::string> m_folders, m_closed, m_readOnly, m_held;
    std::vector<Step> m_log;
    std::map<std::string, int> m_namesBefore;
    std::vector<Node> m_nodesBefore;
    uint64_t m_calls = 0, m_failAt = 0;
    uint64_t m_room = UINT64_MAX;
    bool m_hasLinks = true;
    bool m_lies = false;
};
