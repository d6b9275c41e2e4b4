#include "ZvCore/BinXml.h"
#include "ZvCore/IFile.h"

#include <cstdlib>

// What can be read can be written, and what was written reads the same. (Compared as bytes: a NaN differs
// from itself.)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto input = ZvCore::MemFile::OverView(data, size);
    ZvCore::BinXmlDocument document;
    std::string why;
    if (!document.Read(*input, why)) {
        if (why.empty())
            std::abort();
        return 0;
    }
    ZvCore::MemFile first, second;
    ZvCore::BinXmlDocument again;
    if (!document.Write(first) || !first.Seek(0) || !again.Read(first, why) || !again.Write(second))
        std::abort();
    if (first.Take() != second.Take())
        std::abort();
    return 0;
}
