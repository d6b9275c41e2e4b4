#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvSaveStamp.h"
#include "ZvCore/Log.h"

// The settings block holds the drawing's settings as a binary XML document. Versions 1027..1047 held one wide string of
// lines "key=value" there; before that it held variables that nobody reads.

namespace {

constexpr int kStringFirstVersion = 1027;
constexpr int kDocumentFirstVersion = 1048;

/// Text settings as nodes have them: a value that reads as a whole or decimal number becomes one.
ZvCore::BinXmlNode::Value ValueOfText(const XStringW& text) {
    const std::string narrow = text.ToUtf8();
    if (!narrow.empty()) {
        char* end = nullptr;
        const long long whole = std::strtoll(narrow.c_str(), &end, 10);
        if (!*end && end != narrow.c_str())
            return int64_t(whole);
    }
    return text;
}

ZvCore::BinXmlNode NodeOfText(const XStringW& text) {
    ZvCore::BinXmlNode node("root");
    std::u16string_view rest = text.View();
    while (!rest.empty()) {
        const size_t end = rest.find_first_of(u"\r\n;");
        const std::u16string_view line = rest.substr(0, end);
        const size_t equals = line.find(u'=');
        if (equals != std::u16string_view::npos && equals > 0)
            node.Set(XStringW(line.substr(0, equals)).Trimmed().ToUtf8(),
                     ValueOfText(XStringW(line.substr(equals + 1)).Trimmed()));
        if (end == std::u16string_view::npos)
            break;
        rest.remove_prefix(end + 1);
    }
    return node;
}

} // namespace

bool ZvNativeFile::Impl::WriteSettings() {
    header.settingsOffset = desc->Position();
    ZvCore::BinXmlDocument document;
    drawing->StoreSettings(document.root);
    api.StartCompressBlock();
    const bool written = api.WriteBinXml(document);
    return api.EndCompressBlock() && written && !Target().Error();
}

bool ZvNativeFile::Impl::ReadSettings(bool afterTables) {
    const bool has = desc->version >= kStringFirstVersion;
    ZvLog::Printf(ZvLog::Level::Info, has ? "Reading Settings\n" : "Reading variables\n");
    if (!desc->Seek(header.settingsOffset) || !api.StartDecompressBlock())
        return false;
    bool good = true;
    if (desc->version >= kDocumentFirstVersion) {
        ZvCore::BinXmlDocument document;
        good = api.ReadBinXml(document);
        if (good)
            drawing->LoadSettings(document.root, afterTables);
    } else if (has) {
        XStringW text;
        good = api.ReadStringW(text);
        if (good)
            drawing->LoadSettings(NodeOfText(text), afterTables);
    }
    api.EndDecompressBlock();
    return good || Unreadable("settings section", header.settingsOffset, "its content is damaged");
}

Guid ZvNativeFile::ReadGuid(ZvCore::IFile* file) {
    return ZvSaveStamp::Read(*file).drawing;
}
