#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace halvern::test {

/// Bytes of memory that the process occupies.
inline std::size_t getResidentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * 4096;
}

/// Files, sockets and devices that the process holds open.
inline std::size_t getOpenFileCount()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace halvern::test
