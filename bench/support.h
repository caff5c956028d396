// What the benchmarks share: square one-bit pictures, counters, and even random numbers.
//
// A benchmark that finds its answer wrong ends the run by Require or RequireNear: a wrong answer has no time.
#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "tarvex/raster.h"

namespace tarvex::bench {

inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "wrong answer: %s\n", what);
    std::abort();
}

inline void RequireNear(double value, double wanted, double slack, const char* what) {
    if (std::fabs(value - wanted) <= slack) return;
    std::fprintf(stderr, "wrong answer: %s: %.12g, not %.12g\n", what, value, wanted);
    std::abort();
}

/// From 0 to 1, the same on every system, which the standard's distributions are not.
inline double Uniform(std::mt19937& random) { return static_cast<double>(random()) / 4294967296.0; }

/// The process's peak so far: a figure for one benchmark only where that runs alone.
inline double PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// Seconds for each of so many items, beside the time of all.
inline void CountItems(benchmark::State& state, const char* name, std::size_t count) {
    state.counters[name] = static_cast<double>(count);
    state.counters["each"] =
        benchmark::Counter(static_cast<double>(count),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

inline int Size(const benchmark::State& state) { return static_cast<int>(state.range(0)); }

/// A square one-bit picture, white on black, in a bitmap.
class Picture {
  public:
    explicit Picture(int size) : m_handle(CImgProc::CreateBitmapBW(size, size)) {
        GetObject(m_handle, static_cast<int>(sizeof m_bitmap), &m_bitmap);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() { DeleteObject(m_handle); }

    HBITMAP Handle() const { return m_handle; }
    int Size() const { return m_bitmap.bmWidth; }
    void Set(int x, int y) { CImgProc::SetPixel(m_bitmap, x, y, true); }
    bool Get(int x, int y) const { return CImgProc::GetPixel(m_bitmap, x, y); }

    template <class Inside>
    void Fill(Inside inside) {
        for (int y = 0; y < Size(); ++y) {
            for (int x = 0; x < Size(); ++x) {
                if (inside(x, y)) Set(x, y);
            }
        }
    }

    void Disc(double cx, double cy, double radius) {
        for (int y = static_cast<int>(cy - radius); y <= cy + radius; ++y) {
            const double square = radius * radius - (y - cy) * (y - cy);
            if (square < 0) continue;
            const double half = std::sqrt(square);
            for (int x = static_cast<int>(std::ceil(cx - half)); x <= cx + half; ++x) Set(x, y);
        }
    }

  private:
    HBITMAP m_handle;
    BITMAP m_bitmap{};
};

}  // namespace tarvex::bench
