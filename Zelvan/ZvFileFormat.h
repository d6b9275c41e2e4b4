#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <filesystem>
#include <string>
#include <vector>

class IZvFileProvider;

/// One file format of a provider, as dialogs and command lines show it.
class ZV_API ZvFileFormat {
public:
    std::string id; ///< short, unique among all providers ("zvd", "gpkg"); lower case
    XStringW name;  ///< for dialogs ("Zelvan Drawing")
    std::vector<std::string>
        extensions; ///< lower case, without the dot; the first is given to names without one
    bool canLoad = false;
    bool canSave = false;
    /// The provider puts its files (there may be several) in place itself, each only when all are complete.
    bool replacesTarget = false;
    IZvFileProvider* provider = nullptr; ///< set on registration

    /// Whether the file name ends in a dot and one of the extensions, without regard to case.
    bool Matches(const std::filesystem::path& file) const;
    /// "*.zvf;*.zvd"
    std::string Wildcards() const;
};
