// CEdgeDetect: pictures as rows of levels, and the result as a bitmap.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "core/append.h"
#include "platform/handles.h"
#include "raster/centerline/stroke_fitter.h"
#include "raster/centerline/strokes.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/edges/edge_map.h"
#include "raster/edges/edge_place.h"
#include "raster/edges/scatter.h"
#include "raster/skeleton/line_graph.h"
#include "raster/skeleton/thinning.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

constexpr float kMiddleLevel = 127.5F;
constexpr double kMostStep = 511;

/// How closely curves follow their points, in pixels. Where edges are smooth, points are right to the
/// closest; stairs scatter them by so much that a curve should leave the single stair alone.
constexpr double kSmoothScatter = 0.03;
constexpr double kSmoothTolerance = 0.1;
constexpr double kStairScatter = 0.06;
constexpr double kStairTolerance = 0.4;

double ToleranceFor(double scatter) {
    const double part = (scatter - kSmoothScatter) / (kStairScatter - kSmoothScatter);
    return std::lerp(kSmoothTolerance, kStairTolerance, std::clamp(part, 0.0, 1.0));
}

class GreyRows : public LevelRows {
  public:
    explicit GreyRows(const GreyView& picture) : m_picture(picture) {}
    int Width() const override { return m_picture.width; }
    int Height() const override { return m_picture.height; }
    void Read(int y, float* levels) const override {
        const std::uint8_t* const row = m_picture.levels + static_cast<std::ptrdiff_t>(y) * m_picture.stride;
        for (int x = 0; x < m_picture.width; ++x) levels[x] = static_cast<float>(row[x]) - kMiddleLevel;
    }

  private:
    GreyView m_picture;
};

/// Rows of a bitmap of 32 bits, or of 1.
class BitmapRows : public LevelRows {
  public:
    explicit BitmapRows(const BITMAP& bitmap) : m_bitmap(bitmap) {}
    int Width() const override { return m_bitmap.bmWidth; }
    int Height() const override { return m_bitmap.bmHeight; }
    void Read(int y, float* levels) const override {
        if (m_bitmap.bmBitsPixel == 1) {
            for (int x = 0; x < Width(); ++x)
                levels[x] = CImgProc::GetPixel(m_bitmap, x, y) ? kMiddleLevel : -kMiddleLevel;
            return;
        }
        const auto stored = static_cast<std::size_t>(Height() - 1 - y);
        const auto* pixel = static_cast<const std::uint8_t*>(m_bitmap.bmBits) +
                            stored * static_cast<std::size_t>(Width()) * 4;
        for (int x = 0; x < Width(); ++x, pixel += 4) {
            // In whole thousandths about the middle, so that a negative has exactly
            // the other sign.
            const int thousandths = 114 * pixel[0] + 587 * pixel[1] + 299 * pixel[2] - 127'500;
            levels[x] = static_cast<float>(thousandths) / 1000;
        }
    }

  private:
    BITMAP m_bitmap;
};

double CleanStep(double step) { return step > 0 ? std::min(step, kMostStep) : 0; }

EdgeThresholds Cleaned(const EdgeThresholds& thresholds) {
    const double high = CleanStep(thresholds.high);
    return {std::min(CleanStep(thresholds.low), high), high};
}

}  // namespace

struct CEdgeDetect::Result {
    UniqueBitmap bitmap;
    EdgeThresholds thresholds;
    double sigma = 0;
    std::vector<std::uint8_t> levels;  // the picture, for placing curves in it

    /// Copies the picture in whole levels.
    void KeepLevels(const LevelRows& picture) {
        const auto width = static_cast<std::size_t>(picture.Width());
        std::vector<float> row(width);
        levels.resize(width * static_cast<std::size_t>(picture.Height()));
        auto to = levels.begin();
        for (int y = 0; y < picture.Height(); ++y) {
            picture.Read(y, row.data());
            for (const float level : row) *to++ = static_cast<std::uint8_t>(level + kMiddleLevel + 0.5F);
        }
    }

    GreyView Picture(const skeleton::BitPlane& plane) const {
        return {levels.data(), plane.Width(), plane.Height(), plane.Width()};
    }

    /// The bitmap's pixels.
    skeleton::BitPlane Edges() const {
        BITMAP description{};
        GetObject(bitmap.Get(), sizeof description, &description);
        skeleton::BitPlane edges(description.bmWidth, description.bmHeight);
        for (int y = 0; y < description.bmHeight; ++y) {
            for (int x = 0; x < description.bmWidth; ++x) {
                if (CImgProc::GetPixel(description, x, y)) edges.Set(edges.At(x, y));
            }
        }
        return edges;
    }

