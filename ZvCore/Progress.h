#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <string_view>

namespace ZvCore {

/// Told by long work how far it is; asked by it whether to stop. Implementations limit their own rate.
class ZV_API IProgress {
public:
    virtual ~IProgress() = default;
    /// `done` of `total` units (bytes, records); total 0 means unknown. False asks the work to stop: it then
    /// ends with Status::Cancelled and leaves things as before it began.
    virtual bool Step(std::string_view what, uint64_t done, uint64_t total) = 0;
};

/// Never stops anything.
class ZV_API NoProgress : public IProgress {
public:
    bool Step(std::string_view, uint64_t, uint64_t) override { return true; }
};

} // namespace ZvCore
