#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"

/// Numbers of the texts, by name; the texts stand in ZvStringTable.h.
namespace ZvStr {
enum Id : int {
#define ZV_STRING(number, name, text) name = number,
#include "Zelvan/ZvStringTable.h"
#undef ZV_STRING
};
} // namespace ZvStr

/// The string table: texts for users, by number.
class ZV_API ZvStrings {
public:
    /// UTF-8, valid for ever. The empty text for a number that the table does not have.
    static const char* Get(int id);
    static XStringW GetW(int id) { return XStringW::FromUtf8(Get(id)); }
    static bool Has(int id);
};
