// Which engine this is.
#pragma once

#include "ZvCore/Api.h"

#include <cstdint>

namespace ZvCore {

class ZV_API Version {
public:
    // "major.minor.patch", for people and logs.
    static const char* Text();

    static int Major();
    static int Minor();
    static int Patch();

    // Midnight UTC of the release day in units of 100 ns since 1601-01-01 UTC, the form in which drawing
    // files name the program that wrote them. It comes from the project's settings and not from the
    // compiler's clock, so that two builds of one source are alike.
    static uint64_t BuildStamp();
};

} // namespace ZvCore
