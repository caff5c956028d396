// Skeletons, checked against the promises by plain searches over the pixels.
#include "support/precompiled.h"

#include "support/ascii_raster.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/raster.h"
#include "tarvex/skeleton.h"

namespace tarvex {
namespace {

using namespace test;

BitPicture Pixels(HBITMAP handle) {
    BITMAP bitmap{};
    EXPECT_NE(GetObject(handle, static_cast<int>(sizeof bitmap), &bitmap), 0);
    BitPicture picture(bitmap.bmWidth, bitmap.bmHeight);
    for (int y = 0; y < picture.Height(); ++y) {
        for (int x = 0; x < picture.Width(); ++x) picture.Set(x, y, CImgProc::GetPixel(bitmap, x, y));
    }
    return picture;
}

BitPicture Skeleton(const BitPicture& shape) {
    CSkeleton skeleton;
    EXPECT_NE(skeleton.MakeBitmapMono(Bitmap1(shape).Get()), nullptr);
    EXPECT_TRUE(skeleton.DoSkeleton());
    return Pixels(skeleton.Bitmap());
}

enum class Kind { shape, ground };  // the shape hangs together by corners, the ground does not

/// For each pixel, the margin of one around the picture included, the number of its piece; 0 for others.
struct Pieces {
    int width;
    int count = 0;
    std::vector<int> labels;

    Pieces(const BitPicture& picture, Kind kind) : width(picture.Width() + 2) {
        const int height = picture.Height() + 2;
        const auto at = [&](int i) {
            return picture.Get(i % width - 1, i / width - 1) == (kind == Kind::shape);
        };
        labels.resize(static_cast<std::size_t>(width * height));
        std::vector<int> waiting;
        for (int start = 0; start < width * height; ++start) {
            if (!at(start) || Label(start) != 0) continue;
            Label(start) = ++count;
            waiting.assign(1, start);
            while (!waiting.empty()) {
                const int i = waiting.back();
                waiting.pop_back();
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int x = i % width + dx, y = i / width + dy, next = y * width + x;
                        if (x < 0 || y < 0 || x >= width || y >= height) continue;
                        if ((kind == Kind::ground && dx != 0 && dy != 0) || !at(next) || Label(next) != 0)
                            continue;
                        Label(next) = count;
                        waiting.push_back(next);
                    }
                }
            }
        }
    }
    int& Label(int i) { return labels[static_cast<std::size_t>(i)]; }

    /// Whether every piece of the one lies in a piece of the other, no two in the same and none left over.
    bool MatchOneToOne(const Pieces& larger) const {
        std::vector<int> partner(static_cast<std::size_t>(count) + 1);
        std::vector<int> uses(static_cast<std::size_t>(larger.count) + 1);
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (labels[i] == 0) continue;
            int& known = partner[static_cast<std::size_t>(labels[i])];
            if (known == 0) ++uses[static_cast<std::size_t>(known = larger.labels[i])];
            if (known != larger.labels[i] || known == 0) return false;
        }
        return std::all_of(uses.begin() + 1, uses.end(), [](int n) { return n == 1; });
    }
};

int Neighbours(const BitPicture& picture, int x, int y) {
    int count = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) count += (dx != 0 || dy != 0) && picture.Get(x + dx, y + dy) ? 1 : 0;
    }
    return count;
}

std::vector<POINT> Ends(const BitPicture& lines) {
    std::vector<POINT> ends;
    for (int y = 0; y < lines.Height(); ++y) {
        for (int x = 0; x < lines.Width(); ++x) {
            if (lines.Get(x, y) && Neighbours(lines, x, y) < 2) ends.push_back({x, y});
        }
    }
    return ends;
}

/// A pixel of a line that is not its end and could go without breaking the line or opening a hole.
std::string NeedlessPixels(const BitPicture& lines) {
    std::string found;
    for (int y = 0; y < lines.Height(); ++y) {
        for (int x = 0; x < lines.Width(); ++x) {
            if (!lines.Get(x, y) || Neighbours(lines, x, y) < 2) continue;
            BitPicture around(3, 3), without(3, 3);
            for (int i = 0; i < 9; ++i) {
                around.Set(i % 3, i / 3, lines.Get(x + i % 3 - 1, y + i / 3 - 1));
                without.Set(i % 3, i / 3, i != 4 && around.Get(i % 3, i / 3));
            }
            const bool breaks = Pieces(without, Kind::shape).count != 1;
            const bool opens = Pieces(without, Kind::ground).count != Pieces(around, Kind::ground).count ||
                               (around.Get(1, 0) && around.Get(0, 1) && around.Get(2, 1) && around.Get(1, 2));
            // In the window's corners the ground may hang together by way of the outside: that is a break
            // too.
            if (!breaks && !opens) found += " (" + std::to_string(x) + ", " + std::to_string(y) + ")";
        }
    }
    return found;
}

