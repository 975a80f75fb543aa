#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // NOLINT(bugprone-reserved-identifier)
#else
#    include <malloc.h>
#endif

namespace halvern::test {

/// Bytes that the program has allocated and not freed.
inline std::size_t getHeapInUse()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    // Large blocks are mapped outside the arenas and counted apart.
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace halvern::test
