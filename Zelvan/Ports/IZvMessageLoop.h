#pragma once
#include "ZvCore/Api.h"
#include <cstdint>

/// What ends or interrupts a nested loop early; bits combine.
enum ZvInterrupt : uint32_t {
    kInterruptMouseMove = 1,
    kInterruptWheel = 2,
    kInterruptKeyboard = 4,
    kInterruptAny = 8,
};

/// The application's queue of input, as commands see it: their nested loops run on it. Window thread only.
class ZV_API IZvMessageLoop {
public:
    virtual ~IZvMessageLoop() = default;
    /// Delivers what is waiting. False once the application is asked to close: loops then unwind.
    virtual bool PumpPending() = 0;
    /// Blocks until something is waiting, at most `timeoutMs` (negative: without limit). False as
    /// PumpPending, and when nothing can ever come any more.
    virtual bool WaitForInput(int timeoutMs = -1) = 0;
    /// Whether input of the kinds in `mask` (ZvInterrupt) is waiting; delivers nothing.
    virtual bool PeekInterrupt(uint32_t mask) = 0;
    /// State of a key or button by its virtual key number (1, 2, 4: left, right, middle button; 16, 17, 18:
    /// Shift, Ctrl, Alt).
    virtual bool IsKeyDown(int virtualKey) const = 0;
};
