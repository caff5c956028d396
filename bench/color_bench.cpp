// Reducing large pictures to eight colours, beside libimagequant: does the filter, which looks at 25 pixels
// for each of them, keep up with a quantiser that looks at each by itself?
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "tarvex/colors.h"
#include "tarvex/raster.h"

#if defined(TARVEX_BENCH_IMAGEQUANT)
#include <libimagequant.h>
#endif

namespace tarvex {
namespace {

constexpr int kSide = 2000;
constexpr int kColors = 8;

struct Pixels {
    std::vector<std::uint8_t> rgba;  // rows from the top down
};

std::uint8_t Level(double v) { return static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0)); }

/// Broad waves of light in three channels, finer ones on them, and a sensor's noise.
Pixels MakePhoto() {
    Pixels picture;
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0, 4);
    picture.rgba.reserve(std::size_t{4} * kSide * kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double u = x / 100.0;
            const double v = y / 100.0;
            const double broad =
                std::sin(0.31 * u + 1.3 * std::sin(0.2 * v)) + std::cos(0.27 * v + std::sin(0.4 * u));
            const double fine =
                0.3 * std::sin(2.1 * u * std::cos(0.1 * v)) + 0.2 * std::sin(7.3 * v + 3 * broad);
            const double light = 128 + 45 * broad + 20 * fine;
            const double hue = 40 * std::sin(0.5 * u - 0.3 * v);
            for (const double channel :
                 {light + hue, light - 0.3 * hue + 15 * fine, light - hue + 20 * std::cos(0.6 * v)})
                picture.rgba.push_back(Level(channel + noise(random)));
            picture.rgba.push_back(255);
        }
    }
    return picture;
}

/// Discs of six colours on white.
Pixels MakeClipArt() {
    static constexpr std::uint8_t colors[6][3] = {{220, 40, 30},  {20, 20, 20},  {250, 200, 20},
                                                  {30, 110, 200}, {60, 160, 60}, {240, 240, 240}};
    Pixels picture;
    picture.rgba.assign(std::size_t{4} * kSide * kSide, 255);
    std::mt19937 random(5);
    for (int disc = 0; disc < 60; ++disc) {
        const int cx = static_cast<int>(random() % kSide);
        const int cy = static_cast<int>(random() % kSide);
        const int r = 30 + static_cast<int>(random() % 260);
        const auto& color = colors[random() % 6];
        for (int y = std::max(0, cy - r); y < std::min(kSide, cy + r); ++y) {
            for (int x = std::max(0, cx - r); x < std::min(kSide, cx + r); ++x) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r)
                    std::copy(color, color + 3, picture.rgba.begin() + (std::ptrdiff_t{y} * kSide + x) * 4);
            }
        }
    }
    return picture;
}

/// Fills a 32-bit bitmap; the caller deletes it.
HBITMAP BitmapOf(const Pixels& picture) {
    const HBITMAP bitmap = CImgProc::CreateBitmap32(kSide, kSide);
    BITMAP description{};
    GetObject(bitmap, static_cast<int>(sizeof description), &description);
    auto* out = static_cast<RGBQUAD*>(description.bmBits);
    for (int y = kSide - 1; y >= 0; --y) {
        const std::uint8_t* in = picture.rgba.data() + std::size_t{4} * kSide * static_cast<std::size_t>(y);
        for (int x = 0; x < kSide; ++x, in += 4) *out++ = {in[2], in[1], in[0], 0};
    }
    return bitmap;
}

double Squares(const std::uint8_t* a, int red, int green, int blue) {
    return (a[0] - red) * (a[0] - red) + (a[1] - green) * (a[1] - green) + (a[2] - blue) * (a[2] - blue);
}

void Reduce(benchmark::State& state, const Pixels& picture) {
    double squares = 0;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const HBITMAP bitmap = BitmapOf(picture);
        state.ResumeTiming();
        RGBQUAD palette[kColors];
        int count = kColors;
        {
            CColorReduction reduction(bitmap);
            reduction.DoColorReduction(palette, count, 0);
        }
        state.PauseTiming();
        BITMAP description{};
        GetObject(bitmap, static_cast<int>(sizeof description), &description);
        const auto* pixel = static_cast<const RGBQUAD*>(description.bmBits);
        squares = 0;
        for (int y = kSide - 1; y >= 0; --y) {
            const std::uint8_t* in =
                picture.rgba.data() + std::size_t{4} * kSide * static_cast<std::size_t>(y);
            for (int x = 0; x < kSide; ++x, ++pixel, in += 4)
                squares += Squares(in, pixel->rgbRed, pixel->rgbGreen, pixel->rgbBlue);
        }
        DeleteObject(bitmap);
        state.counters["colors"] = count;
        state.ResumeTiming();
    }
    state.counters["mse"] = squares / (3.0 * kSide * kSide);
}

#if defined(TARVEX_BENCH_IMAGEQUANT)
void PeerReduce(benchmark::State& state, const Pixels& picture) {
    double squares = 0;
    std::vector<std::uint8_t> indices(std::size_t{kSide} * kSide);
    for ([[maybe_unused]] auto _ : state) {
        liq_attr* attributes = liq_attr_create();
        liq_set_max_colors(attributes, kColors);
        liq_image* image = liq_image_create_rgba(attributes, picture.rgba.data(), kSide, kSide, 0);
        liq_result* result = nullptr;
        if (liq_image_quantize(image, attributes, &result) != LIQ_OK) {
            state.SkipWithError("libimagequant refused the picture");
            break;
        }
        liq_set_dithering_level(result, 0);
        liq_write_remapped_image(result, image, indices.data(), indices.size());
        state.PauseTiming();
        const liq_palette* palette = liq_get_palette(result);
        squares = 0;
        for (std::size_t i = 0; i < indices.size(); ++i) {
            const liq_color& c = palette->entries[indices[i]];
            squares += Squares(picture.rgba.data() + 4 * i, c.r, c.g, c.b);
        }
        liq_result_destroy(result);
        liq_image_destroy(image);
        liq_attr_destroy(attributes);
        state.ResumeTiming();
    }
    state.counters["mse"] = squares / (3.0 * kSide * kSide);
}
#endif

const Pixels& Photo() {
    static const Pixels picture = MakePhoto();
    return picture;
}
const Pixels& ClipArt() {
    static const Pixels picture = MakeClipArt();
    return picture;
}

void BM_ReducePhoto(benchmark::State& state) { Reduce(state, Photo()); }
void BM_ReduceClipArt(benchmark::State& state) { Reduce(state, ClipArt()); }
BENCHMARK(BM_ReducePhoto)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReduceClipArt)->Unit(benchmark::kMillisecond);
#if defined(TARVEX_BENCH_IMAGEQUANT)
void BM_PeerReducePhoto(benchmark::State& state) { PeerReduce(state, Photo()); }
void BM_PeerReduceClipArt(benchmark::State& state) { PeerReduce(state, ClipArt()); }
BENCHMARK(BM_PeerReducePhoto)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerReduceClipArt)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace tarvex
