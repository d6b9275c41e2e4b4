#include "ZvCore/Log.h"
#include "ZvCore/TextFormat.h"
#include <atomic>
#include <cstdarg>
#include <memory>
#include <mutex>

namespace {

struct State {
    std::recursive_mutex mutex; // held while the sink runs, so that lines never mix; a sink may itself log
    std::shared_ptr<const ZvLog::Sink> sink;
    std::atomic<bool> isOn{false};
};

State& TheState() {
    static State state;
    return state;
}

} // namespace

void ZvLog::Write(Level level, std::string_view text) {
    if (!IsOn())
        return;
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    if (const auto sink = state.sink) // kept alive: the sink may replace itself
        (*sink)(level, text);
}

void ZvLog::Printf(Level level, const char* format, ...) {
    if (!IsOn())
        return;
    va_list args;
    va_start(args, format);
    const std::string text = ZvCore::TextFormat::FormatV(format, args);
    va_end(args);
    Write(level, text);
}

ZvLog::Sink ZvLog::SetSink(Sink sink) {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    const auto former = state.sink;
    state.isOn = bool(sink);
    state.sink = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    return former ? *former : Sink();
}

bool ZvLog::IsOn() {
    return TheState().isOn.load(std::memory_order_relaxed);
}
