#include "Zelvan/ZvFileFormat.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>

bool ZvFileFormat::Matches(const std::filesystem::path& file) const {
    const XStringW fileName = XStringW::FromUtf8(ZvPlatform::PathToUtf8(file.filename())).ToLower();
    return std::any_of(extensions.begin(), extensions.end(), [&](const std::string& extension) {
        return fileName.EndsWith(XStringW::FromUtf8("." + extension).View());
    });
}

std::string ZvFileFormat::Wildcards() const {
    std::string text;
    for (const std::string& extension : extensions)
        text += (text.empty() ? "*." : ";*.") + extension;
    return text;
}
