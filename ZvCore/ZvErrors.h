#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Every numbered error of the engine, with its meaning in ZvErrors.cpp's table.
enum class ZvErrorCode : int {
    None = 0,
    NoDefaultLayer = 5, ///< also: writing the global checksum
    OutOfMemory = 10,
    NameTable = 13,
    BrushIndex = 14,
    TableIndex = 15,
    BadRecordName = 17,
    Checksum = 36,
    UnknownSection = 42,
    NullInSplit = 46,
    BlockDigest = 2003,
    BlockStack = 2005, ///< compression failure, block stack underflow
    NeedsNewerProgram = 2006,
    BlockUnreadable = 2007,
    NullName = 10009,
    NameTaken = 10020,
    EntityTwiceInVerb = 10040,
    ModifiedTwice = 10041,
    VerbLayerGone = 10042,
    VerbEntityGone = 10043,
    VerbRecordGone = 10044,
};

/// The numbered error reporter. An error is a number and a context text naming class and method
/// ("ZvEntityNameTable.Remove"); reporting never stops the operation. Thread: the window thread.
class ZV_API ZvErrors {
public:
    struct Entry {
        int code = 0;
        std::string context;
    };
    using Sink = std::function<void(const Entry&)>;

    static void Report(int code, std::string_view context);
    static void Report(ZvErrorCode code, std::string_view context) { Report(int(code), context); }
    /// An error that ends the operation with a text for the user ("Null record to table.insert"); code 1.
    static void Fatal(std::string_view text) { Report(kFatal, text); }
    static constexpr int kFatal = 1;

    /// Meaning of a number, "unknown error" for one that is not in the table.
    static std::string_view Meaning(int code);
    /// The most recent errors, newest last (at most 256 are kept).
    static const std::vector<Entry>& Recent();
    static void ClearRecent();
    /// Replaces the sink (default: the log) and returns the former one.
    static Sink SetSink(Sink sink);
};

/// Collects what is reported during its life and keeps it from the former sink. For tests and for operations
/// that show their errors themselves.
class ZV_API ZvErrorCapture {
public:
    ZvErrorCapture();
    ~ZvErrorCapture();
    ZvErrorCapture(const ZvErrorCapture&) = delete;
    ZvErrorCapture& operator=(const ZvErrorCapture&) = delete;
    const std::vector<ZvErrors::Entry>& Entries() const { return m_entries; }
    bool Has(int code) const;
    bool HasText(std::string_view part) const;

private:
    std::vector<ZvErrors::Entry> m_entries;
    ZvErrors::Sink m_former;
};
