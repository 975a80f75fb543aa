#include "studio/Console.h"

#include <unistd.h>

namespace halvern::studio {

void printLine(std::FILE* stream, const QByteArray& text)
{
    std::fprintf(stream, "%s\n", text.constData());
    std::fflush(stream);
}

std::FILE* claimOutput()
{
    std::FILE* output = fdopen(dup(STDOUT_FILENO), "w");
    if (!output)
        return stdout;
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return output;
}

} // namespace halvern::studio
