#pragma once
#include "Zelvan/Verbs/ZvDrawPlace.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvSelection;
class ZvXLine;

/// Entities as they were before a change that no inverse gives back to the bit: a copy of each, or of a polyline that
/// only moves its first vertex alone, since nothing else of its block changes then.
class ZV_API ZvOriginals {
public:
    ZvOriginals();
    ~ZvOriginals();
    ZvOriginals(ZvOriginals&&) noexcept;
    ZvOriginals& operator=(ZvOriginals&&) noexcept;

    bool IsEmpty() const { return m_kept.empty(); }
    void Keep(const ZvEntity& entity);
    /// For a polyline with vertices in 32-bit form that is about to be moved and nothing else.
    void KeepOrigin(const ZvXLine& line);
    /// Puts all of them back, the last first. A missing entity is reported with `context`.
    void Restore(ZvDrawing& drawing, std::string_view context) const;
    /// Puts back and forgets the one that was kept last.
    void RestoreLast(ZvEntity& entity);
    void Remove(const ZvSelection& leaving);
    void Clear();
    size_t MemUsage() const;

private:
    struct Kept {
        uint32_t name;
        ZvDrawPlace place;
        std::unique_ptr<ZvEntity> copy; ///< null: only `origin` changes
        std::unique_ptr<Vec4d> origin;
    };
    static void PutBack(const Kept& kept, ZvEntity& entity);

    static size_t Bytes(const Kept& kept);

    std::vector<Kept> m_kept;
    size_t m_bytes = 0; ///< of the copies
};
