#pragma once
#include <cstdint>

class ZvNativeCursor;
class ZvNativeWalk;

/// What a walk through a native file knows of the payload of one built-in kind.
struct ZvNativePayload {
    uint16_t type;
    const char* name;
    /// Tells the payload's fields and what is wrong with them. Null: only the length is known.
    void (*check)(ZvNativeWalk& walk, ZvNativeCursor payload);

    /// Null for a type that the engine does not have.
    static const ZvNativePayload* Find(uint16_t type);
};
