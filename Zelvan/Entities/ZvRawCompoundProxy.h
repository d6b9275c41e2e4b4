#pragma once
#include "Zelvan/Entities/ZvRawCompound.h"

/// A record that the program does not understand, in the current form of record heads.
struct ZvRawCompound::Proxy {
    std::vector<uint8_t> record;
    std::shared_ptr<const ZvNativeDesc::Client> client; ///< null when its file named none
    uint16_t clientId = 0;
    uint16_t type = 0;

    /// Equal but for the heads.
    bool SamePayload(const Proxy& other) const;
};
