// Timing for the benchmark programs: the best of a few runs, and a line
// that sets a figure beside the reference measured in the same run.
#ifndef KX_BENCH_MEASURE_H
#define KX_BENCH_MEASURE_H

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace kx::bench {

// Seconds of the fastest of `runs` calls of work.
template <typename Work>
double BestSeconds(Work &&work, int runs = 5) {
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count());
    }
    return best;
}

// Makes the bytes at data count as read, so that the compiler keeps the
// reference work (a memcpy into a buffer nobody reads) instead of removing it.
inline void Keep(const void *data) { asm volatile("" : : "r"(data) : "memory"); }

// "name: 123.4 MB/s (reference 5678.9 MB/s, ratio 0.022)".
inline void PrintRate(const char *name, double bytes, double seconds, const char *reference,
                      double referenceSeconds) {
    const double rate = bytes / seconds / 1e6, referenceRate = bytes / referenceSeconds / 1e6;
    std::printf("%-32s %10.1f MB/s   %s %10.1f MB/s   ratio %.3f\n", name, rate, reference, referenceRate,
                rate / referenceRate);
}

// "name: 12.3 ms, 812345 rows/s (limit 1.2 ms, ratio 10.25)": a page's
// time beside the time of writing its bytes; the ratio is how many times
// longer the page takes.
inline void PrintTime(const char *name, double seconds, int rows, double limitSeconds) {
    std::printf("%-32s %9.2f ms %12.0f rows/s   limit %8.2f ms   ratio %7.2f\n", name, seconds * 1e3,
                rows / seconds, limitSeconds * 1e3, seconds / limitSeconds);
}

}  // namespace kx::bench

#endif