    static std::unique_ptr<Result> Of(const LevelRows& picture, const EdgeOptions& options) {
        auto result = std::make_unique<Result>();
        result->bitmap.Reset(CImgProc::CreateBitmapBW(picture.Width(), picture.Height()));
        BITMAP description{};
        if (GetObject(result->bitmap.Get(), sizeof description, &description) == 0) return nullptr;
        const double sigma = options.sigma >= LEAST_SIGMA ? std::min(options.sigma, MOST_SIGMA) : LEAST_SIGMA;
        result->sigma = sigma;
        result->KeepLevels(picture);
        MagnitudeHistogram histogram;
        MagnitudeHistogram* const counted = options.thresholds ? nullptr : &histogram;
        const auto find = options.method == EdgeMethod::ShenCastan ? FindShenCastanEdges : FindCannyEdges;
        const EdgeMap map = find(picture, sigma, counted);
        result->thresholds = options.thresholds ? Cleaned(*options.thresholds) : histogram.Thresholds();
        DrawEdges(map, result->thresholds,
                  BitRaster(static_cast<std::uint8_t*>(description.bmBits), description.bmWidth,
                            description.bmHeight));
        return result;
    }
};

CEdgeDetect::CEdgeDetect() = default;
CEdgeDetect::CEdgeDetect(CEdgeDetect&& other) noexcept = default;
CEdgeDetect& CEdgeDetect::operator=(CEdgeDetect&& other) noexcept = default;
CEdgeDetect::~CEdgeDetect() = default;

bool CEdgeDetect::Detect(HBITMAP bitmap, const EdgeOptions& options) {
    m_result = nullptr;
    BITMAP description{};
    if (GetObject(bitmap, sizeof description, &description) == 0) return false;
    if (description.bmBitsPixel != 1 && description.bmBitsPixel != 32) return false;
    if (description.bmBits == nullptr || description.bmWidth <= 0 || description.bmHeight <= 0) return false;
    GdiFlush();
    try {
        m_result = Result::Of(BitmapRows(description), options);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return m_result != nullptr;
}

bool CEdgeDetect::Detect(const GreyView& picture, const EdgeOptions& options) {
    m_result = nullptr;
    if (picture.levels == nullptr || picture.width <= 0 || picture.height <= 0) return false;
    try {
        m_result = Result::Of(GreyRows(picture), options);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return m_result != nullptr;
}

HBITMAP CEdgeDetect::Bitmap() const { return m_result == nullptr ? nullptr : m_result->bitmap.Get(); }

EdgeThresholds CEdgeDetect::Thresholds() const {
    return m_result == nullptr ? EdgeThresholds() : m_result->thresholds;
}

bool CEdgeDetect::Output(CPolyPolyBezier& out) const {
    out.RemoveAll();
    if (m_result == nullptr) return false;
    try {
        const skeleton::BitPlane edges = m_result->Edges();
        skeleton::BitPlane lines = edges;
        skeleton::DistanceMap distances(edges);
        skeleton::Thin(lines, distances);
        skeleton::LineGraph graph = skeleton::FindLines(lines, edges, distances);
        EdgePlacer placer(m_result->Picture(edges), m_result->sigma);
        // Lines that meet have the same point there, which moves to the same place.
        for (skeleton::Node& node : graph.nodes) node.at = placer.Place(node.at);
        for (skeleton::Line& line : graph.lines) {
            for (DPOINT& p : line.points) p = placer.Place(p);
        }
        centerline::StrokeRules rules;
        rules.joinsStraight = false;
        centerline::StrokeFitter fitter(ToleranceFor(ScatterOf(graph.lines)), centerline::StrokeEnds::kept);
        ContourAppender appender(static_cast<COwningList<CArray<BPOINT, BPOINT>>&>(out));
        for (const centerline::Stroke& stroke : centerline::FindStrokes(graph, edges, rules)) {
            const centerline::FittedStroke fitted = fitter.Fit(stroke);
            auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
            AppendAll(*contour, fitted.nodes);
            appender.Add(std::move(contour));
        }
        return true;
    } catch (const std::bad_alloc&) {
        out.RemoveAll();
        return false;
    }
}

}  // namespace tarvex
