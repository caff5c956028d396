// Three-dimensional transforms: conventions, the laws of rotations and inverses, and when the view's
// inverse is computed.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/property.h"
#include "tarvex/view.h"

namespace tarvex {
namespace {

using testing::ElementsAre;
using Matrix = std::array<std::array<double, 4>, 4>;
using Point = std::array<double, 3>;

using test::kInfinity;
using test::kNaN;
using test::kPi;
using test::Spread;

const Matrix kIdentity = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

double (*Raw(Matrix& m))[4] { return reinterpret_cast<double(*)[4]>(m.data()); }

/// What one of the library's functions writes.
template <class... Arguments, class... Given>
Matrix Made(void (*make)(Arguments...), Given... given) {
    Matrix m;
    make(given..., Raw(m));
    return m;
}

Matrix Product(Matrix a, Matrix b) { return Made(MultMat, Raw(a), Raw(b)); }
Matrix Inverse(Matrix m) { return Made(InvMat, Raw(m)); }
Matrix Translation(double x, double y, double z) { return Made(Translate3D, x, y, z); }
Matrix Scaling(double x, double y, double z) { return Made(Scale3D, x, y, z); }
Matrix Turn(int axis, double angle) {
    Matrix m;
    Rotate3D(axis, angle, Raw(m));
    return m;
}
Matrix Turn(double ax, double ay, double az) {
    Matrix m;
    Rotate3D(ax, ay, az, Raw(m));
    return m;
}

Point Image(const Point& p, Matrix m) {
    const double in[4] = {p[0], p[1], p[2], 1};
    double out[4];
    Transform3D(in, Raw(m), out);
    return {out[0], out[1], out[2]};
}

double Deviation(const Matrix& a, const Matrix& b) {
    double worst = 0;
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j) worst = std::max(worst, std::fabs(a[i][j] - b[i][j]));
    return worst;
}

double Deviation(const Point& a, const Point& b) {
    return std::max({std::fabs(a[0] - b[0]), std::fabs(a[1] - b[1]), std::fabs(a[2] - b[2])});
}

Point Seen(const CView3D& view) { return {view.x(), view.y(), view.z()}; }

/// A generated factor from 1/4 to 4 of either sign: what keeps matrices well conditioned.
double Factor(std::int16_t n) { return std::copysign(std::exp2(Spread(n, 2)), n % 2 == 0 ? 1.0 : -1.0); }

// The matrices of these tests have entries up to a few hundred and condition numbers up to about 1e5.
constexpr double kRounding = 1e-9;

TEST(Matrix3D, PlainBuildersFollowTheRowVectorConvention) {
    EXPECT_EQ(Translation(1, 2, 3), (Matrix{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {-1, -2, -3, 1}}}));
    EXPECT_EQ(Scaling(2, 3, 4), (Matrix{{{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {0, 0, 0, 1}}}));
    Matrix m = Translation(1, 2, 3), zero, copy;
    ZeroMat(Raw(zero));
    EXPECT_EQ(zero, Matrix{});
    CopyMat(Raw(m), Raw(copy));
    EXPECT_EQ(copy, m);
    UnityMat(Raw(m));
    EXPECT_EQ(m, kIdentity);
    double v[4] = {5, 6, 7, 8};
    ZeroVec(v);
    EXPECT_THAT(v, ElementsAre(0, 0, 0, 1));
}

TEST(Matrix3D, PositiveTurnsGoFromEachAxisTowardsTheNext) {
    struct Case {
        int axis;
        Point from, to;
    };
    for (const auto& [axis, from, to] :
         {Case{1, {0, 1, 0}, {0, 0, 1}}, {2, {0, 0, 1}, {1, 0, 0}}, {3, {1, 0, 0}, {0, 1, 0}}}) {
        EXPECT_LT(Deviation(Image(from, Turn(axis, kPi / 2)), to), 1e-15) << "axis " << axis;
    }
    for (int axis : {0, 4, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        EXPECT_EQ(Turn(axis, 1.0), kIdentity) << axis;
}

TEST(Matrix3D, CombinedTurnGoesAboutZThenYThenX) {
    test::ExpectLaw([](std::int16_t a, std::int16_t b, std::int16_t c) {
        const double ax = Spread(a, 7), ay = Spread(b, 7), az = Spread(c, 7);
        const Matrix stepwise = Product(Turn(3, az), Product(Turn(2, ay), Turn(1, ax)));
        RC_ASSERT(Deviation(Turn(ax, ay, az), stepwise) < 1e-14);
    });
}

TEST(Matrix3D, CombinedTurnLeavesOutAnglesBelowTheTolerance) {
    EXPECT_EQ(Turn(0.0, 0.0, 0.0), kIdentity);
    EXPECT_EQ(Turn(0.99e-8, -0.99e-8, 0.99e-8), kIdentity);
    for (const Matrix& m : {Turn(1e-8, 0, 0), Turn(0, -1e-8, 0), Turn(0, 0, 1e-8)}) EXPECT_NE(m, kIdentity);
    EXPECT_EQ(Turn(1.0, 1e-9, 0.0), Turn(1, 1.0)) << "each by itself";
    EXPECT_NE(Turn(3, 1e-9), kIdentity) << "a turn about one axis is taken as it is";
}

TEST(Matrix3D, TurnsFormAGroup) {
    test::ExpectLaw([](std::uint8_t which, std::int16_t a, std::int16_t b) {
        const int axis = 1 + which % 3;
        const double one = Spread(a, 7), other = Spread(b, 7);
        RC_ASSERT(Deviation(Product(Turn(axis, one), Turn(axis, other)), Turn(axis, one + other)) < 1e-14);
        RC_ASSERT(Deviation(Product(Turn(axis, one), Turn(axis, -one)), kIdentity) < 1e-15);
        Matrix transposed = Turn(axis, one);
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < i; ++j) std::swap(transposed[i][j], transposed[j][i]);
        RC_ASSERT(Deviation(transposed, Turn(axis, -one)) == 0);
    });
}

TEST(Matrix3D, ProductLetsItsLeftFactorActFirstAndMayOverwriteEither) {
    const Matrix shift = Translation(-1, 0, 0), stretch = Scaling(2, 2, 2);
    EXPECT_EQ(Image({1, 0, 0}, Product(shift, stretch)), (Point{4, 0, 0}));
    EXPECT_EQ(Image({1, 0, 0}, Product(stretch, shift)), (Point{3, 0, 0}));
    Matrix left = shift, right = stretch;
    const Matrix product = Product(shift, stretch);
    MultMat(Raw(left), Raw(right), Raw(left));
    EXPECT_EQ(left, product);
    left = shift;
    MultMat(Raw(left), Raw(right), Raw(right));
    EXPECT_EQ(right, product);
}

TEST(Matrix3D, TransformUsesAllFourComponentsAndGivesOneForTheLast) {
    Matrix m = {{{1, 2, 3, 99}, {4, 5, 6, 99}, {7, 8, 9, 99}, {10, 11, 12, 99}}};
    double v[4] = {1, 10, 100, 2};
    Transform3D(v, Raw(m), v);
    EXPECT_THAT(v, ElementsAre(761, 874, 987, 1)) << "in place, no division by w";
}

TEST(Matrix3D, PreparedMatrixMovesThenTurnsThenScales) {
    test::ExpectLaw([](const std::array<std::int16_t, 9>& n, std::int16_t px, std::int16_t py) {
        const auto shift = [&](std::size_t i) { return Spread(n[i], 100); };
        const auto scale = [&](std::size_t i) { return Factor(n[i]); };
        const auto angle = [&](std::size_t i) { return Spread(n[i], 7); };
        const auto made = [&](auto* make) {
            return Made(make, shift(0), shift(1), shift(2), scale(3), scale(4), scale(5), angle(6), angle(7),
                        angle(8));
        };
        const Matrix m = made(PrepareMat3D), inverse = made(PrepareInvMat3D);
        const Point p{Spread(px, 100), Spread(py, 100), 3};
        Point moved{p[0] - shift(0), p[1] - shift(1), p[2] - shift(2)};
        for (int axis : {3, 2, 1})
            moved = Image(moved, Turn(axis, angle(5 + static_cast<std::size_t>(axis))));
        moved = {moved[0] * scale(3), moved[1] * scale(4), moved[2] * scale(5)};
        RC_ASSERT(Deviation(Image(p, m), moved) < kRounding);
        RC_ASSERT(Deviation(Image(moved, inverse), p) < kRounding);
        RC_ASSERT(inverse == Inverse(m));
    });
}

TEST(Matrix3D, InverseFindsPivotsOffTheDiagonal) {
    std::array<std::size_t, 4> order = {0, 1, 2, 3};
    do {
        Matrix permutation{}, transposed{};
        for (std::size_t i = 0; i < 4; ++i) permutation[i][order[i]] = transposed[order[i]][i] = 1;
        EXPECT_EQ(Inverse(permutation), transposed);
    } while (std::ranges::next_permutation(order).found);
    // Without exchanging rows the small pivot would swallow everything else.
    const Matrix small = {{{1e-7, 1, 0, 0}, {1, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    EXPECT_LT(Deviation(Product(small, Inverse(small)), kIdentity), 1e-15);
}

TEST(Matrix3D, InverseOfSingularMatricesIsHugeOrNotFiniteButNeverAnError) {
    EXPECT_EQ(Inverse(Scaling(1e-12, 1, 1))[0][0], 1 / 1e-8) << "a tiny pivot counts as the tolerance";
    EXPECT_EQ(Inverse(Scaling(1, -1e-12, 1))[1][1], 1 / -1e-8) << "with its sign";
    EXPECT_EQ(Inverse(Scaling(1e-8, 1, 1))[0][0], 1 / 1e-8);
    EXPECT_FALSE(std::isfinite(Inverse(Scaling(1, 1, 0))[2][2])) << "nothing stands in for exactly 0";
    Matrix dependent = kIdentity;
    dependent[1] = dependent[0];
    EXPECT_FALSE(std::isfinite(Inverse(dependent)[0][0]));
    for (double bad : {kNaN, kInfinity, -kInfinity, 1e308}) {
        Matrix m = Scaling(bad, 1, bad);
        m[1][2] = bad;
        static_cast<void>(Inverse(m));
    }
}

// --- The view ----------------------------------------------------------------------------------

TEST(View3D, StartsAndResetsToTheIdentity) {
    CView3D view;
    const auto expectIdentity = [&view] {
        EXPECT_THAT(view.vector(), ElementsAre(0, 0, 0, 1));
        EXPECT_EQ(view.imat()[0][0], 1);
        view.Transfer(1, 2, 3);
        EXPECT_THAT(view.vector(), ElementsAre(1, 2, 3, 1));
        EXPECT_EQ(view.w(), 1);
        view.Return(1, 2, 3);
        EXPECT_THAT(view.vector(), ElementsAre(1, 2, 3, 1));
    };
    expectIdentity();
    view.Scale(2, 2, 2);
    view.Return(4, 4, 4);
    view.Reset();
    expectIdentity();
}

TEST(View3D, NewestCallActsFirst) {
    CView3D view;
    view.Translate(1, 0, 0);
    view.Scale(2, 2, 2);
    view.Transfer(1, 0, 0);
    EXPECT_THAT(Seen(view), ElementsAre(1, 0, 0));
    CView3D after;
    after.Translate(-5, 0, 0);
    view *= after;
    view.Transfer(1, 0, 0);
    EXPECT_THAT(Seen(view), ElementsAre(6, 0, 0)) << "a product acts after what is there";
    after.Scale(3, 3, 3);
    after *= after;
    after.Transfer(1, 0, 0);
    EXPECT_THAT(Seen(after), ElementsAre(3 * (3 + 5) + 5, 0, 0)) << "also with itself";
    CView3D plane, space;
    plane.Rotate(kPi / 2);
    plane.Transfer(1, 0, 0);
    space.Rotate(0, 0, kPi / 2);
    space.Transfer(1, 0, 0);
    EXPECT_LT(Deviation(Seen(plane), {0, 1, 0}), 1e-15) << "a turn in the plane goes from x towards y";
    EXPECT_EQ(Seen(space), Seen(plane));
}

TEST(View3D, ReturnUndoesTransferAfterEveryKindOfChange) {
    struct Case {
        const char* change;
        void (*make)(CView3D&);
    };
    static const double matrix[4][4] = {{0, 2, 0, 0}, {-3, 0, 0, 0}, {0, 0, 4, 0}, {5, 6, 7, 1}};
    const Case cases[] = {
        {"Translate", [](CView3D& v) { v.Translate(1, 2, 3); }},
        {"Scale", [](CView3D& v) { v.Scale(2, -3, 4); }},
        {"Rotate", [](CView3D& v) { v.Rotate(0.3); }},
        {"Rotate about three axes", [](CView3D& v) { v.Rotate(0.3, 0.4, 0.5); }},
        {"SetMat", [](CView3D& v) { v.SetMat(matrix); }},
        {"SetMat of its own", [](CView3D& v) { v.Translate(1, 1, 1), v.SetMat(std::as_const(v).mat()); }},
        {"operator=",
         [](CView3D& v) {
             CView3D other;
             other.Scale(5, 5, 5);
             v = other;
         }},
        {"operator*=",
         [](CView3D& v) {
             CView3D other;
             other.Scale(5, 5, 5);
             v *= other;
         }},
        {"mat", [](CView3D& v) { v.mat()[3][0] += 17; }},
        {"Reset", [](CView3D& v) { v.Reset(); }},
    };
    for (const Case& c : cases) {
        CView3D view;
        view.Rotate(1, 2, 3);
        view.imat();
        c.make(view);
        const Point p{1, -2, 3};
        view.Transfer(p[0], p[1], p[2]);
        view.Return(view.x(), view.y(), view.z());
        EXPECT_LT(Deviation(Seen(view), p), 1e-13) << c.change;
    }
}

TEST(View3D, InverseIsKeptBetweenChanges) {
    CView3D view;
    view.Scale(2, 2, 2);
    view.imat()[3][0] = 100;  // visible only while the inverse is not computed anew
    view.Return(2, 0, 0);
    EXPECT_EQ(view.x(), 101);
    view.Transfer(1, 0, 0);
    view.Return(2, 0, 0);
    EXPECT_EQ(view.x(), 101);
    EXPECT_EQ(std::as_const(view).mat()[0][0], 2);
    view.Return(2, 0, 0);
    EXPECT_EQ(view.x(), 101) << "reading through a const view is no change";
    view.mat();
    view.Return(2, 0, 0);
    EXPECT_EQ(view.x(), 1);
}

TEST(View3D, CopiesTakeTheTransformButNotThePoint) {
    CView3D source;
    source.Scale(2, 3, 4);
    source.Transfer(1, 1, 1);
    CView3D copy(source);
    EXPECT_THAT(copy.vector(), ElementsAre(0, 0, 0, 1));
    CView3D assigned;
    assigned.Transfer(7, 8, 9);
    assigned = source;
    EXPECT_THAT(assigned.vector(), ElementsAre(7, 8, 9, 1));
    for (CView3D* view : {&copy, &assigned}) {
        view->Transfer(1, 1, 1);
        EXPECT_THAT(Seen(*view), ElementsAre(2, 3, 4));
        view->Return(2, 3, 4);
        EXPECT_THAT(Seen(*view), ElementsAre(1, 1, 1));
    }
}

TEST(View3D, PointRoundsToTheNearestHalvesUpwards) {
    struct Case {
        double x, y;
        int column, row;
    };
    constexpr int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    for (const Case& c : {Case{2.5, -2.5, 3, -2},
                          {2.49, -2.51, 2, -3},
                          {-0.5, 0.5, 0, 1},
                          {1e300, -1e300, highest, lowest},
                          {kInfinity, -kInfinity, highest, lowest},
                          {kNaN, 2147483647.4, 0, highest},
                          {-2147483648.5, -2147483648.4, lowest, lowest}}) {
        CView3D view;
        view.vector()[0] = c.x;
        view.vector()[1] = c.y;
        EXPECT_EQ(view.point().x, c.column) << c.x;
        EXPECT_EQ(view.point().y, c.row) << c.y;
    }
}

}  // namespace
}  // namespace tarvex
