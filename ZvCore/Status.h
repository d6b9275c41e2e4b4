#pragma once

namespace Zv {

/// Result of an operation that can fail. Values above `Cancelled` belong to the command framework.
/// A function that returns a Status says in its contract where the reason can be read.
enum class [[nodiscard]] Status : int{
    Failure = 0,
    Success = 1,
    Cancelled = 2,
    /// A save that could not start (no format, no name, a save already running).
    NotStarted = 5,
};

[[nodiscard]] constexpr bool Ok(Status s) {
    return s == Status::Success;
}
[[nodiscard]] constexpr Status FromBool(bool ok) {
    return ok ? Status::Success : Status::Failure;
}

} // namespace Zv
