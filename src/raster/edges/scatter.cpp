// How far a picture's edges can be trusted.
//
// Between smoothed areas the points along an edge lie on a smooth curve to a few hundredths of a pixel. Along
// stairs they follow the stairs, and in noise the noise. So each point is compared with the parabola through
// it and six points on either side, of least squares (A. Savitzky and M. Golay, "Smoothing and
// differentiation of data by simplified least squares procedures", 1964), as if they were equally far apart:
// what that gets wrong lies along the curve, and only what lies across it counts. Corners are no parabolas;
// where the line turns by more than a gentle curve it is left out.
#include "raster/edges/scatter.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "bezier/vector.h"

namespace tarvex {
namespace {

constexpr double kPart = 0.7;  // of the points; the others may be at corners after all
constexpr double kBend = 0.6;  // tangent of the turn from one half of a window to the other

constexpr std::size_t kReach = 6;
constexpr std::size_t kWindow = 2 * kReach + 1;
/// Of the points in a window, for the value of the parabola in the middle.
constexpr double kWeights[kWindow] = {-11, 0, 9, 16, 21, 24, 25, 24, 21, 16, 9, 0, -11};
constexpr double kWeightSum = 143;

bool IsGentle(std::span<const DPOINT> window) {
    const DPOINT in = Minus(window[kReach], window.front());
    const DPOINT out = Minus(window.back(), window[kReach]);
    return std::fabs(in.x * out.y - in.y * out.x) < kBend * Dot(in, out);
}

double OffCurve(std::span<const DPOINT> window) {
    DPOINT mean{0, 0};
    for (std::size_t i = 0; i < kWindow; ++i)
        mean = Plus(mean, Times(Minus(window[i], window[kReach]), kWeights[i] / kWeightSum));
    const DPOINT along = Minus(window.back(), window.front());
    return std::fabs(along.x * mean.y - along.y * mean.x) / Length(along);
}

}  // namespace

double ScatterOf(const std::vector<skeleton::Line>& lines) {
    std::vector<double> offsets;
    for (const skeleton::Line& line : lines) {
        const std::span<const DPOINT> points = line.points;
        for (std::size_t i = 0; i + kWindow <= points.size(); ++i) {
            const auto window = points.subspan(i, kWindow);
            if (IsGentle(window)) offsets.push_back(OffCurve(window));
        }
    }
    if (offsets.empty()) return 0;
    const auto found =
        offsets.begin() + static_cast<std::ptrdiff_t>(kPart * static_cast<double>(offsets.size()));
    std::nth_element(offsets.begin(), found, offsets.end());
    return *found;
}

}  // namespace tarvex
