#pragma once
#include "Zelvan/ZvStringTable.h"
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"

/// Numbers of the texts, by name.
namespace ZvStr {
#define ZV_STRING_ID(number, name, text) name = number,
enum Id : int { ZV_STRING_TABLE(ZV_STRING_ID) };
#undef ZV_STRING_ID
} // namespace ZvStr

/// The string table: texts for users, by number.
class ZV_API ZvStrings {
public:
    /// UTF-8, valid for ever. The empty text for a number that the table does not have.
    static const char* Get(int id);
    static XStringW GetW(int id) { return XStringW::FromUtf8(Get(id)); }
    static bool Has(int id);
};
