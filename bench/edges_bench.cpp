// How long does it take to find the edges of a grey picture, from levels in memory to a bitmap of edges?
//
//   edges_bench --benchmark_filter='4000'
//
// N by N pixels of discs in a little noise. The peer smooths by the same Gaussian, compares gradients by
// their true magnitudes, and runs in one thread, as ours do. Its thresholds are given, as they must be; ours
// are once given and once found.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "tarvex/edges.h"
#include "tarvex/raster.h"

#ifdef TARVEX_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace tarvex;

constexpr double kSigma = 1.4;

std::vector<std::uint8_t> Discs(int n) {
    std::vector<std::uint8_t> levels(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    std::mt19937 random(1);
    constexpr int cell = 100;
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n; ++x) {
            const double r = std::hypot(x % cell - cell / 2, y % cell - cell / 2);
            const auto noise = static_cast<int>(random() % 9) - 4;
            const int level = (r < 20 + (x / cell + y / cell) % 25 ? 60 : 180) + noise;
            levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(n) + static_cast<std::size_t>(x)] =
                static_cast<std::uint8_t>(level);
        }
    }
    return levels;
}

void Detect(benchmark::State& state, const EdgeOptions& options) {
    const int n = static_cast<int>(state.range(0));
    const auto levels = Discs(n);
    const GreyView view{levels.data(), n, n, n};
    CEdgeDetect edges;
    for ([[maybe_unused]] auto _ : state) {
        if (!edges.Detect(view, options)) state.SkipWithError("not detected");
    }
    BITMAP bitmap{};
    GetObject(edges.Bitmap(), sizeof bitmap, &bitmap);
    int count = 0;
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n; ++x) count += CImgProc::GetPixel(bitmap, x, y) ? 1 : 0;
    }
    state.counters["edge_pixels"] = count;
}

void Canny(benchmark::State& state) { Detect(state, {EdgeMethod::Canny, kSigma, EdgeThresholds{20, 50}}); }
void CannyFindingThresholds(benchmark::State& state) { Detect(state, {EdgeMethod::Canny, kSigma, {}}); }
void ShenCastan(benchmark::State& state) { Detect(state, {EdgeMethod::ShenCastan, kSigma, {}}); }
void ShenCastanWide(benchmark::State& state) { Detect(state, {EdgeMethod::ShenCastan, 10 * kSigma, {}}); }

BENCHMARK(Canny)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(CannyFindingThresholds)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(ShenCastan)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(ShenCastanWide)->Arg(4000)->Unit(benchmark::kMillisecond);

/// From the bitmap of edges to curves.
void Curves(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto levels = Discs(n);
    CEdgeDetect edges;
    if (!edges.Detect(GreyView{levels.data(), n, n, n}, {EdgeMethod::Canny, kSigma, EdgeThresholds{20, 50}}))
        state.SkipWithError("not detected");
    CPolyPolyBezier curves;
    for ([[maybe_unused]] auto _ : state) {
        if (!edges.Output(curves)) state.SkipWithError("no curves");
    }
    state.counters["curves"] = curves.GetSize();
}

BENCHMARK(Curves)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);

#ifdef TARVEX_BENCH_OPENCV
void PeerOpenCvCanny(benchmark::State& state) {
    cv::setNumThreads(1);
    const int n = static_cast<int>(state.range(0));
    auto levels = Discs(n);
    const cv::Mat picture(n, n, CV_8UC1, levels.data());
    cv::Mat smoothed;
    cv::Mat edges;
    // Sobel's weights add up to four times a half difference over two pixels, on either side of a step.
    const double scale = 8 / (std::sqrt(2 * std::numbers::pi) * kSigma);
    for ([[maybe_unused]] auto _ : state) {
        cv::GaussianBlur(picture, smoothed, cv::Size(), kSigma);
        cv::Canny(smoothed, edges, 20 * scale, 50 * scale, 3, true);
    }
    state.counters["edge_pixels"] = cv::countNonZero(edges);
}
BENCHMARK(PeerOpenCvCanny)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
