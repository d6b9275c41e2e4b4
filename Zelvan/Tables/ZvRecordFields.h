#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/BinXml.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <type_traits>
#include <vector>

class ZvBrush;
class ZvColor;
class ZvLineType;
class ZvLineWidth;
class ZvUniSize;

/// Visits the fields of a record or table in a fixed order. A class names each field once (identifier,
/// storage, how it is used); writing, reading, showing as properties and setting from properties are
/// visitors.
///
/// The order is the order in the file: new fields go to the end. A field that a shorter record lacks keeps
/// its value, so readers visit a freshly made object. The identifier is the property's; labels come from the
/// string table.
class ZV_API ZvRecordFields {
public:
    /// How a field takes part.
    enum How : unsigned {
        kStored = 1,   ///< in files
        kShown = 2,    ///< as a property
        kSettable = 4, ///< through properties
        kHidden = kStored,
        kReadOnly = kStored | kShown,
        kAll = kStored | kShown | kSettable,
    };

    virtual ~ZvRecordFields() = default;
    virtual void Field(const char* id, bool& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, int32_t& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, uint32_t& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, int64_t& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, double& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, XStringW& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, ZvColor& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, ZvBrush& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, ZvLineType& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, ZvLineWidth& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, ZvUniSize& value, unsigned how = kAll) = 0;
    virtual void Field(const char* id, Vec3d& value, unsigned how = kAll) = 0;
    // Never shown: identities and bulk data.
    virtual void Field(const char* id, Guid& value, unsigned how = kHidden) = 0;
    virtual void Field(const char* id, std::vector<double>& value, unsigned how = kHidden) = 0;
    virtual void Field(const char* id, std::vector<uint8_t>& value, unsigned how = kHidden) = 0;
    virtual void Field(const char* id, ZvCore::BinXmlNode& value, unsigned how = kHidden) = 0;

    /// An enumeration, stored as a 32-bit number. A number below 0 or above `last` leaves the value alone.
    template <class E>
    void Enum(const char* id, E& value, E last, unsigned how = kAll) {
        static_assert(std::is_enum_v<E>);
        int32_t number = int32_t(value);
        Field(id, number, how);
        if (number >= 0 && number <= int32_t(last))
            value = E(number);
    }
};
