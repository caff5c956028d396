// How long does thinning a picture of strokes take, and how far off the middle does the skeleton lie?
//
// N by N pixels of curved strokes of one width, as many as cover about a tenth of the picture. The counter
// rms is the root of the mean squared distance, in pixels, of the skeleton's pixels from the middle of single
// straight strokes of that width, ends left out; worst is the largest.
//
// CentreLines is the whole way from such a picture to strokes with their widths, crossings mended.
#include <algorithm>
#include <numbers>

#include "support.h"
#include "tarvex/tracing.h"

#ifdef TARVEX_BENCH_XIMGPROC
#include <opencv2/ximgproc.hpp>
#endif

namespace tarvex::bench {
namespace {

/// Curved strokes that cover about a tenth of the picture.
void Strokes(Picture& picture, double width) {
    std::mt19937 random(7);
    const double size = picture.Size();
    for (double covered = 0; covered < 0.1 * size * size;) {
        double x = Uniform(random) * size, y = Uniform(random) * size;
        double turn = Uniform(random) * 2 * std::numbers::pi;
        const double length = size * (0.1 + 0.3 * Uniform(random));
        const double bend = (Uniform(random) - 0.5) * 6 / length;
        for (double s = 0; s < length; s += 0.5) {
            x += 0.5 * std::cos(turn);
            y += 0.5 * std::sin(turn);
            turn += 0.5 * bend * std::sin(s / 100);
            picture.Disc(x, y, width / 2);
        }
        covered += length * width;
    }
}

/// The skeletons' pixels of straight strokes at many slants, as distances from their middles.
template <class Thin>
std::vector<double> OffCentre(double width, Thin thin) {
    std::vector<double> offsets;
    const int size = static_cast<int>(200 + 4 * width);
    const double half = 80 + width;
    for (int degrees = 3; degrees < 180; degrees += 11) {
        Picture picture(size);
        const double turn = degrees * std::numbers::pi / 180;
        const double cosine = std::cos(turn), sine = std::sin(turn), cx = size / 2.0 + 0.3,
                     cy = size / 2.0 - 0.2;
        for (double s = -half; s <= half; s += 0.25)
            picture.Disc(cx + s * cosine, cy + s * sine, width / 2 + degrees / 400.0);
        const auto isSkeleton = thin(picture);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                if (!isSkeleton(x, y) || std::fabs((x - cx) * cosine + (y - cy) * sine) > half - width)
                    continue;
                offsets.push_back(std::fabs((y - cy) * cosine - (x - cx) * sine));
            }
        }
    }
    return offsets;
}

void Report(benchmark::State& state, const std::vector<double>& offsets) {
    double squares = 0, worst = 0;
    for (const double off : offsets) {
        squares += off * off;
        worst = std::max(worst, off);
    }
    state.counters["rms"] = std::sqrt(squares / static_cast<double>(offsets.size()));
    state.counters["worst"] = worst;
}

void Thin(benchmark::State& state) {
    const auto width = static_cast<double>(state.range(1));
    Picture picture(static_cast<int>(state.range(0)));
    Strokes(picture, width);
    for ([[maybe_unused]] auto _ : state) {
        CSkeleton skeleton;
        if (!skeleton.InputMono(picture.Handle()) || !skeleton.DoSkeleton())
            state.SkipWithError("not thinned");
    }
    CSkeleton skeleton;
    Report(state, OffCentre(width, [&skeleton](const Picture& stroke) {
               if (skeleton.InputMono(stroke.Handle())) skeleton.DoSkeleton();
               BITMAP bitmap{};
               GetObject(skeleton.Bitmap(), static_cast<int>(sizeof bitmap), &bitmap);
               return [bitmap](int x, int y) { return CImgProc::GetPixel(bitmap, x, y); };
           }));
}

void CentreLines(benchmark::State& state) {
    Picture picture(static_cast<int>(state.range(0)));
    Strokes(picture, 5);
    const CImageTrace tracer(picture.Handle());
    CentreLineOptions options;
    options.side = ShapeSide::light;
    CPolyPolyBezier strokes;
    CPolyPolyWidth widths;
    for ([[maybe_unused]] auto _ : state) {
        if (!tracer.DoTrace(options, strokes, widths)) state.SkipWithError("not traced");
    }
    state.counters["strokes"] = strokes.GetSize();
}

#ifdef TARVEX_BENCH_XIMGPROC
cv::Mat MatOf(const Picture& picture) {
    cv::Mat mat(picture.Size(), picture.Size(), CV_8U);
    for (int y = 0; y < picture.Size(); ++y) {
        for (int x = 0; x < picture.Size(); ++x)
            mat.at<std::uint8_t>(y, x) = picture.Get(x, y) ? std::uint8_t{255} : std::uint8_t{0};
    }
    return mat;
}

void ThinPeer(benchmark::State& state) {
    const auto width = static_cast<double>(state.range(1));
    Picture picture(static_cast<int>(state.range(0)));
    Strokes(picture, width);
    const cv::Mat mat = MatOf(picture);
    for ([[maybe_unused]] auto _ : state) {
        cv::Mat thinned;
        cv::ximgproc::thinning(mat, thinned, cv::ximgproc::THINNING_ZHANGSUEN);
        benchmark::DoNotOptimize(thinned.data);
    }
    Report(state, OffCentre(width, [](const Picture& stroke) {
               cv::Mat thinned;
               cv::ximgproc::thinning(MatOf(stroke), thinned, cv::ximgproc::THINNING_ZHANGSUEN);
               return [thinned](int x, int y) { return thinned.at<std::uint8_t>(y, x) != 0; };
           }));
}
#endif

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"size", "width"})->Unit(benchmark::kMillisecond);
    for (const int width : {5, 30, 100}) bench->Args({4000, width});
    for (const int size : {400, 1265}) bench->Args({size, 30});  // a tenth of the pixels each
}

BENCHMARK(Thin)->Apply(Sizes);
BENCHMARK(CentreLines)->Arg(400)->Arg(1265)->Arg(4000)->Unit(benchmark::kMillisecond);
#ifdef TARVEX_BENCH_XIMGPROC
BENCHMARK(ThinPeer)->Apply(Sizes);
#endif

}  // namespace
}  // namespace tarvex::bench
