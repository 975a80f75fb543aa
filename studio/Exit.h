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

inline void printLine(std::FILE* stream, const QByteArray& text)
{
    std::fprintf(stream, "%s\n", text.constData());
}

} // namespace halvern::studio
