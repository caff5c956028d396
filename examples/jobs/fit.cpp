// A run of points, such as a pen's, becomes a smooth curve of few nodes.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "tarvex/bezier.h"

int main() {
    std::vector<tarvex::DPOINT> points;
    for (int x = 0; x <= 200; ++x) points.push_back({x + 0.0, 40 * std::sin(x / 30.0)});

    //! [fit]
    // The error is a squared distance: 0.25 admits points half a unit off the curve.
    tarvex::CArray<tarvex::BPOINT, tarvex::BPOINT> curve;
    tarvex::FitCurve(points.data(), static_cast<int>(points.size()), &curve, 0.25);

    double worst = 0;
    for (const tarvex::DPOINT& p : points) {
        double nearest = 1e300;
        for (int i = 1; i < curve.GetSize(); ++i) {
            const tarvex::DPOINT on = tarvex::CBezier(curve[i - 1], curve[i]).GetNearestCurvePoint(p);
            nearest = std::min(nearest, std::hypot(on.x - p.x, on.y - p.y));
        }
        worst = std::max(worst, nearest);
    }
    std::printf("%zu points, %d nodes, at most %.2f off\n", points.size(), curve.GetSize(), worst);
    //! [fit]
    return curve.GetSize() >= 2 && curve.GetSize() <= 12 && worst <= 0.5 ? 0 : 1;
}
