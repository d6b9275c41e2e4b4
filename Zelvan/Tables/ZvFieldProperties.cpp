#include "Zelvan/Tables/ZvFieldProperties.h"
#include "Zelvan/Tables/ZvPropertyLabels.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvUniSize.h"
#include <cmath>
#include <limits>

// --- gatherer ----------------------------------------------------------------------------------------------

void ZvFieldGatherer::Show(const std::string& id, ZvProperty::Value value, unsigned how) {
    if (how & kShown)
        m_gatherer.Add(id, ZvPropertyLabels::Get(id), std::move(value), (how & kSettable) != 0);
}

void ZvFieldGatherer::Field(const char* id, bool& value, unsigned how) {
    Show(id, value, how);
}

void ZvFieldGatherer::Field(const char* id, int32_t& value, unsigned how) {
    Show(id, int64_t(value), how);
}

void ZvFieldGatherer::Field(const char* id, uint32_t& value, unsigned how) {
    Show(id, int64_t(value), how);
}

void ZvFieldGatherer::Field(const char* id, int64_t& value, unsigned how) {
    Show(id, value, how);
}

void ZvFieldGatherer::Field(const char* id, double& value, unsigned how) {
    Show(id, value, how);
}

void ZvFieldGatherer::Field(const char* id, XStringW& value, unsigned how) {
    Show(id, value, how);
}

void ZvFieldGatherer::Field(const char* id, ZvColor& value, unsigned how) {
    Show(id, value.ToString(), how);
}

void ZvFieldGatherer::Field(const char* id, ZvBrush& value, unsigned how) {
    Show(id, value.ToString(), how);
}

void ZvFieldGatherer::Field(const char* id, ZvLineType& value, unsigned how) {
    Show(id, value.ToString(), how);
}

void ZvFieldGatherer::Field(const char* id, ZvLineWidth& value, unsigned how) {
    Show(id, value.ToString(), how);
}

void ZvFieldGatherer::Field(const char* id, ZvUniSize& value, unsigned how) {
    Show(id, value.ToString(), how);
}

void ZvFieldGatherer::Field(const char* id, Vec3d& value, unsigned how) {
    const std::string base = id;
    Show(base + ".X", value.x, how);
    Show(base + ".Y", value.y, how);
    Show(base + ".Z", value.z, how);
}

// --- setter ------------------------------------------------------------------------------------------------

const ZvProperty::Value* ZvFieldSetter::Take(const std::string& id, unsigned how) {
    return how & kSettable ? m_setter.Take(id) : nullptr;
}

template <class T>
void ZvFieldSetter::Assign(T& target, T value) {
    if (!(target == value)) {
        target = std::move(value);
        m_changed = true;
    }
}

template <class T>
void ZvFieldSetter::Parsed(const char* id, T& value, unsigned how) {
    const ZvProperty::Value* given = Take(id, how);
    if (!given)
        return;
    const XStringW* text = std::get_if<XStringW>(given);
    T parsed = value;
    if (text && parsed.Parse(*text))
        Assign(value, parsed);
    else
        m_setter.Refuse(id, "the text cannot be read");
}

bool ZvFieldSetter::Number(const std::string& id, double& value, unsigned how) {
    const ZvProperty::Value* given = Take(id, how);
    if (!given)
        return false;
    const double* number = std::get_if<double>(given);
    const int64_t* whole = std::get_if<int64_t>(given);
    if ((!number && !whole) || (number && !std::isfinite(*number))) {
        m_setter.Refuse(id, "a number is needed");
        return false;
    }
    value = number ? *number : double(*whole);
    return true;
}

bool ZvFieldSetter::Whole(const char* id, int64_t low, int64_t high, int64_t& value, unsigned how) {
    const ZvProperty::Value* given = Take(id, how);
    if (!given)
        return false;
    const int64_t* whole = std::get_if<int64_t>(given);
    if (!whole || *whole < low || *whole > high) {
        m_setter.Refuse(id, "a whole number within range is needed");
        return false;
    }
    value = *whole;
    return true;
}

void ZvFieldSetter::Field(const char* id, bool& value, unsigned how) {
    const ZvProperty::Value* given = Take(id, how);
    if (!given)
        return;
    if (const bool* flag = std::get_if<bool>(given))
        Assign(value, *flag);
    else
        m_setter.Refuse(id, "yes or no is needed");
}

void ZvFieldSetter::Field(const char* id, int32_t& value, unsigned how) {
    int64_t whole = 0;
    if (Whole(id, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), whole, how))
        Assign(value, int32_t(whole));
}

void ZvFieldSetter::Field(const char* id, uint32_t& value, unsigned how) {
    int64_t whole = 0;
    if (Whole(id, 0, std::numeric_limits<uint32_t>::max(), whole, how))
        Assign(value, uint32_t(whole));
}

void ZvFieldSetter::Field(const char* id, int64_t& value, unsigned how) {
    int64_t whole = 0;
    if (Whole(id, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(), whole, how))
        Assign(value, whole);
}

void ZvFieldSetter::Field(const char* id, double& value, unsigned how) {
    double number = 0;
    if (Number(id, number, how))
        Assign(value, number);
}

void ZvFieldSetter::Field(const char* id, XStringW& value, unsigned how) {
    const ZvProperty::Value* given = Take(id, how);
    if (!given)
        return;
    if (const XStringW* text = std::get_if<XStringW>(given))
        Assign(value, *text);
    else
        m_setter.Refuse(id, "a text is needed");
}

void ZvFieldSetter::Field(const char* id, ZvColor& value, unsigned how) {
    Parsed(id, value, how);
}

void ZvFieldSetter::Field(const char* id, ZvBrush& value, unsigned how) {
    Parsed(id, value, how);
}

void ZvFieldSetter::Field(const char* id, ZvLineType& value, unsigned how) {
    Parsed(id, value, how);
}

void ZvFieldSetter::Field(const char* id, ZvLineWidth& value, unsigned how) {
    Parsed(id, value, how);
}

void ZvFieldSetter::Field(const char* id, ZvUniSize& value, unsigned how) {
    Parsed(id, value, how);
}

void ZvFieldSetter::Field(const char* id, Vec3d& value, unsigned how) {
    const std::string base = id;
    Vec3d moved = value;
    const bool x = Number(base + ".X", moved.x, how);
    const bool y = Number(base + ".Y", moved.y, how);
    const bool z = Number(base + ".Z", moved.z, how);
    if (x || y || z)
        Assign(value, moved);
}
