#include "studio/Console.h"

#include <unistd.h>

namespace halvern::studio {

bool printLine(std::FILE* stream, const QByteArray& text)
{
    return std::fprintf(stream, "%s\n", text.constData()) >= 0 && std::fflush(stream) == 0;
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
