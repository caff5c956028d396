// The whole way from grey levels to Bezier contours: enlarge, follow, find corners, fit.
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "raster/contours/enlarge.h"
#include "raster/contours/level_set.h"
#include "raster/contours/outline_fitter.h"
#include "tarvex/contours.h"

namespace tarvex {

namespace {

using namespace contours;

constexpr int largestDetail = 16;
constexpr std::size_t mostPoints = INT32_MAX / 2;  // of an outline, so that its chain can be indexed
constexpr int longestSide = INT32_MAX - 2 * ShapeMask::margin;  // so that columns can be counted with it

/// The fitted outline, or the polygon of its points where the fit is a line there and back.
std::unique_ptr<CArray<BPOINT, BPOINT>> OutlineOf(const std::vector<Crossing>& points, OutlineFitter& fitter,
                                                  double scale) {
    auto contour = ToContour(fitter.FitLoop(points), scale);
    return EnclosesArea(*contour) ? std::move(contour) : ToContour(PolygonOf(points), scale);
}

/// Traces a picture that has been enlarged `detail` times; `out` is in the caller's own pixels.
bool Trace(const GreyView& picture, const OutlineOptions& options, bool soft, CPolyPolyBezier& out) {
    const double scale = 1.0 / options.detail;
    OutlineFollower follower(picture, options.threshold, options.side);
    OutlineFitter fitter(TuningFor(soft, options.tolerance).Enlarged(options.detail));
    std::vector<Crossing> points;
    Contours contours;
    const auto least = static_cast<std::size_t>(std::max(0, options.minPoints));
    std::size_t sinceReport = 0;
    while (follower.Next(points)) {
        sinceReport += points.size();
        if (options.progress && sinceReport > 100'000) {
            sinceReport = 0;
            if (!options.progress(follower.Progress())) return false;
        }
        if (static_cast<double>(points.size()) * scale <= static_cast<double>(least)) continue;
        if (points.size() > mostPoints) AfxThrowMemoryException();
        contours.push_back(OutlineOf(points, fitter, scale));
    }
    out.SetSize(static_cast<int>(contours.size()));
    for (std::size_t i = 0; i < contours.size(); ++i) out.SetAt(static_cast<int>(i), contours[i].release());
    return true;
}

}  // namespace

bool TraceOutlines(const GreyView& picture, const OutlineOptions& options, CPolyPolyBezier& out) {
    out.RemoveAll();
    if (picture.levels == nullptr || picture.width <= 0 || picture.height <= 0) return false;
    if (options.detail < 1 || options.detail > largestDetail) return false;
    if (picture.width > longestSide / options.detail || picture.height > longestSide / options.detail)
        return false;
    const bool soft = HasMoreThanTwoLevels(picture);
    if (options.detail == 1) return Trace(picture, options, soft, out);
    const EnlargedPicture enlarged(picture, options.detail);
    return Trace(enlarged.View(), options, soft, out);
}

}  // namespace tarvex
