// Reducing large pictures to eight colours, beside libimagequant: does the filter, which looks at 25 pixels
// for each of them, keep up with a quantiser that looks at each by itself?
#include <algorithm>

#include "support.h"
#include "tarvex/colors.h"

#if defined(TARVEX_BENCH_IMAGEQUANT)
#include <libimagequant.h>
#endif

namespace tarvex::bench {
namespace {

constexpr int kColors = 8;

struct Pixels {
    int side = 0;
    std::vector<std::uint8_t> rgba;  // rows from the top down
};

std::size_t Area(int side) { return static_cast<std::size_t>(side) * static_cast<std::size_t>(side); }
std::size_t RowStart(const Pixels& picture, int y) {
    return 4 * static_cast<std::size_t>(picture.side) * static_cast<std::size_t>(y);
}

std::uint8_t Level(double v) { return static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0)); }

/// Broad waves of light in three channels, finer ones on them, and a sensor's noise.
Pixels MakePhoto(int side) {
    Pixels picture{side, {}};
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0, 4);
    picture.rgba.reserve(4 * Area(side));
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
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
Pixels MakeClipArt(int side) {
    static constexpr std::uint8_t colors[6][3] = {{220, 40, 30},  {20, 20, 20},  {250, 200, 20},
                                                  {30, 110, 200}, {60, 160, 60}, {240, 240, 240}};
    Pixels picture{side, {}};
    picture.rgba.assign(4 * Area(side), 255);
    std::mt19937 random(5);
    for (int disc = 0; disc < 60; ++disc) {
        const int cx = static_cast<int>(random() % static_cast<unsigned>(side));
        const int cy = static_cast<int>(random() % static_cast<unsigned>(side));
        const int r = (30 + static_cast<int>(random() % 260)) * side / 2000;
        const auto& color = colors[random() % 6];
        for (int y = std::max(0, cy - r); y < std::min(side, cy + r); ++y) {
            for (int x = std::max(0, cx - r); x < std::min(side, cx + r); ++x) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r)
                    std::copy(color, color + 3, picture.rgba.begin() + (std::ptrdiff_t{y} * side + x) * 4);
            }
        }
    }
    return picture;
}

/// Fills a 32-bit bitmap; the caller deletes it.
HBITMAP BitmapOf(const Pixels& picture) {
    const HBITMAP bitmap = CImgProc::CreateBitmap32(picture.side, picture.side);
    BITMAP description{};
    GetObject(bitmap, static_cast<int>(sizeof description), &description);
    auto* out = static_cast<RGBQUAD*>(description.bmBits);
    for (int y = picture.side - 1; y >= 0; --y) {
        const std::uint8_t* in = picture.rgba.data() + RowStart(picture, y);
        for (int x = 0; x < picture.side; ++x, in += 4) *out++ = {in[2], in[1], in[0], 0};
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
        for (int y = picture.side - 1; y >= 0; --y) {
            const std::uint8_t* in = picture.rgba.data() + RowStart(picture, y);
            for (int x = 0; x < picture.side; ++x, ++pixel, in += 4)
                squares += Squares(in, pixel->rgbRed, pixel->rgbGreen, pixel->rgbBlue);
        }
        DeleteObject(bitmap);
        state.counters["colors"] = count;
        state.ResumeTiming();
    }
    state.counters["mse"] = squares / (3.0 * static_cast<double>(Area(picture.side)));
}

#if defined(TARVEX_BENCH_IMAGEQUANT)
void PeerReduce(benchmark::State& state, const Pixels& picture) {
    double squares = 0;
    std::vector<std::uint8_t> indices(Area(picture.side));
    for ([[maybe_unused]] auto _ : state) {
        liq_attr* attributes = liq_attr_create();
        liq_set_max_colors(attributes, kColors);
        liq_image* image =
            liq_image_create_rgba(attributes, picture.rgba.data(), picture.side, picture.side, 0);
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
    state.counters["mse"] = squares / (3.0 * static_cast<double>(Area(picture.side)));
}
#endif

void ReducePhoto(benchmark::State& state) { Reduce(state, MakePhoto(Size(state))); }
void ReduceClipArt(benchmark::State& state) { Reduce(state, MakeClipArt(Size(state))); }
void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(200)->Arg(632)->Arg(2000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(ReducePhoto)->Apply(Sizes);
BENCHMARK(ReduceClipArt)->Apply(Sizes);
#if defined(TARVEX_BENCH_IMAGEQUANT)
void PeerReducePhoto(benchmark::State& state) { PeerReduce(state, MakePhoto(Size(state))); }
void PeerReduceClipArt(benchmark::State& state) { PeerReduce(state, MakeClipArt(Size(state))); }
BENCHMARK(PeerReducePhoto)->Apply(Sizes);
BENCHMARK(PeerReduceClipArt)->Apply(Sizes);
#endif

}  // namespace
}  // namespace tarvex::bench
