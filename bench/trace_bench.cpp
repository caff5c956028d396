// How long does tracing the outlines of a one-bit picture take, from bits in memory to contours?
//
//   trace_bench --benchmark_filter='Blobs/4000'
//
// Pictures of several kinds, N by N pixels; a peer's benchmark has Peer in its name and runs with the
// peer's default settings. Counters: contours (and nodes for ours), and peak memory in megabytes,
// which is the process's so far: run one benchmark per process for a figure of its own.
#include <numbers>

#include "support.h"
#include "tarvex/contours.h"
#include "tarvex/tracing.h"

#ifdef TARVEX_BENCH_POTRACE
#include <potracelib.h>
#endif

namespace tarvex::bench {
namespace {

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

/// Lines of upright and slanted strokes with bowls, of a page's letters in size and number.
void Text(Picture& picture) {
    std::mt19937 random(3);
    const int n = picture.Size();
    constexpr int kLetter = 24, kLine = 48;
    for (int top = kLine; top + kLine < n; top += kLine) {
        for (int left = kLetter; left + kLetter < n; left += kLetter) {
            if (random() % 6 == 0) continue;  // between words
            const unsigned strokes = static_cast<unsigned>(random());
            for (int i = 0; i <= 24; ++i) {
                const double t = i;
                if ((strokes & 1U) != 0) picture.Disc(left + 3, top + t, 2.2);
                if ((strokes & 2U) != 0) picture.Disc(left + 15, top + t, 2.2);
                if ((strokes & 4U) != 0) picture.Disc(left + 3 + t / 2, top + t, 1.7);
                const double turn = 2 * std::numbers::pi * t / 24;
                if ((strokes & 24U) != 0)
                    picture.Disc(left + 9 + 6 * std::cos(turn), top + 17 + 7 * std::sin(turn), 1.7);
                else
                    picture.Disc(left + 3 + t / 2, top + ((strokes & 32U) != 0 ? 0 : 24), 1.7);
            }
        }
    }
}

/// Long thin curves across the picture, as a pen draws them.
void LineArt(Picture& picture) {
    std::mt19937 random(4);
    const double n = picture.Size();
    for (int line = 0; line < picture.Size() / 25; ++line) {
        double x = Uniform(random) * n, y = Uniform(random) * n,
               turn = 2 * std::numbers::pi * Uniform(random);
        const double bend = 0.02 * (Uniform(random) - 0.5);
        for (double s = 0; s < n / 2; s += 1) {
            x += std::cos(turn);
            y += std::sin(turn);
            turn += bend * std::sin(s / 70);
            picture.Disc(x, y, 1.5 + std::sin(s / 40));
        }
    }
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

using Draw = void (*)(Picture&);

void Trace(benchmark::State& state, Draw draw) {
    Picture picture(Size(state));
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
    Picture picture(Size(state));
    draw(picture);
    CShapeTrace tracer(picture.Handle());
    for ([[maybe_unused]] auto _ : state) {
        CPolyPolyBezier out;
        tracer.DoTrace(out, INT32_MAX);
    }
}

/// What `tarvex trace` does with a picture once that is read: every outline, placed by the greys.
void Outlines(benchmark::State& state, Draw draw) {
    std::vector<std::uint8_t> levels;
    const int n = Size(state);
    {
        Picture picture(n);
        draw(picture);
        for (int y = 0; y < n; ++y) {
            for (int x = 0; x < n; ++x) levels.push_back(picture.Get(x, y) ? 0 : 255);
        }
    }
    const GreyView view{levels.data(), n, n, n};
    CPolyPolyBezier out;
    for ([[maybe_unused]] auto _ : state) {
        if (!TraceOutlines(view, {}, out)) state.SkipWithError("nothing traced");
    }
    double nodes = 0;
    for (int i = 0; i < out.GetCount(); ++i) nodes += out[i].GetSize();
    state.counters["contours"] = out.GetCount();
    state.counters["nodes"] = nodes;
    state.counters["peakMB"] = PeakMegabytes();
}

#ifdef TARVEX_BENCH_POTRACE
void PeerPotrace(benchmark::State& state, Draw draw) {
    Picture picture(Size(state));
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

#define TARVEX_TRACE(kind, ...)                                                         \
    BENCHMARK_CAPTURE(Trace, kind, kind)->Unit(benchmark::kMillisecond) __VA_ARGS__;    \
    BENCHMARK_CAPTURE(Outlines, kind, kind)->Unit(benchmark::kMillisecond) __VA_ARGS__; \
    TARVEX_TRACE_PEER(kind, __VA_ARGS__)

TARVEX_TRACE(Blobs, ->Arg(1000)->Arg(4000)->Arg(8000));
TARVEX_TRACE(Text, ->Arg(1000)->Arg(4000)->Arg(8000));
TARVEX_TRACE(LineArt, ->Arg(1000)->Arg(4000)->Arg(8000));
TARVEX_TRACE(Noise, ->Arg(1000)->Arg(4000)->Arg(8000));
TARVEX_TRACE(Comb, ->Arg(1000)->Arg(2000));
TARVEX_TRACE(Rings, ->Arg(1000)->Arg(2000)->Arg(4000));
TARVEX_TRACE(Spiral, ->Arg(1000)->Arg(2000)->Arg(4000));
TARVEX_TRACE(Checkerboard, ->Arg(1000)->Arg(2000));

BENCHMARK_CAPTURE(WalkOnly, Noise, Noise)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);
BENCHMARK_CAPTURE(WalkOnly, Comb, Comb)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);
BENCHMARK_CAPTURE(WalkOnly, Spiral, Spiral)->Unit(benchmark::kMillisecond)->Arg(2000)->Arg(4000);
BENCHMARK_CAPTURE(WalkOnly, Checkerboard, Checkerboard)->Unit(benchmark::kMillisecond)->Arg(1000)->Arg(2000);

}  // namespace
}  // namespace tarvex::bench
