#include "Zelvan/DrawingAux/ZvSwapFile.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Platform/Platform.h"

ZvSwapFile::ZvSwapFile() = default;

ZvSwapFile::~ZvSwapFile() {
    if (!m_file)
        return;
    m_file.reset();
    (void)ZvPlatform::DeleteFileIfThere(m_path);
}

bool ZvSwapFile::Open(std::string& why) {
    if (m_file)
        return true;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) {
        why = "no folder for temporary files: " + error.message();
        return false;
    }
    m_path = folder / ("zelvan-" + Guid::New().ToString().ToUtf8() + ".swap");
    m_file = ZvCore::DiskFile::Open(m_path, ZvCore::DiskFile::Mode::CreateNew, why);
    return m_file != nullptr;
}

bool ZvSwapFile::Store(std::span<const uint8_t> bytes, Piece& piece, std::string& why) {
    if (!Open(why))
        return false;
    if (!m_file->Seek(m_end) || m_file->Write(bytes.data(), bytes.size()) != bytes.size() ||
        !m_file->Flush()) {
        why = m_file->ErrorText();
        m_file->ClearError();
        return false;
    }
    piece = {m_end, bytes.size()};
    m_end += bytes.size();
    m_held += bytes.size();
    return true;
}

bool ZvSwapFile::Load(const Piece& piece, std::vector<uint8_t>& bytes, std::string& why) {
    if (!m_file || piece.offset > m_end || piece.length > m_end - piece.offset) {
        why = "nothing was stored there";
        return false;
    }
    bytes.resize(size_t(piece.length));
    if (m_file->Seek(piece.offset) && m_file->Read(bytes.data(), bytes.size()) == bytes.size())
        return true;
    why = m_file->ErrorText();
    m_file->ClearError();
    return false;
}

void ZvSwapFile::Release(const Piece& piece) {
    m_held -= std::min(piece.length, m_held);
    if (m_held == 0)
        m_end = 0;
}
