#pragma once

#include <QByteArray>

#include <cstdio>

namespace halvern::studio {

/// Exit codes of the program.
enum ExitCode {
    ExitDone = 0,
    ExitNoOpenGL = 1,
    ExitFile = 2, ///< a file cannot be read or written
    ExitUsage = 64
};

/// False, with errno, when the line cannot be written.
bool printLine(std::FILE* stream, const QByteArray& text);

/// The standard output for the caller alone: from now on, what the libraries print there (OpenSceneGraph its
/// notices) goes to the standard error.
std::FILE* claimOutput();

} // namespace halvern::studio