TEST(Skeleton, HasThePiecesAndHolesOfTheShapeAndIsOnePixelWideForGood) {
    ExpectLaw(
        [] {
            const BitPicture shape = AnyPicture();
            const BitPicture lines = Skeleton(shape);
            RC_ASSERT(Pieces(lines, Kind::shape).MatchOneToOne(Pieces(shape, Kind::shape)));
            RC_ASSERT(Pieces(shape, Kind::ground).MatchOneToOne(Pieces(lines, Kind::ground)));
            RC_ASSERT(NeedlessPixels(lines) == "");
            RC_ASSERT(Skeleton(lines) == lines);
        },
        300);
}

double DistanceToSegment(DPOINT p, DPOINT a, DPOINT b) {
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double t = square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

void DrawStroke(BitPicture& picture, DPOINT a, DPOINT b, double radius) {
    for (int y = 0; y < picture.Height(); ++y) {
        for (int x = 0; x < picture.Width(); ++x) {
            const DPOINT p{static_cast<double>(x), static_cast<double>(y)};
            if (DistanceToSegment(p, a, b) <= radius) picture.Set(x, y);
        }
    }
}

/// Changes edge pixels by chance, none near another, so that no holes come about.
void MakeRagged(BitPicture& picture, unsigned seed) {
    std::mt19937 random(seed);
    const BitPicture before = picture;
    for (int y = 1; y + 1 < picture.Height(); ++y) {
        for (int x = 1; x + 1 < picture.Width(); ++x) {
            const int sides =
                before.Get(x - 1, y) + before.Get(x + 1, y) + before.Get(x, y - 1) + before.Get(x, y + 1);
            if ((x + 2 * y) % 5 == 0 && sides > 0 && sides < 4 && random() % 2 == 0)
                picture.Set(x, y, !before.Get(x, y));
        }
    }
}

/// A root mean square.
class Squares {
  public:
    void Add(double v) {
        m_sum += v * v;
        ++m_count;
    }
    double Root() const { return std::sqrt(m_sum / m_count); }

  private:
    double m_sum = 0;
    int m_count = 0;
};

TEST(Skeleton, RunsInTheMiddleFromEndToEndWithoutSpursAtEveryWidthAndSlant) {
    for (const double radius : {0.8, 1.5, 2.5, 4.2, 9.0, 20.0}) {
        Squares all, slanted;
        for (int degrees = 0; degrees < 180; degrees += 13) {
            SCOPED_TRACE(testing::Message() << "radius " << radius << " at " << degrees << " degrees");
            const double turn = degrees * 3.14159265358979 / 180;
            const DPOINT along{std::cos(turn), std::sin(turn)};
            const DPOINT a{100.3 - 60 * along.x, 99.8 - 60 * along.y},
                b{100.3 + 60 * along.x, 99.8 + 60 * along.y};
            BitPicture stroke(200, 200);
            DrawStroke(stroke, a, b, radius);
            const BitPicture lines = Skeleton(stroke);
            const std::vector<POINT> ends = Ends(lines);
            ASSERT_EQ(ends.size(), 2U) << "spurs";
            for (const POINT& end : ends) {
                const DPOINT p{static_cast<double>(end.x), static_cast<double>(end.y)};
                EXPECT_LE(std::min(std::hypot(p.x - a.x, p.y - a.y), std::hypot(p.x - b.x, p.y - b.y)), 3);
            }
            for (int y = 0; y < 200; ++y) {
                for (int x = 0; x < 200; ++x) {
                    if (!lines.Get(x, y)) continue;
                    const DPOINT p{static_cast<double>(x), static_cast<double>(y)};
                    if (std::fabs((p.x - 100.3) * along.x + (p.y - 99.8) * along.y) > 57) continue;
                    const double off = DistanceToSegment(p, a, b);
                    EXPECT_LE(off, radius < 1 ? 1.1 : 0.85);
                    all.Add(off);
                    if (degrees != 0) slanted.Add(off);
                }
            }
            if (radius < 4) continue;
            MakeRagged(stroke, static_cast<unsigned>(degrees));
            EXPECT_EQ(Ends(Skeleton(stroke)).size(), 2U) << "spurs from a ragged edge";
        }
        EXPECT_LE(all.Root(), radius < 1 ? 0.5 : 0.4) << "radius " << radius;
        // Where a level stroke's middle lies between two rows the line is as far off as that; where it
        // slants, a perfect rounding to pixels is 0.26 off.
        const double most = radius < 1 ? 0.45 : radius < 2 ? 0.4 : 0.3;
        EXPECT_LE(slanted.Root(), most) << "radius " << radius;
    }
}

/// The picture turned or mirrored: bit 2 exchanges columns and rows, bits 0 and 1 then left and right, top
/// and bottom.
BitPicture Turned(const BitPicture& picture, unsigned how) {
    const bool exchanges = (how & 4) != 0;
    const int width = exchanges ? picture.Height() : picture.Width();
    const int height = exchanges ? picture.Width() : picture.Height();
    BitPicture turned(width, height);
    for (int v = 0; v < height; ++v) {
        for (int u = 0; u < width; ++u) {
            const int x = (how & 1) != 0 ? width - 1 - u : u, y = (how & 2) != 0 ? height - 1 - v : v;
            turned.Set(u, v, exchanges ? picture.Get(y, x) : picture.Get(x, y));
        }
    }
    return turned;
}

/// The farthest that a pixel of `a` lies from all of `b`.
double FarthestFrom(const BitPicture& a, const BitPicture& b) {
    double farthest = 0;
    for (int y = 0; y < a.Height(); ++y) {
        for (int x = 0; x < a.Width(); ++x) {
            if (!a.Get(x, y)) continue;
            double nearest = 1e9;
            for (int dy = -9; dy <= 9; ++dy) {
                for (int dx = -9; dx <= 9; ++dx) {
                    if (b.Get(x + dx, y + dy)) nearest = std::min(nearest, std::hypot(dx, dy));
                }
            }
            farthest = std::max(farthest, nearest);
        }
    }
    return farthest;
}

/// Three strokes from near a picture's corners and edge to near its middle, by chance.
BitPicture ThreeStrokes(std::mt19937& random) {
    const auto below = [&random](unsigned bound) {
        return static_cast<double>(random() % (8UL * bound)) / 8;
    };
    BitPicture shape(120, 100);
    const double x = 50 + below(20);  // in statements of their own: the same for every compiler
    const double y = 40 + below(20);
    for (const DPOINT tip : {DPOINT{12, 12}, {108, 20}, {60, 90}}) {
        const double width = 2 + below(4);
        const double right = below(4);
        DrawStroke(shape, {tip.x + right, tip.y - below(4)}, {x, y}, width);
    }
    return shape;
}

TEST(Skeleton, MovesByAPixelAtMostWhenThePictureIsTurnedOrMirrored) {
    std::mt19937 random(3);
    for (int i = 0; i < 20; ++i) {
        const BitPicture shape = ThreeStrokes(random);
        const BitPicture lines = Skeleton(shape);
        for (unsigned how = 1; how < 8; ++how) {
            const unsigned back = how == 5 ? 6 : how == 6 ? 5 : how;  // quarter turns
            const BitPicture other = Turned(Skeleton(Turned(shape, how)), back);
            EXPECT_LE(FarthestFrom(lines, other), 1.5) << i << " turned by " << how;  // a pixel aslant
            EXPECT_LE(FarthestFrom(other, lines), 1.5) << i << " turned by " << how;
        }
    }
}

TEST(Skeleton, OfAMirroredShapeIsMirroredToAPixel) {
    std::mt19937 random(3);
    std::string lopsided;
    int count = 0;
    for (int i = 0; i < 100; ++i) {
        const BitPicture shape = ThreeStrokes(random);
        for (const unsigned symmetry : {1U, 2U, 3U}) {
            BitPicture both = shape;
            const BitPicture mirrored = Turned(shape, symmetry);
            for (int k = 0; k < 120 * 100; ++k) {
                if (mirrored.Get(k % 120, k / 120)) both.Set(k % 120, k / 120);
            }
            const BitPicture lines = Skeleton(both);
            if (FarthestFrom(lines, Turned(lines, symmetry)) <= 1.5) continue;
            EXPECT_GE(i, 32) << "by " << symmetry;
            ++count;
            lopsided += " " + std::to_string(i) + " by " + std::to_string(symmetry);
        }
    }
    // In two a branch is as long as it must be on one side, and on the other a pixel shorter.
    EXPECT_LE(count, 2) << lopsided;
}

TEST(Skeleton, OfSimpleShapesIsWhatOneWouldDraw) {
    struct Case {
        const char* name;
        std::vector<std::string_view> shape;
        std::vector<std::string_view> lines;
    };
    const Case cases[] = {
        {"nothing", {"....", "...."}, {"....", "...."}},
        {"one pixel", {"#"}, {"#"}},
        {"one row", {"#####"}, {"#####"}},
        {"one column", {"#", "#", "#"}, {"#", "#", "#"}},
        {"a bar", {"#########", "#########", "#########"}, {".........", ".#######.", "........."}},
        {"a square", {"###", "###", "###"}, {"...", ".#.", "..."}},
        {"a checkerboard but for its spurs",
         {"#.#.#", ".#.#.", "#.#.#", ".#.#.", "#.#.#"},
         {"..#..", ".#.#.", "#.#.#", ".#.#.", "..#.."}},
        {"a frame",
         {"#########", "#########", "#########", "###...###", "###...###", "#########", "#########",
          "#########"},
         {".........", "..#####..", ".#.....#.", ".#.....#.", ".#.....#.", ".#.....#.", "..#####..",
          "........."}},
        {"a bump on a bar",
         {"....#......", "###########", "###########", "###########"},
         {"...........", "...........", ".#########.", "..........."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Skeleton(Drawn(c.shape)), Drawn(c.lines));
    }
}

TEST(Skeleton, TakesColouredPicturesAndThinsInPlace) {
    const UniqueBitmap coloured(CImgProc::CreateBitmap32(40, 20));
    BITMAP bitmap{};
    ASSERT_NE(GetObject(coloured.Get(), static_cast<int>(sizeof bitmap), &bitmap), 0);
    BitPicture shape(40, 20);
    shape.FillRectangle(3, 5, 36, 13);
    for (int y = 5; y <= 13; ++y) {
        for (int x = 3; x <= 36; ++x) CImgProc::SetPixel32(bitmap, x, y, RGB(x, x % 2, 0));
    }
    const BitPicture expected = Skeleton(shape);
    CSkeleton skeleton;
    ASSERT_NE(skeleton.MakeBitmapMono(coloured.Get()), nullptr);
    EXPECT_EQ(Pixels(skeleton.Bitmap()), shape) << "a copy in white";
    ASSERT_TRUE(skeleton.DoSkeleton());
    EXPECT_EQ(Pixels(skeleton.Bitmap()), expected);
    EXPECT_EQ(CImgProc::GetPixel32(bitmap, 7, 7), RGB(7, 1, 0)) << "the source stays";
    ASSERT_TRUE(CSkeleton::DoSkeleton(coloured.Get()));
    EXPECT_EQ(Pixels(coloured.Get()), expected);
    EXPECT_EQ(CImgProc::GetPixel32(bitmap, 20, 9), RGB(255, 255, 255));
}

TEST(Skeleton, WithoutABitmapSaysSo) {
    CSkeleton skeleton;
    CPolyPolyBezier out;
    out.Add(std::make_unique<CArray<BPOINT, BPOINT>>());
    EXPECT_FALSE(skeleton.DoSkeleton());
    EXPECT_FALSE(skeleton.Output(out));
    EXPECT_EQ(out.GetSize(), 0);
    EXPECT_EQ(skeleton.Bitmap(), nullptr);
    EXPECT_FALSE(CSkeleton::DoSkeleton(nullptr));
    ASSERT_TRUE(skeleton.InputMono(Bitmap1(Drawn({"##"})).Get()));
    EXPECT_FALSE(skeleton.InputMono(nullptr));
    EXPECT_EQ(skeleton.Bitmap(), nullptr) << "an earlier mask does not stay for a failed one";
}

TEST(Skeleton, BranchesMeetInOnePointBitForBitAndLoopsClose) {
    BitPicture shape(120, 80);
    const DPOINT centre{50.2, 40.4};
    for (const DPOINT tip : {DPOINT{10, 12}, {95, 30}, {48, 72}}) DrawStroke(shape, centre, tip, 3.5);
    for (double t = 0; t < 6.3; t += 0.05)
        DrawStroke(shape, {100 + 10 * std::cos(t), 62 + 10 * std::sin(t)},
                   {100 + 10 * std::cos(t), 62 + 10 * std::sin(t)}, 2);
    shape.Set(3, 76);
    CSkeleton skeleton;
    CPolyPolyBezier out;
    ASSERT_TRUE(skeleton.InputMono(Bitmap1(shape).Get()));
    ASSERT_TRUE(skeleton.Output(out));
    ASSERT_EQ(out.GetSize(), 5);
    std::vector<DPOINT> junctions;
    int loops = 0, dots = 0;
    for (int i = 0; i < out.GetSize(); ++i) {
        const auto& nodes = out[i];
        const DPOINT first = nodes[0].pt, last = nodes[nodes.GetUpperBound()].pt;
        const bool isClosed = first.x == last.x && first.y == last.y;
        if (isClosed && nodes.GetSize() == 2) {
            ++dots;
            EXPECT_EQ(first, (DPOINT{3, 76}));
        } else if (isClosed) {
            ++loops;
        } else {
            for (const DPOINT& end : {first, last}) {
                if (std::hypot(end.x - centre.x, end.y - centre.y) < 6) junctions.push_back(end);
            }
        }
    }
    EXPECT_EQ(loops, 1);
    EXPECT_EQ(dots, 1);
    ASSERT_EQ(junctions.size(), 3U);
    for (const DPOINT& p : junctions) EXPECT_TRUE(p.x == junctions[0].x && p.y == junctions[0].y);
}

}  // namespace
}  // namespace tarvex
