// CImageTrace: greys to a mask, the mask to a skeleton, its lines to strokes, strokes to Bezier contours.
#include "tarvex/imagetrace.h"

#include <utility>
#include <vector>

#include "core/append.h"
#include "raster/centerline/specks.h"
#include "raster/centerline/stroke_fitter.h"
#include "raster/centerline/strokes.h"
#include "raster/contour_appender.h"
#include "raster/skeleton/line_graph.h"
#include "raster/skeleton/thinning.h"
#include "tarvex/raster.h"

namespace tarvex {

using skeleton::BitPlane;
using skeleton::DistanceMap;

struct CImageTrace::Picture {
    GreyView view;
    std::vector<std::uint8_t> levels;  // when they are the tracer's own
};

namespace {

std::uint8_t Luma(COLORREF colour) {
    return static_cast<std::uint8_t>(
        (299 * GetRValue(colour) + 587 * GetGValue(colour) + 114 * GetBValue(colour) + 500) / 1000);
}

std::vector<std::uint8_t> GreysOf(const BITMAP& bitmap) {
    std::vector<std::uint8_t> levels;
    levels.reserve(static_cast<std::size_t>(bitmap.bmWidth) * static_cast<std::size_t>(bitmap.bmHeight));
    for (int y = 0; y < bitmap.bmHeight; ++y) {
        for (int x = 0; x < bitmap.bmWidth; ++x) {
            levels.push_back(bitmap.bmBitsPixel == 32           ? Luma(CImgProc::GetPixel32(bitmap, x, y))
                             : CImgProc::GetPixel(bitmap, x, y) ? std::uint8_t{255}
                                                                : std::uint8_t{0});
        }
    }
    return levels;
}

bool IsReadable(const GreyView& picture) {
    return picture.levels != nullptr && picture.width > 0 && picture.height > 0;
}

/// The lightest level that is dark, and which side of it is drawn.
struct Division {
    int threshold;
    ShapeSide side;
};

Division Divide(const GreyView& picture, const GreyHistogram& levels, const CentreLineOptions& options) {
    const int threshold = options.threshold ? *options.threshold : OtsuThreshold(levels);
    return {threshold, options.side ? *options.side : FindShapeSide(picture, threshold)};
}

BitPlane MaskOf(const GreyView& picture, const Division& division) {
    BitPlane mask(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* levels = picture.Row(y);
        std::uint64_t* words = mask.Row(y);
        for (int x = 0; x < picture.width; ++x) {
            const bool isDark = levels[x] <= division.threshold;
            if (isDark == (division.side == ShapeSide::dark)) words[x / 64] |= std::uint64_t{1} << (x % 64);
        }
    }
    return mask;
}

/// The middle one of the levels from `first` to `last`.
double MiddleLevel(const GreyHistogram& levels, int first, int last) {
    std::uint64_t all = 0;
    for (int level = first; level <= last; ++level) all += levels[static_cast<std::size_t>(level)];
    std::uint64_t below = 0;
    int level = first;
    while (level < last && 2 * (below += levels[static_cast<std::size_t>(level)]) < all) ++level;
    return level;
}

skeleton::ShapeGreys GreysFor(const GreyView& picture, const GreyHistogram& levels,
                              const Division& division) {
    const int most = std::clamp(division.threshold, 0, 254);
    const double dark = MiddleLevel(levels, 0, most);
    const double light = MiddleLevel(levels, most + 1, 255);
    const bool isDark = division.side == ShapeSide::dark;
    return {picture, isDark ? light : dark, isDark ? dark : light};
}

/// From pixels' columns and rows to the picture's coordinates.
void MoveToPixelCentres(BPOINT& node) {
    for (DPOINT* p : {&node.cp1, &node.pt, &node.cp2}) *p = {p->x + 0.5, p->y + 0.5};
}

void AddStroke(const centerline::FittedStroke& fitted, ContourAppender<CArray<BPOINT, BPOINT>>& strokes,
               ContourAppender<CArray<double, double>>& widths) {
    auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
    AppendAll(*contour, fitted.nodes);
    for (int i = 0; i < contour->GetSize(); ++i) MoveToPixelCentres((*contour)[i]);
    auto contourWidths = std::make_unique<CArray<double, double>>();
    AppendAll(*contourWidths, fitted.widths);
    strokes.Add(std::move(contour));
    widths.Add(std::move(contourWidths));
}

}  // namespace

CImageTrace::CImageTrace(HBITMAP bitmap) : m_picture(std::make_unique<Picture>()) {
    BITMAP description{};
    GdiFlush();
    if (bitmap == nullptr || GetObject(bitmap, static_cast<int>(sizeof description), &description) == 0)
        return;
    if (description.bmBits == nullptr) return;
    m_picture->levels = GreysOf(description);
    m_picture->view = {m_picture->levels.data(), description.bmWidth, description.bmHeight,
                       description.bmWidth};
}

CImageTrace::CImageTrace(const GreyView& picture) : m_picture(std::make_unique<Picture>()) {
    m_picture->view = picture;
}

CImageTrace::~CImageTrace() = default;

bool CImageTrace::DoTrace(const CentreLineOptions& options, CPolyPolyBezier& strokes,
                          CPolyPolyWidth& widths) const {
    strokes.RemoveAll();
    widths.RemoveAll();
    const GreyView& picture = m_picture->view;
    const auto goOn = [&options](double part) { return !options.progress || options.progress(part); };
    if (!IsReadable(picture)) return false;
    const GreyHistogram levels = CountLevels(picture);
    const Division division = Divide(picture, levels, options);
    BitPlane mask = MaskOf(picture, division);
    centerline::RemoveSpecks(mask, options.speckPixels);
    if (!goOn(0.1)) return false;

    DistanceMap distances(mask);
    BitPlane lines = mask;
    skeleton::Thin(lines, distances);
    if (!goOn(0.7)) return false;

    const skeleton::ShapeGreys greys = GreysFor(picture, levels, division);
    const centerline::StrokeRules rules{options.minBranch, options.joinStrokes};
    const std::vector<centerline::Stroke> found =
        centerline::FindStrokes(skeleton::FindLines(lines, mask, distances, &greys), mask, rules);
    if (!goOn(0.8)) return false;

    centerline::StrokeFitter fitter(options.tolerance, centerline::StrokeEnds::straightened);
    ContourAppender strokeAppender(static_cast<COwningList<CArray<BPOINT, BPOINT>>&>(strokes));
    ContourAppender widthAppender(static_cast<COwningList<CArray<double, double>>&>(widths));
    for (const centerline::Stroke& stroke : found)
        AddStroke(fitter.Fit(stroke), strokeAppender, widthAppender);
    if (goOn(1)) return true;
    strokes.RemoveAll();
    widths.RemoveAll();
    return false;
}

}  // namespace tarvex
