#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#    include <sanitizer/allocator_interface.h>
#else
#    include <malloc.h>
#endif

namespace halvern::test {

/// Bytes that are allocated on the heap now.
inline std::size_t heapBytes()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

/// Bytes of memory that the process occupies.
inline std::size_t residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * 4096;
}

/// Files, sockets and devices that the process holds open.
inline std::size_t openFileCount()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace halvern::test
