#include "studio/ProcessClock.h"

#include <fstream>
#include <sstream>
#include <string>

#include <ctime>
#include <unistd.h>

namespace halvern::studio {

namespace {

double bootMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

double readProcessStart()
{
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    // The program's name in parentheses may hold anything; the start, field 22, is the 20th after it.
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string field;
    for (int i = 0; i < 20; ++i)
        fields >> field;
    return fields ? std::stod(field) * 1e3 / sysconf(_SC_CLK_TCK) : bootMilliseconds();
}

} // namespace

double millisecondsSinceProcessStart()
{
    static const double start = readProcessStart();
    return bootMilliseconds() - start;
}

} // namespace halvern::studio
