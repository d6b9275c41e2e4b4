#pragma once

// Every text that a person sees, by number: ZV_STRING(number, name, English text), in the order of the numbers. UTF-8, printf-style
// where the text takes values. To add one, add its line here; ZvStrings finds it by ZvStr::name or by the number.
//
// Numbers are grouped by what they belong to:
//   10000 validation of geometry    40000 line types    41000 values    42000 palette    45000 coordinates and units
//   46000 commands                  47000 loading       48000 saving    49000 undo       50000 drawing and tables
//   60000 titles of bars and dialogs
#define ZV_STRING_TABLE(ZV_STRING)                                                                           \
    ZV_STRING(10002, InvalidGeometry, "The geometry holds a value that is not a number")                     \
    ZV_STRING(10050, EmptyCompound, "A compound must hold at least one object")                              \
    ZV_STRING(40000, LineTypeDashed, "Dashed")                                                               \
    ZV_STRING(40001, LineTypeDotted, "Dotted")                                                               \
    ZV_STRING(41000, ByLayer, "By Layer")                                                                    \
    ZV_STRING(41001, ByBlock, "By Block")                                                                    \
    ZV_STRING(41002, Continuous, "Continuous")                                                               \
    ZV_STRING(41003, Unknown, "Unknown")                                                                     \
    ZV_STRING(45000, DefaultUcs, "World")                                                                    \
    ZV_STRING(47000, LoadCorruptQuestion,                                                                    \
              "The file appears to be corrupt. Do you want to continue trying to load it?")                  \
    ZV_STRING(47001, LoadNewerTitle, "Version Change")                                                       \
    ZV_STRING(                                                                                               \
        47002, LoadNewerQuestion,                                                                            \
        "This file has been saved with a newer version of Zelvan. \n You may open this file, but you will "  \
        "lose some information stored inside it. \n Do you want to continue loading this file?")             \
    ZV_STRING(47003, LoadBadSignature, "The file does not have the right signature")                         \
    ZV_STRING(47004, LoadBadChecksum, "The checksum failed. The data is very likely corrupt.")               \
    ZV_STRING(47005, LoadReadFailed, "An IO error occurred while trying to read the file.")                  \
    ZV_STRING(47006, LoadNoMemory, "Could not allocate enough memory to load the file")                      \
    ZV_STRING(47007, LoadBadHeader, "The file header cannot be read.")                                       \
    ZV_STRING(47008, LoadRefused, "The file was not loaded: %s")                                             \
    ZV_STRING(47009, LoadNeedsNewer,                                                                         \
              "%s was saved by a newer version of Zelvan (format %d) and needs at least format %d to be "    \
              "read; this "                                                                                  \
              "program reads up to format %d. Update the program.")                                          \
    ZV_STRING(                                                                                               \
        47010, LoadNewerWarning,                                                                             \
        "The file was saved by a newer version of Zelvan (format %d); what this program (format %d) does "   \
        "not know is left out.")                                                                             \
    ZV_STRING(47011, LoadUnreadable, "The %s at byte %I64d cannot be read: %s.")                             \
    ZV_STRING(47012, LoadSectionOutside,                                                                     \
              "The %s section is said to begin at byte %I64d, which is not between the header and the end "  \
              "at byte %I64d.")                                                                              \
    ZV_STRING(47013, LoadBadEntityHead,                                                                      \
              "The entity record head is said to be %u bytes long; 12 to 4096 can be read.")                 \
    ZV_STRING(47014, LoadSolidInSolid, "The body of the file is said to hold a compressed body again.")      \
    ZV_STRING(47015, LoadDamagedRecords,                                                                     \
              "%d records of kind %s are damaged and were left out; the first begins at byte %I64d%s.")      \
    ZV_STRING(47016, LoadListEnds,                                                                           \
              "A list of objects breaks off at byte %I64d%s; %I64d of its objects were not loaded.")         \
    ZV_STRING(47017, LoadInBlock, " of the content of the block at byte %I64d")                              \
    ZV_STRING(47018, LoadObjectLost, "%d object could not be loaded. It was generated by the module %s")     \
    ZV_STRING(47019, LoadObjectsLost,                                                                        \
              "%d objects could not be loaded. They were generated by the module %s")                        \
    ZV_STRING(47020, LoadOutOfMemory, "There is not enough memory to load the drawing.")                     \
    ZV_STRING(                                                                                               \
        48000, SaveNoMemory,                                                                                 \
        "A part of the drawing does not fit into memory while it is saved (%s). Save with a compression "    \
        "level below 6.")                                                                                    \
    ZV_STRING(48001, SaveOutOfMemory, "There is not enough memory to save the drawing.")                     \
    ZV_STRING(48002, SaveWriteFailed, "The file could not be written: %s")                                   \
    ZV_STRING(48003, SaveEntityFailed,                                                                       \
              "The object %u (%s) could not be written and is missing in the file.")                         \
    ZV_STRING(48004, SaveNoPreview, "No preview picture could be made; the file is complete without it.")
