#pragma once

// Every text that a person sees, by number: ZV_STRING(number, name, English text), in the order of the numbers. UTF-8, printf-style
// where the text takes values. To add one, add its line here; ZvStrings finds it by ZvStr::name or by the number.
//
// Numbers are grouped by what they belong to:
//   10000 validation of geometry    40000 line types    41000 values    42000 palette    45000 coordinates and units
//   46000 commands                  47000 loading       48000 saving    49000 undo       50000 drawing and tables
//   60000 titles of bars and dialogs
#define ZV_STRING_TABLE(ZV_STRING)                                                                                 \
    ZV_STRING(10002, InvalidGeometry, "The geometry holds a value that is not a number")                           \
    ZV_STRING(40000, LineTypeDashed, "Dashed")                                                                     \
    ZV_STRING(40001, LineTypeDotted, "Dotted")                                                                     \
    ZV_STRING(41000, ByLayer, "By Layer")                                                                          \
    ZV_STRING(41001, ByBlock, "By Block")                                                                          \
    ZV_STRING(41002, Continuous, "Continuous")                                                                     \
    ZV_STRING(41003, Unknown, "Unknown")                                                                           \
    ZV_STRING(45000, DefaultUcs, "World")

