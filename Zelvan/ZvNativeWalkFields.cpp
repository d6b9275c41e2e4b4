#include "Zelvan/Tables/ZvFieldIO.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvNativeRecordKinds.h"
#include "Zelvan/ZvNativeWalk.h"
#include "Zelvan/ZvUniSize.h"
#include <memory>

// The fields of table records are told by the records themselves: an empty one of the kind visits its fields, and the visitor reads
// each from the file.

namespace {

std::string TextOf(bool v) {
    return v ? "true" : "false";
}
std::string TextOf(int32_t v) {
    return std::to_string(v);
}
std::string TextOf(uint32_t v) {
    return std::to_string(v);
}
std::string TextOf(int64_t v) {
    return std::to_string(v);
}
std::string TextOf(double v) {
    return XStringA::Format("%.17g", v).Str();
}
std::string TextOf(const XStringW& v) {
    return '"' + v.ToUtf8() + '"';
}
std::string TextOf(const Vec3d& v) {
    return TextOf(v.x) + " " + TextOf(v.y) + " " + TextOf(v.z);
}
std::string TextOf(const Guid& v) {
    return v.ToString().ToUtf8();
}
std::string TextOf(const std::vector<double>& v) {
    return std::to_string(v.size()) + " numbers";
}
std::string TextOf(const std::vector<uint8_t>& v) {
    return std::to_string(v.size()) + " bytes";
}
std::string TextOf(const ZvCore::BinXmlNode& v) {
    return "node \"" + v.Name() + "\"";
}
template <class T>
auto TextOf(const T& v) -> decltype(v.ToString().ToUtf8()) {
    return v.ToString().ToUtf8();
}

class FieldTeller final : public ZvRecordFields {
public:
    FieldTeller(ZvNativeWalk& walk, ZvNativeCursor& cursor)
        : m_walk(walk), m_cursor(cursor), m_reader({cursor.Here(), size_t(cursor.Left())}) {}

    void Field(const char* id, bool& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, int32_t& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, uint32_t& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, int64_t& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, double& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, XStringW& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvColor& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvBrush& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvLineType& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvLineWidth& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvUniSize& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, Vec3d& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, Guid& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, std::vector<double>& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, std::vector<uint8_t>& value, unsigned how) override { Told(id, value, how); }
    void Field(const char* id, ZvCore::BinXmlNode& value, unsigned how) override { Told(id, value, how); }

private:
    template <class T>
    void Told(const char* id, T& value, unsigned how) {
        const size_t before = m_reader.Remaining();
        m_reader.Field(id, value, how);
        const size_t taken = before - m_reader.Remaining();
        if (!taken || m_reader.IsShort())
            return;
        m_walk.Tell(m_cursor, taken, id, TextOf(value));
        m_cursor.Skip(taken);
    }
    ZvNativeWalk& m_walk;
    ZvNativeCursor& m_cursor;
    ZvFieldReader m_reader;
};

} // namespace

void ZvNativeWalk::RecordFields(ZvNativeCursor& cursor, uint32_t code) {
    if (const std::unique_ptr<ZvTableRecord> record = ZvNativeRecordKinds::Make(code)) {
        FieldTeller teller(*this, cursor);
        record->VisitFields(teller);
    }
    if (cursor.Left())
        Tell(cursor, cursor.Left(), "further fields", std::to_string(cursor.Left()) + " bytes");
}
