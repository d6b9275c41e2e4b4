#pragma once
#include "ZvCore/Api.h"
#include <functional>
#include <string>
#include <string_view>

/// The log: lines with a level, handed to one sink. Off (no sink) until a host asks for it.
/// Thread-safe: worker threads may write.
class ZV_API ZvLog {
public:
    enum class Level { Trace, Info, Warning, Error, Forensic };
    using Sink = std::function<void(Level, std::string_view)>;

    static void Write(Level level, std::string_view text);
    /// printf-style; texts that the engine documents ("file version %d\n") go through here.
    static void Printf(Level level, const char* format, ...)
#if defined(__GNUC__) && !defined(_WIN32)
        __attribute__((format(printf, 2, 3)))
#endif
        ;
    /// Replaces the sink and returns the former one, which no thread runs any more. An empty sink turns the
    /// log off.
    static Sink SetSink(Sink sink);
    static bool IsOn();
};
