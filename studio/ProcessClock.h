#pragma once

namespace halvern::studio {

/// Milliseconds since the system started this process, loading of libraries included. The start is known
/// to 10 ms and rounded down, so the result is never too small.
double millisecondsSinceProcessStart();

} // namespace halvern::studio
