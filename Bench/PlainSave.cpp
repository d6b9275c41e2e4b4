#include "PlainSave.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/DiskFile.h"
#include <cstdio>
#include <cstdlib>

void Die(const std::string& why) {
    std::fprintf(stderr, "benchmark failed: %s\n", why.c_str());
    std::exit(1);
}

void SavePlain(ZvDrawing& drawing, const std::filesystem::path& path, int level) {
    std::string why;
    const auto file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Create, why);
    ZvNativeOptions options;
    options.compressionLevel = level;
    ZvNativeFile native(options);
    if (!file || !Zv::Ok(native.WriteFile(&drawing, file.get())) || !file->Flush())
        Die("cannot save " + path.string() + " " + why);
}
