#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/IFile.h"
#include "ZvCore/Progress.h"
#include <cstdint>
#include <string>
#include <vector>

/// One thing that is wrong with a file.
struct ZvNativeFinding {
    uint64_t offset = 0; ///< in the file; for content of a compressed block, of that block's head
    uint64_t inner = 0;  ///< position in the block's content, 0 outside of blocks
    std::string where;   ///< "tables/Layer/\"0\"/chunk 2/record 17"
    std::string what;    ///< what is wrong
    std::string loss;    ///< what a load would lose by it
};

/// Examines a native file without a drawing: header, digests, blocks, sections, framing of every record, and the numbers
/// inside the payloads of kinds that the engine knows.
class ZV_API ZvNativeCheck {
public:
    struct Options {
        bool digests = true; ///< compute and compare the digests of the file and of its blocks
        size_t maxFindings = 1000;
        ZvCore::IProgress* progress = nullptr;
    };
    struct Result {
        std::vector<ZvNativeFinding> findings;
        bool truncatedList = false; ///< there were more than maxFindings
        bool cancelled = false;
        int version = 0;
        bool isSolid = false;
        bool hasDigest = false;
        uint64_t entities = 0;
        uint64_t ownEntities = 0;     ///< of layers and blocks; those inside of other entities do not count
        uint64_t unknownEntities = 0; ///< of kinds or clients that the engine does not have
        uint64_t blocks = 0;
        uint64_t records = 0; ///< table records
        bool IsSound() const { return findings.empty() && !cancelled; }
    };
    /// The stream position is left where it was.
    static Result Run(ZvCore::IFile& file, const Options& options);
    static Result Run(ZvCore::IFile& file) { return Run(file, Options{}); }
};
