#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace halvern::bench {

template <class Work>
double getMilliseconds(Work work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

/// Time on the processor, so that a busy machine disturbs less.
template <class Work>
double getProcessorMilliseconds(Work work)
{
    const std::clock_t begin = std::clock();
    work();
    return 1000.0 * double(std::clock() - begin) / CLOCKS_PER_SEC;
}

inline double getMedian(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Prints a line; whether the value keeps the bound.
inline bool report(const char* question, double value, double bound, const char* unit)
{
    const bool holds = value <= bound;
    std::printf("%-64s %8.3f%s  (at most %g%s)  %s\n", question, value, unit, bound, unit,
                holds ? "ok" : "BROKEN");
    std::fflush(stdout);
    return holds;
}

/// Runs both works in turns and takes the median of the rounds' ratios: what else the machine does slows
/// both of a round.
template <class Work, class Floor>
bool compare(const char* question, double bound, int rounds, Work work, Floor floor)
{
    work();
    floor();
    std::vector<double> times;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i) {
        times.push_back(getMilliseconds(work));
        floors.push_back(getMilliseconds(floor));
        ratios.push_back(times.back() / floors.back());
    }
    std::printf("    %.3f ms, floor %.3f ms\n", getMedian(times), getMedian(floors));
    return report(question, getMedian(ratios), bound, "x");
}

} // namespace halvern::bench
