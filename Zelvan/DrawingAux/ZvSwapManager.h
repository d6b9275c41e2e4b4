#pragma once
#include "Zelvan/DrawingAux/ZvSwapFile.h"
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class ZvDrawing;

/// Something whose content can leave memory and come back by itself when it is needed (pixels of a raster
/// image, a packed tree).
class ZV_API IZvSwappable {
public:
    virtual ~IZvSwappable() = default;
    /// Bytes that swapping out would free now; 0 when it is out already or in use.
    virtual size_t SwappableBytes() const = 0;
    /// Seconds of the drawing's monotonic clock.
    virtual double LastUsed() const = 0;
    /// False when it stays in memory, unchanged.
    virtual bool SwapOut(ZvSwapFile& file) = 0;
};

/// Keeps the memory of a drawing within a budget: first by giving back garbage of the arena, then by swapping
/// out what was not used for the longest time. Entities themselves stay: names and undo point at them.
class ZV_API ZvSwapManager {
public:
    explicit ZvSwapManager(ZvDrawing& drawing) : m_drawing(drawing) {}

    /// Not owned; must leave before it dies. While out, its content lies in File().
    void Register(IZvSwappable* swappable);
    bool Unregister(IZvSwappable* swappable);
    ZvSwapFile& File() { return m_file; }

    /// Bytes; the drawing's setting "SwapThreshold", by default half of the machine's memory. 0: no limit.
    int64_t Budget() const;
    struct Measure {
        size_t entities = 0;  ///< objects and their own blocks, arena not counted
        size_t arena = 0;     ///< taken for the arena
        size_t arenaLive = 0; ///< of it in use
        size_t undo = 0;
        size_t names = 0;
        size_t swappable = 0; ///< what could go
        size_t Total() const { return entities + arena + undo + names + swappable; }
    };
    /// Looks at every entity.
    Measure MeasureMemory() const;
    struct Result {
        size_t freed = 0;
        int swappedOut = 0;
        bool withinBudget = true; ///< false: nothing more can be swapped out
    };
    /// Cheap while the whole process stays below the budget.
    Result Balance();

private:
    ZvDrawing& m_drawing;
    ZvSwapFile m_file;
    std::vector<IZvSwappable*> m_swappables;
};
