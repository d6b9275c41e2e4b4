#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/IFile.h"
#include <cstdint>
#include <functional>
#include <string>

/// One annotated piece of a native file.
struct ZvNativeDumpItem {
    uint64_t offset = 0; ///< in the stream that holds the piece: the file, or a block's content
    uint64_t length = 0; ///< bytes; of records and sections the whole
    int depth = 0;       ///< nesting, 0 for the file itself
    int stream =
        0; ///< 0 the file, else the number of the block (in order of appearance) whose content holds the piece
    std::string label; ///< "format version"
    std::string value; ///< "1075"; for a problem, what is wrong
    bool isProblem = false;
};

/// Tells every field of a native file in order, with its place. Made for people who debug files and programs that read them.
class ZV_API ZvNativeDump {
public:
    struct Options {
        uint64_t maxEntitiesPerList =
            100;              ///< of each entity list this many are told in full, the rest counted
        bool payloads = true; ///< fields of the payloads of known kinds, else their length only
    };
    /// The sink answers false to stop. False when the stream is no native file (the sink was told why).
    static bool Run(ZvCore::IFile& file, const Options& options,
                    const std::function<bool(const ZvNativeDumpItem&)>& sink);
};
