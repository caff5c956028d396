// Arc length by quadrature.
//
// The length of a cubic is the integral of its speed, the square root of a polynomial of degree four: smooth
// except where the speed nearly vanishes, at cusps and next to collapsed handles. Gauss and Legendre's rule
// of eight points is exact to a polynomial of degree fifteen, so a few pieces suffice for nearly all
// curves: a piece is halved until its length and the sum of its halves' agree. At a cusp the speed has a
// kink, where the error falls by four with each halving; only the piece that holds the cusp goes on, some
// eighteen halvings deep, and a limit ends what rounding keeps from agreeing.
//
// The way back, from a length to a parameter, is Newton's iteration on one piece, kept between bounds that
// close in, so that it ends where the speed vanishes too.
#include "bezier/arc_length.h"

#include <array>
#include <cmath>

namespace tarvex {

namespace {

constexpr double kAgreement = 1e-11;  ///< of the control polygon's length
constexpr double kNewtonAgreement = 1e-14;
constexpr int kMostHalvings = 24;
constexpr int kMostIterations = 80;

struct GaussPoint {
    double x;
    double weight;
};
constexpr std::array<GaussPoint, 4> kGauss = {{{0.1834346424956498, 0.3626837833783620},
                                               {0.5255324099163290, 0.3137066458778873},
                                               {0.7966664774136267, 0.2223810344533745},
                                               {0.9602898564975363, 0.1012285362903763}}};

double SpeedAt(const Cubic& c, double t) { return Length(DerivativeAt(c, t)); }

struct Halving {
    const Cubic& cubic;
    double tolerance;
    std::vector<ArcPiece>& pieces;

    void Halve(const ArcPiece& whole, int depth) const {
        const double middle = (whole.from + whole.to) / 2;
        const ArcPiece left = {whole.from, middle, ArcPieceLength(cubic, whole.from, middle)};
        const ArcPiece right = {middle, whole.to, ArcPieceLength(cubic, middle, whole.to)};
        const bool isDone = !(std::fabs(left.length + right.length - whole.length) > tolerance);
        if (isDone || depth == kMostHalvings) {
            pieces.push_back(left);
            pieces.push_back(right);
            return;
        }
        Halve(left, depth + 1);
        Halve(right, depth + 1);
    }
};

}  // namespace

double ArcPieceLength(const Cubic& c, double from, double to) {
    if (HasNoHandles(c)) return Distance(c.p0, c.p3) * (to - from);
    const double middle = (from + to) / 2;
    const double half = (to - from) / 2;
    double sum = 0;
    for (const GaussPoint& g : kGauss)
        sum += g.weight * (SpeedAt(c, middle - half * g.x) + SpeedAt(c, middle + half * g.x));
    return sum * half;
}

void AppendArcPieces(const Cubic& c, std::vector<ArcPiece>& pieces) {
    const ArcPiece whole = {0, 1, ArcPieceLength(c, 0, 1)};
    if (HasNoHandles(c)) {
        pieces.push_back(whole);
    } else {
        Halving{c, kAgreement * LegsOf(c), pieces}.Halve(whole, 1);
    }
}

double ParameterAt(const Cubic& c, const ArcPiece& piece, double length) {
    if (!(length > 0)) return piece.from;
    if (length >= piece.length) return piece.to;
    double least = piece.from;
    double most = piece.to;
    double t = least + (most - least) * (length / piece.length);
    if (HasNoHandles(c)) return t;
    for (int i = 0; i < kMostIterations && t > least && t < most; ++i) {
        const double excess = ArcPieceLength(c, piece.from, t) - length;
        if (std::fabs(excess) <= kNewtonAgreement * piece.length) break;
        (excess > 0 ? most : least) = t;
        const double next = t - excess / SpeedAt(c, t);
        if (next == t) break;
        t = next > least && next < most ? next : (least + most) / 2;
    }
    return t;
}

}  // namespace tarvex
