#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvNativeProvider.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include <algorithm>

ZvFileFormatServer::ZvFileFormatServer() : m_native(std::make_unique<ZvNativeProvider>()) {
    RegisterProvider(m_native.get());
}

ZvFileFormatServer::~ZvFileFormatServer() = default;

ZvFileFormatServer& ZvFileFormatServer::Application() {
    static ZvFileFormatServer server;
    return server;
}

bool ZvFileFormatServer::RegisterProvider(IZvFileProvider* provider) {
    if (!provider || std::find(m_providers.begin(), m_providers.end(), provider) != m_providers.end())
        return false;
    const std::vector<ZvFileFormat> formats = provider->Formats();
    for (const ZvFileFormat& format : formats)
        if (GetFormatById(format.id))
            return false;
    m_providers.push_back(provider);
    for (const ZvFileFormat& format : formats) {
        m_formats.push_back(std::make_unique<ZvFileFormat>(format));
        m_formats.back()->provider = provider;
    }
    return true;
}

bool ZvFileFormatServer::UnRegisterProvider(IZvFileProvider* provider) {
    if (provider == m_native.get() || !std::erase(m_providers, provider))
        return false;
    std::erase_if(m_formats, [&](const auto& format) { return format->provider == provider; });
    return true;
}

std::vector<const ZvFileFormat*> ZvFileFormatServer::FileFormatInList(const IZvFileProvider* provider) const {
    std::vector<const ZvFileFormat*> list;
    for (const auto& format : m_formats)
        if (format->canLoad && (!provider || format->provider == provider))
            list.push_back(format.get());
    return list;
}

std::vector<const ZvFileFormat*>
ZvFileFormatServer::FileFormatOutList(const IZvFileProvider* provider) const {
    std::vector<const ZvFileFormat*> list;
    for (const auto& format : m_formats)
        if (format->canSave && (!provider || format->provider == provider))
            list.push_back(format.get());
    return list;
}

const ZvFileFormat* ZvFileFormatServer::GetFormat(const std::filesystem::path& file) const {
    for (const ZvFileFormat* format : FileFormatInList())
        if (format->Matches(file))
            return format;
    return GetSaveFormat(file);
}

const ZvFileFormat* ZvFileFormatServer::GetSaveFormat(const std::filesystem::path& file) const {
    for (const ZvFileFormat* format : FileFormatOutList())
        if (format->Matches(file))
            return format;
    return nullptr;
}

const ZvFileFormat* ZvFileFormatServer::GetFormatById(const std::string& id) const {
    for (const auto& format : m_formats)
        if (format->id == id)
            return format.get();
    return nullptr;
}

const ZvFileFormat* ZvFileFormatServer::GetNativeLoadFormat() const {
    return GetFormatById(ZvNativeProvider::kFormatId);
}

const ZvFileFormat* ZvFileFormatServer::GetNativeSaveFormat() const {
    return GetFormatById(ZvNativeProvider::kFormatId);
}

std::vector<std::string> ZvFileFormatServer::FileFormatOutExtensions() const {
    std::vector<std::string> extensions;
    for (const ZvFileFormat* format : FileFormatOutList()) {
        if (format->extensions.empty())
            ZvLog::Write(ZvLog::Level::Warning,
                         std::string(ZvStrings::Get(ZvStr::SaveNeedsExtension)) + ": " + format->id);
        for (const std::string& extension : format->extensions)
            if (const std::string dotted = "." + extension;
                std::find(extensions.begin(), extensions.end(), dotted) == extensions.end())
                extensions.push_back(dotted);
    }
    return extensions;
}
