// How long does tracing the outlines of a one-bit picture take, from bits in memory to contours?
//
//   trace_bench --benchmark_filter='Blobs/4000'
//
// Pictures of several kinds, N by N pixels; a peer's benchmark has Peer in its name and runs with the
// peer's default settings. Counters: contours (and nodes for ours), and peak memory in megabytes,
// which is the process's so far: run one benchmark per process for a figure of its own.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "tarvex/tracing.h"

#ifdef TARVEX_BENCH_POTRACE
#include <potracelib.h>
#endif

namespace {

using namespace tarvex;

/// Square one-bit pictures, white on black, in a bitmap.
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

  private:
    HBITMAP m_handle;
    BITMAP m_bitmap{};
};

/// One round spot per 2,000 pixels.
void Blobs(Picture& picture) {
    std::mt19937 random(1);
    const int n = picture.Size();
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    for (std::int64_t left = std::int64_t{n} * n / 2000; left > 0; --left) {
        const int cx = below(n), cy = below(n), r = 4 + below(9);
        for (int y = -r; y <= r; ++y) {
            for (int x = -r; x <= r; ++x) {
                if (x * x + y * y <= r * r) picture.Set(cx + x, cy + y);
            }
        }
    }
}

/// Every other pixel or so, by chance.
void Noise(Picture& picture) {
    std::mt19937 random(2);
    picture.Fill([&random](int, int) { return random() % 2 == 0; });
}

/// Teeth as long as the picture, on one spine.
void Comb(Picture& picture) {
    picture.Fill([](int x, int y) { return y < 8 || x % 20 < 10; });
}

/// Concentric rings.
void Rings(Picture& picture) {
    const double centre = picture.Size() / 2.0;
    picture.Fill([centre](int x, int y) { return std::fmod(std::hypot(x - centre, y - centre), 24) < 12; });
}

/// One band that winds from the centre to the edge.
void Spiral(Picture& picture) {
    const double centre = picture.Size() / 2.0;
    picture.Fill([centre](int x, int y) {
        const double turn = std::atan2(y - centre, x - centre) / (2 * std::numbers::pi);
        return std::fmod(std::hypot(x - centre, y - centre) / 24 + turn + 1, 1) < 0.5;
    });
}

/// Single pixels that touch at their corners.
void Checkerboard(Picture& picture) {
    picture.Fill([](int x, int y) { return (x + y) % 2 == 0; });
}

double PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

using Draw = void (*)(Picture&);

void Trace(benchmark::State& state, Draw draw) {
    Picture picture(static_cast<int>(state.range(0)));
    draw(picture);
    int contours = 0;
    double nodes = 0;
    for ([[maybe_unused]] auto _ : state) {
        CShapeTrace tracer(picture.Handle());
        CPolyPolyBezier out;
        if (!tracer.DoTrace(out, 10)) state.SkipWithError("there are no rasters");
        contours = out.GetCount();
        nodes = 0;
        for (int i = 0; i < contours; ++i) nodes += out[i].GetSize();
    }
    state.counters["contours"] = contours;
    state.counters["nodes"] = nodes;
    state.counters["peakMB"] = PeakMegabytes();
}

/// The walks alone: every boundary is too short for what is asked, so none is fitted or marked, and each seed
/// begins on an unmarked one.
void WalkOnly(benchmark::State& state, Draw draw) {
    Picture picture(static_cast<int>(state.range(0)));
    draw(picture);
    CShapeTrace tracer(picture.Handle());
    for ([[maybe_unused]] auto _ : state) {
        CPolyPolyBezier out;
        tracer.DoTrace(out, INT32_MAX);
    }
}

#ifdef TARVEX_BENCH_POTRACE
void PeerPotrace(benchmark::State& state, Draw draw) {
    Picture picture(static_cast<int>(state.range(0)));
    draw(picture);
    constexpr int kWordBits = 8 * static_cast<int>(sizeof(potrace_word));
    const int rowWords = (picture.Size() + kWordBits - 1) / kWordBits;
    std::vector<potrace_word> words(static_cast<std::size_t>(rowWords) *
                                    static_cast<std::size_t>(picture.Size()));
    for (int y = 0; y < picture.Size(); ++y) {
        for (int x = 0; x < picture.Size(); ++x) {
            if (!picture.Get(x, y)) continue;
            words[static_cast<std::size_t>(rowWords) * static_cast<std::size_t>(y) +
                  static_cast<std::size_t>(x / kWordBits)] |= potrace_word{1}
                                                              << (kWordBits - 1 - x % kWordBits);
        }
    }
    potrace_bitmap_t bitmap{picture.Size(), picture.Size(), rowWords, words.data()};
    potrace_param_t* param = potrace_param_default();
    int contours = 0;
    for ([[maybe_unused]] auto _ : state) {
        potrace_state_t* traced = potrace_trace(param, &bitmap);
        contours = 0;
        for (const potrace_path_t* path = traced->plist; path != nullptr; path = path->next) ++contours;
        potrace_state_free(traced);
    }
    potrace_param_free(param);
    state.counters["contours"] = contours;
    state.counters["peakMB"] = PeakMegabytes();
}
#define TARVEX_TRACE_PEER(kind, ...) \
    BENCHMARK_CAPTURE(PeerPotrace, kind, kind)->Unit(benchmark::kMillisecond) __VA_ARGS__
#else
#define TARVEX_TRACE_PEER(kind, ...)
#endif

#define TARVEX_TRACE(kind, ...)                                                      \
    BENCHMARK_CAPTURE(Trace, kind, kind)->Unit(benchmark::kMillisecond) __VA_ARGS__; \
    TARVEX_TRACE_PEER(kind, __VA_ARGS__)

TARVEX_TRACE(Blobs, ->Arg(1000)->Arg(4000)->Arg(8000));
TARVEX_TRACE(Noise, ->Arg(1000)->Arg(2000));
TARVEX_TRACE(Comb, ->Arg(1000)->Arg(2000));
TARVEX_TRACE(Rings, ->Arg(1000)->Arg(2000)->Arg(4000));
TARVEX_TRACE(Spiral, ->Arg(1000)->Arg(2000)->Arg(4000));
TARVEX_TRACE(Checkerboard, ->Arg(1000)->Arg(2000));

BENCHMARK_CAPTURE(WalkOnly, Noise, Noise)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);
BENCHMARK_CAPTURE(WalkOnly, Comb, Comb)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);
BENCHMARK_CAPTURE(WalkOnly, Spiral, Spiral)->Unit(benchmark::kMillisecond)->Arg(2000)->Arg(4000);
BENCHMARK_CAPTURE(WalkOnly, Checkerboard, Checkerboard)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);

}  // namespace
