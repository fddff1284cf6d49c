// BenchTiming: the clock, medians and the memcpy floor the benchmarks share.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

inline double milliseconds(Clock::time_point since)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

inline double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

/// One memcpy of `from` into `to`, timed on its second copy, so that what the step before left in
/// the caches is written back first: the floor is a clean memcpy, as when copies run back to back.
inline double memcpyMs(const std::vector<unsigned char>& from, std::vector<unsigned char>& to)
{
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::ClobberMemory();
    const auto start = Clock::now();
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
    return milliseconds(start);
}

} // namespace bench
