#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvUniSize.h"
#include "ZvCore/IFile.h"
#include <cstring>

// --- writer ------------------------------------------------------------------------------------------------

void ZvFieldWriter::Bytes(const void* bytes, size_t count) {
    const auto* first = static_cast<const uint8_t*>(bytes);
    m_target.insert(m_target.end(), first, first + count);
}

void ZvFieldWriter::Text(const XStringW& text) {
    Value(uint8_t(1)); // UTF-16
    Value(int32_t(text.Length()));
    Bytes(text.Ptr(), text.Length() * 2);
}

void ZvFieldWriter::Field(const char*, bool& value, unsigned how) {
    if (how & kStored)
        Value(uint8_t(value));
}

void ZvFieldWriter::Field(const char*, int32_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldWriter::Field(const char*, uint32_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldWriter::Field(const char*, int64_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldWriter::Field(const char*, double& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldWriter::Field(const char*, XStringW& value, unsigned how) {
    if (how & kStored)
        Text(value);
}

void ZvFieldWriter::Field(const char*, ZvColor& value, unsigned how) {
    if (how & kStored) {
        Value(value.NativeRGB());
        Value(int16_t(value.GetIndex()));
    }
}

void ZvFieldWriter::Field(const char*, ZvBrush& value, unsigned how) {
    if (how & kStored) {
        Value(int16_t(value.GetStyle()));
        Value(value.GetColor().NativeRGB());
        Value(int16_t(value.GetColor().GetIndex()));
    }
}

void ZvFieldWriter::Field(const char*, ZvLineType& value, unsigned how) {
    if (how & kStored)
        Value(value.hardGet());
}

void ZvFieldWriter::Field(const char*, ZvLineWidth& value, unsigned how) {
    if (how & kStored)
        Value(value.Raw());
}

void ZvFieldWriter::Field(const char*, ZvUniSize& value, unsigned how) {
    if (how & kStored)
        Value(value.Raw());
}

void ZvFieldWriter::Field(const char*, Vec3d& value, unsigned how) {
    if (how & kStored) {
        Value(value.x);
        Value(value.y);
        Value(value.z);
    }
}

void ZvFieldWriter::Field(const char*, Guid& value, unsigned how) {
    if (how & kStored)
        Bytes(value.bytes.data(), value.bytes.size());
}

void ZvFieldWriter::Field(const char*, std::vector<double>& value, unsigned how) {
    if (how & kStored) {
        Value(uint32_t(value.size()));
        Bytes(value.data(), value.size() * sizeof(double));
    }
}

void ZvFieldWriter::Field(const char*, std::vector<uint8_t>& value, unsigned how) {
    if (how & kStored) {
        Value(uint64_t(value.size()));
        Bytes(value.data(), value.size());
    }
}

void ZvFieldWriter::Field(const char*, ZvCore::BinXmlNode& value, unsigned how) {
    if (!(how & kStored))
        return;
    ZvCore::MemFile file;
    value.Write(file);
    Value(uint64_t(file.Length()));
    Bytes(file.Data(), size_t(file.Length()));
}

// --- reader ------------------------------------------------------------------------------------------------

bool ZvFieldReader::Bytes(void* target, size_t count) {
    if (m_short || count > Remaining()) {
        m_short = true;
        return false;
    }
    if (count)
        std::memcpy(target, m_bytes.data() + m_at, count);
    m_at += count;
    return true;
}

bool ZvFieldReader::Count(uint32_t& count, size_t itemSize) {
    uint32_t stored = 0;
    if (!Value(stored))
        return false;
    if (stored > Remaining() / itemSize) {
        m_short = true;
        return false;
    }
    count = stored;
    return true;
}

bool ZvFieldReader::Text(XStringW& text) {
    uint8_t encoding = 0;
    int32_t length = 0;
    if (!Value(encoding) || !Value(length))
        return false;
    const size_t size = encoding == 1 ? 2 : 1;
    if (encoding > 1 || length < 0 || size_t(length) > Remaining() / size) {
        m_short = true;
        return false;
    }
    std::u16string units(size_t(length), u'\0');
    if (encoding == 1) {
        Bytes(units.data(), units.size() * 2);
    } else {
        for (char16_t& unit : units) {
            int8_t narrow = 0; // narrow characters widen as signed, as everywhere in files
            Value(narrow);
            unit = char16_t(int16_t(narrow));
        }
    }
    text = XStringW(std::move(units));
    return true;
}

void ZvFieldReader::Field(const char*, bool& value, unsigned how) {
    uint8_t stored = 0;
    if ((how & kStored) && Value(stored))
        value = stored != 0;
}

void ZvFieldReader::Field(const char*, int32_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldReader::Field(const char*, uint32_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldReader::Field(const char*, int64_t& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldReader::Field(const char*, double& value, unsigned how) {
    if (how & kStored)
        Value(value);
}

void ZvFieldReader::Field(const char*, XStringW& value, unsigned how) {
    if (how & kStored)
        Text(value);
}

void ZvFieldReader::Field(const char*, ZvColor& value, unsigned how) {
    uint32_t rgb = 0;
    int16_t index = 0;
    if ((how & kStored) && Value(rgb) && Value(index))
        value = ZvColor(int(index), rgb);
}

void ZvFieldReader::Field(const char*, ZvBrush& value, unsigned how) {
    uint32_t rgb = 0;
    int16_t style = 0, index = 0;
    if ((how & kStored) && Value(style) && Value(rgb) && Value(index))
        value = ZvBrush(ZvColor(int(index), rgb), style);
}

void ZvFieldReader::Field(const char*, ZvLineType& value, unsigned how) {
    int16_t code = 0;
    if ((how & kStored) && Value(code))
        value.hardSet(code);
}

void ZvFieldReader::Field(const char*, ZvLineWidth& value, unsigned how) {
    float raw = 0;
    if ((how & kStored) && Value(raw))
        value.SetRaw(raw);
}

void ZvFieldReader::Field(const char*, ZvUniSize& value, unsigned how) {
    float raw = 0;
    if ((how & kStored) && Value(raw))
        value.SetRaw(raw);
}

void ZvFieldReader::Field(const char*, Vec3d& value, unsigned how) {
    Vec3d stored;
    if ((how & kStored) && Value(stored.x) && Value(stored.y) && Value(stored.z))
        value = stored;
}

void ZvFieldReader::Field(const char*, Guid& value, unsigned how) {
    if (how & kStored)
        Bytes(value.bytes.data(), value.bytes.size());
}

void ZvFieldReader::Field(const char*, std::vector<double>& value, unsigned how) {
    uint32_t count = 0;
    if (!(how & kStored) || !Count(count, sizeof(double)))
        return;
    value.resize(count);
    Bytes(value.data(), count * sizeof(double));
}

void ZvFieldReader::Field(const char*, std::vector<uint8_t>& value, unsigned how) {
    uint64_t count = 0;
    if (!(how & kStored) || !Value(count))
        return;
    if (count > Remaining()) {
        m_short = true;
        return;
    }
    value.resize(size_t(count));
    Bytes(value.data(), value.size());
}

void ZvFieldReader::Field(const char*, ZvCore::BinXmlNode& value, unsigned how) {
    uint64_t count = 0;
    if (!(how & kStored) || !Value(count))
        return;
    if (count > Remaining()) {
        m_short = true;
        return;
    }
    const auto file = ZvCore::MemFile::OverView(m_bytes.data() + m_at, size_t(count));
    m_at += size_t(count);
    ZvCore::BinXmlNode node;
    std::string why;
    if (node.Read(*file, why))
        value = std::move(node);
}
