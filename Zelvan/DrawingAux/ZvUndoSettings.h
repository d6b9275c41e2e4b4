#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include <cstdint>

namespace ZvCore {
class Settings;
}

/// The rules for the undo memory budget among the application's settings (bytes, key "UndoMem").
///
/// A budget of zero switches undo off, but only within a session: the next pass over the settings lifts it.
class ZV_API ZvUndoSettings {
public:
    static constexpr const char* kBudgetKey = "UndoMem";
    static constexpr const char* kDescription =
        "Amount of memory to use for Undo information. Set this to zero to disable undo.";
    static constexpr int64_t kDefaultBudget = 157'286'400;
    static constexpr int64_t kSmallestBudget = 1'048'576;

    /// What the pass makes of a stored budget: within 0 and a quarter of the physical memory (bytes, 0 when it is
    /// not known: no upper bound), then at least kSmallestBudget. A stored zero becomes the default within 30
    /// days of 2013-04-31, a date that carries over into May.
    static int64_t Bounded(int64_t stored, DateTime now, uint64_t physicalMemory);
    /// The pass itself, whenever the application's settings are read or written. Settings without the key stay
    /// as they are.
    static void Apply(ZvCore::Settings& settings, DateTime now, uint64_t physicalMemory);
    /// Bytes of physical memory, 0 when unknown.
    static uint64_t PhysicalMemory();
};
