// Fitting as few cubic segments as will do to a run of outline points.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "raster/contours/corners.h"

namespace tarvex::contours {

/// A cubic segment; straight when its control points lie on its ends.
struct Cubic {
    Crossing p0, p1, p2, p3;
};

/// A run of points from one corner to the next, or once around an outline without corners.
struct Run {
    std::span<const Crossing> points;  ///< first and last are the ends of the run
    bool loop = false;                 ///< the last point is the first, and the curve goes smoothly through
};

/// Fits runs. A run's ends are corners, where the curve may leave in any direction, or the seam of a
/// loop, where it passes smoothly; inside a run all joints are smooth.
class RunFitter {
  public:
    explicit RunFitter(const Tuning& tuning) : m_tuning(tuning) {}

    /// Appends the segments for `run` (at least two points).
    void Fit(const Run& run, std::vector<Cubic>& out);

  private:
    /// A direction that the curve must have at an end of a piece, if it must have one.
    using Tangent = std::optional<Crossing>;

    /// Where a piece begins or ends, and in which direction the curve passes there.
    struct End {
        Crossing point;
        Tangent tangent;
    };

    bool FitPiece(int first, int last, const End& start, const End& finish, Cubic& c);
    void TakeSamples(int first, int last);
    bool Solve(double length, const End& start, const End& finish, Cubic& c) const;
    double WorstSquare(const Cubic& c) const;
    void CorrectParameters(const Cubic& c);
    bool FollowsAll(int first, int last, const Cubic& c, double limit) const;
    double LimitFor(double length) const;
    End JointAt(int i) const;
    int LongestPiece(int first, int guess, const End& start, const End& finish, Cubic& piece);

    static constexpr int sampleLimit = 32;

    Tuning m_tuning;
    std::span<const Crossing> m_points;
    bool m_loop = false;
    std::vector<double> m_length;  // of the chain up to each point of the run

    // The points that a trial looks at: every m_stride-th of the piece, with their parameters on the
    // curve.
    int m_stride = 1;
    int m_sampleCount = 0;
    std::array<double, sampleLimit + 1> m_x;
    std::array<double, sampleLimit + 1> m_y;
    std::array<double, sampleLimit + 1> m_u;
};

}  // namespace tarvex::contours
