// The region of similar colour around a pixel, filled, smoothed and traced, beside OpenCV's flood fill and a
// box filter of the same 5 x 5 window.
//
// N by N pixels: a light sheet with dark discs in it, a little noise on both. Fill floods the sheet around
// the discs, by the 3 x 3 means that a tolerance asks for; ours traces its outlines too, which the peer does
// not. Flat is the same without noise and tolerance, where pixels are compared as they are.
#include "support.h"
#include "tarvex/autotrace.h"

#if defined(TARVEX_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace tarvex::bench {
namespace {

constexpr int kNoise = 4;
constexpr int kTolerance = 400;  // squared: 20 levels of one channel

struct Pixels {
    int size;
    std::vector<RGBQUAD> quads;
};

Pixels Sheet(int size, int noise) {
    Pixels picture{size, {}};
    std::mt19937 random(1);
    constexpr int cell = 100;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double r = std::hypot(x % cell - cell / 2, y % cell - cell / 2);
            const int level = r < 15 + (x / cell * 7 + y / cell * 5) % 30 ? 60 : 200;
            const int off =
                noise == 0 ? 0 : static_cast<int>(random() % static_cast<unsigned>(2 * noise + 1)) - noise;
            const auto value = static_cast<BYTE>(level + off);
            picture.quads.push_back({value, value, value, 0});
        }
    }
    return picture;
}

/// Fills a 32-bit bitmap; the caller deletes it.
HBITMAP BitmapOf(const Pixels& picture) {
    const HBITMAP bitmap = CImgProc::CreateBitmap32(picture.size, picture.size);
    BITMAP description{};
    GetObject(bitmap, static_cast<int>(sizeof description), &description);
    std::copy(picture.quads.begin(), picture.quads.end(), static_cast<RGBQUAD*>(description.bmBits));
    return bitmap;
}

void Region(benchmark::State& state, int noise, int tolerance) {
    const HBITMAP bitmap = BitmapOf(Sheet(Size(state), noise));
    int lines = 0;
    for ([[maybe_unused]] auto _ : state) {
        CAutoTrace tracer(bitmap, 96);
        tracer.DoTrace(0, 0, nullptr, tolerance, false, false, false);
        lines = tracer.TracedLines().GetCount();
    }
    state.counters["outlines"] = lines;
    DeleteObject(bitmap);
}
void Fill(benchmark::State& state) { Region(state, kNoise, kTolerance); }
void Flat(benchmark::State& state) { Region(state, 0, 0); }

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(Fill)->Apply(Sizes);
BENCHMARK(Flat)->Apply(Sizes);

#if defined(TARVEX_BENCH_OPENCV)
using Mask = cv::Mat;  // 1 inside

/// Sets the pixels whose 5 x 5 window is filled for its greater part.
void Smooth(const Mask& mask, Mask& shown) {
    cv::Mat sums;
    cv::boxFilter(mask, sums, -1, {5, 5}, {-1, -1}, false, cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
    cv::threshold(sums, shown, 12, 1, cv::THRESH_BINARY);
}

/// Of all pixels, those that only one side fills: ours cuts means to whole levels, the peer rounds them.
constexpr double kRounding = 1e-6;

/// The pixels of the region that our outlines surround, by Pick's theorem: of an outline from pixel to pixel
/// they are its area, half of its steps and 1. A hole's outline is the region's too, so its steps add as
/// well.
double PixelsWithin(const CPolyPolyDPoint& lines) {
    double twice = 0;
    int steps = 0;
    for (int k = 0; k < lines.GetCount(); ++k) {
        for (int i = 1; i < lines[k].GetSize(); ++i, ++steps) {
            const DPOINT &a = lines[k][i - 1], &b = lines[k][i];
            twice += a.x * b.y - b.x * a.y;
        }
    }
    return (std::fabs(twice) + steps) / 2 + 2 - lines.GetCount();
}

/// Ours first grows to all eight sides, which is not timed for the peer.
void RequireSameRegion(const Pixels& picture, int tolerance, const Mask& filled) {
    const HBITMAP bitmap = BitmapOf(picture);
    CAutoTrace tracer(bitmap, 96);
    tracer.DoTrace(0, 0, nullptr, tolerance, false, false, false);
    Mask grown, shown;
    cv::dilate(filled.clone(), grown, cv::Mat::ones(3, 3, CV_8U));
    Smooth(grown, shown);
    const int wanted = cv::countNonZero(shown | grown);
    const double slack = tolerance == 0 ? 0 : kRounding * wanted;
    RequireNear(PixelsWithin(tracer.TracedLines()), wanted, slack, "the region's pixels beside the peer's");
    DeleteObject(bitmap);
}

void PeerRegion(benchmark::State& state, int noise, int tolerance) {
    cv::setNumThreads(1);
    const Pixels picture = Sheet(Size(state), noise);
    cv::Mat colors(picture.size, picture.size, CV_8UC3);
    for (int y = 0; y < picture.size; ++y) {
        for (int x = 0; x < picture.size; ++x) {
            const RGBQUAD& p =
                picture.quads[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.size) +
                              static_cast<std::size_t>(x)];
            colors.at<cv::Vec3b>(y, x) = {p.rgbBlue, p.rgbGreen, p.rgbRed};
        }
    }
    const cv::Scalar range = cv::Scalar::all(std::sqrt(tolerance / 3.0));
    Mask filled, shown;
    for ([[maybe_unused]] auto _ : state) {
        cv::Mat means;  // not a copy of `colors`, which would share its pixels and blur them
        if (tolerance != 0) cv::blur(colors, means, {3, 3});
        cv::Mat mask = cv::Mat::zeros(picture.size + 2, picture.size + 2, CV_8U);
        cv::floodFill(tolerance != 0 ? means : colors, mask, {0, 0}, {}, nullptr, range, range,
                      4 | cv::FLOODFILL_MASK_ONLY | cv::FLOODFILL_FIXED_RANGE | (1 << 8));
        filled = mask(cv::Rect(1, 1, picture.size, picture.size));  // without the frame that it needs
        Smooth(filled, shown);
    }
    RequireSameRegion(picture, tolerance, filled);
    state.counters["pixels"] = cv::countNonZero(shown);
}
void PeerFill(benchmark::State& state) { PeerRegion(state, kNoise, kTolerance); }
void PeerFlat(benchmark::State& state) { PeerRegion(state, 0, 0); }
BENCHMARK(PeerFill)->Apply(Sizes);
BENCHMARK(PeerFlat)->Apply(Sizes);
#endif

}  // namespace
}  // namespace tarvex::bench
