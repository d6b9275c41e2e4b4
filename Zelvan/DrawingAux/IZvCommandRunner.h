#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"

class ZvSelection;

/// What a drawing needs of its command processor.
class ZV_API IZvCommandRunner {
public:
    virtual ~IZvCommandRunner() = default;
    virtual bool IsBusy() const = 0;
    /// Asks the running command to end; it may still be on the call stack afterwards.
    virtual void CancelCommand() = 0;
    /// Runs a command line. False when no such command exists or it was refused.
    virtual bool ExecuteLine(const XStringW& line) = 0;
    /// Selected entities changed: their grips are to be made anew.
    virtual void UpdateGrips() {}
    /// Last call of the drawing, which is half torn down: only its address still means something.
    virtual void DrawingDestroyed() {}
};
