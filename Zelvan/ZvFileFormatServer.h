#pragma once
#include "Zelvan/IZvFileProvider.h"
#include "ZvCore/Api.h"
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Knows the file formats: the native ones by itself, others by the providers registered with it.
class ZV_API ZvFileFormatServer {
public:
    ZvFileFormatServer();
    ~ZvFileFormatServer();
    ZvFileFormatServer(const ZvFileFormatServer&) = delete;
    ZvFileFormatServer& operator=(const ZvFileFormatServer&) = delete;
    /// The program's server.
    static ZvFileFormatServer& Application();

    /// The provider stays the caller's and must unregister before it dies. False when it is registered
    /// already or a format's id is taken.
    bool RegisterProvider(IZvFileProvider* provider);
    bool UnRegisterProvider(IZvFileProvider* provider);

    const std::vector<IZvFileProvider*>& FileProviderList() const { return m_providers; }
    /// Formats that can be loaded or saved, of one provider or (null) of all, in the order of registration.
    std::vector<const ZvFileFormat*> FileFormatInList(const IZvFileProvider* provider = nullptr) const;
    std::vector<const ZvFileFormat*> FileFormatOutList(const IZvFileProvider* provider = nullptr) const;
    /// The format for a file name by its extension, a loadable one before one that can only be saved; null
    /// when none matches.
    const ZvFileFormat* GetFormat(const std::filesystem::path& file) const;
    const ZvFileFormat* GetSaveFormat(const std::filesystem::path& file) const;
    const ZvFileFormat* GetFormatById(const std::string& id) const;
    const ZvFileFormat* GetNativeLoadFormat() const;
    const ZvFileFormat* GetNativeSaveFormat() const;
    /// Extensions for the save dialog, each once, native first, with the dot. A save format without an
    /// extension is left out with "Save formats need proper extension" in the log.
    std::vector<std::string> FileFormatOutExtensions() const;

private:
    std::vector<IZvFileProvider*> m_providers;
    std::vector<std::unique_ptr<ZvFileFormat>> m_formats;
    std::unique_ptr<IZvFileProvider> m_native;
};
