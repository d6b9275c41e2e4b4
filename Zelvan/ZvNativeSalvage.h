#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/IFile.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Progress.h"
#include "ZvCore/Status.h"
#include <cstdint>
#include <string>
#include <vector>

class ZvDrawing;

/// Reads what can be read of a damaged native file. The file is searched for pieces that hold together (blocks whose digest fits or that
/// inflate, frames whose lengths agree, records that chain), whatever its header and its lengths say; what was found is loaded
/// as any file is. Blocks that are damaged are searched for the records in them, compressed ones as far as they inflate.
/// A transfer as text that put a byte in front of every line feed is undone, and what follows the end of a drawing is left out.
class ZV_API ZvNativeSalvage {
public:
    struct Options {
        ZvCore::IProgress* progress = nullptr;
    };
    /// Bytes that could not be made use of as they stand. In a solid file positions are those of its body.
    struct Stretch {
        uint64_t offset = 0;
        uint64_t length = 0;
        uint64_t records = 0; ///< of objects that were found in it nevertheless
    };
    /// A layer, or the objects that a block is made of.
    struct Layer {
        std::string name;  ///< as in the drawing
        std::string sheet; ///< the layout that it belongs to; empty for the drawing's own
        bool isBlock = false;
        bool renamed = false;           ///< its own name is lost
        bool doubtfulName = false;      ///< its record was in a damaged block
        bool contentsLost = false;      ///< what it owned was not found, and how much that was nobody tells
        bool attributesLost = false;    ///< some or all of them
        bool attributesUnknown = false; ///< whether it had any is lost
        uint64_t stated = 0;            ///< objects by the file; 0 when that is lost, too
        uint64_t read = 0;              ///< records found for it, be they readable or not
        uint64_t doubtful = 0; ///< of these: from blocks that are damaged or that nothing vouches for
        uint64_t saved = 0;    ///< objects that it has in the drawing
        uint64_t Lost() const { return stated > saved ? stated - saved : 0; }
    };
    /// A table of which records are missing.
    struct Table {
        std::string name;
        std::string sheet;   ///< as above
        uint64_t stated = 0; ///< records by the file
        uint64_t read = 0;
    };
    struct Result {
        Zv::Status status = Zv::Status::Failure; ///< Success: the drawing holds what was found
        bool wasSound = false; ///< nothing was wrong: the drawing is that of an ordinary load
        bool isWhole = false;  ///< the drawing is whole though something was wrong with the file
        bool solid = false;
        bool wasText =
            false; ///< every line feed had got a carriage return: positions are those without these
        bool lostReturns = false; ///< it seems that a transfer as text took carriage returns away
        bool headerLost = false, settingsLost = false, clientsLost = false;
        uint64_t fileLength = 0;
        uint64_t statedLength = 0;  ///< of the file, by its header; 0 when that is lost
        uint64_t bodyLength = 0;    ///< of a solid file: what inflates of its body,
        uint64_t statedBody = 0;    ///< and how much that should be; 0 when nobody tells
        Stretch behind;             ///< what follows the end of the drawing, and was left out
        bool anotherBehind = false; ///< it begins as a drawing does
        uint64_t blocks = 0;        ///< used whole
        uint64_t damagedBlocks = 0; ///< used in part, or not at all
        uint64_t stated = 0;        ///< objects that the file says it has; 0 when nothing tells
        uint64_t recordsFound = 0;  ///< of objects, on the layers told below
        uint64_t saved = 0;         ///< objects that these layers have in the drawing
        std::vector<Stretch> damage;
        std::vector<Layer>
            layers; ///< in the order of the drawing's table, then its blocks, then those of its layouts
        std::vector<Table> tables;            ///< that lack records
        std::vector<std::string> lostLayouts; ///< that are there, but whose drawing is lost
        uint64_t tablesLost = 0;              ///< of the drawing and its layouts: nothing of them was found
        IOErrorSet errors;                    ///< what the loading of the pieces told
    };
    /// Into a drawing that is empty. The stream is only read, and stays where it was.
    static Result Run(ZvCore::IFile& file, ZvDrawing& drawing, const Options& options);
    static Result Run(ZvCore::IFile& file, ZvDrawing& drawing) { return Run(file, drawing, Options{}); }
};
