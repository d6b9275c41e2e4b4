#pragma once

/// What the program tells its caller. Documented in Docs/zvd.md and in --help.
enum class ExitCode : int {
    Ok = 0,
    Findings = 1,     ///< check: the file breaks the format; convert --strict: something was lost
    Usage = 2,        ///< the command line does not make sense
    NoInput = 3,      ///< a source is missing, is a folder, cannot be read, or is of no known kind
    BadInput = 4,     ///< a source is damaged or does not hold what its name says
    NoOutput = 5,     ///< the target cannot be written
    Internal = 70,    ///< a fault of the program
    Interrupted = 130 ///< Ctrl-C; targets are as they were before
};
