// Edges of made pictures: where they are found, where not, and what stays the
// same.
#include "support/precompiled.h"

#include "platform/handles.h"
#include "support/property.h"
#include "tarvex/bezier.h"
#include "tarvex/edges.h"
#include "tarvex/raster.h"

namespace tarvex::test {
namespace {

using Inside = std::function<double(double x, double y)>;  ///< distance to the border, positive inside

struct Grey {
    int width;
    int height;
    std::vector<std::uint8_t> levels;
    Grey(int w, int h) : width(w), height(h), levels(static_cast<std::size_t>(w * h)) {}
    std::uint8_t& At(int x, int y) { return levels[static_cast<std::size_t>(y * width + x)]; }
    GreyView View() const { return {levels.data(), width, height, width}; }
};

/// Two levels with an edge a pixel wide between them, and noise of this
/// standard deviation.
Grey Drawn(int width, int height, const Inside& inside, double dark, double light, double noise) {
    Grey picture(width, height);
    std::mt19937 random(7);
    std::normal_distribution<double> normal;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double part = std::clamp(inside(x, y) + 0.5, 0.0, 1.0);
            const double level = dark + (light - dark) * part + noise * normal(random);
            picture.At(x, y) = static_cast<std::uint8_t>(std::clamp(std::round(level), 0.0, 255.0));
        }
    }
    return picture;
}

struct Found {
    std::vector<POINT> pixels;
    EdgeThresholds thresholds;
};

Found Detected(const Grey& picture, const EdgeOptions& options) {
    CEdgeDetect edges;
    EXPECT_TRUE(edges.Detect(picture.View(), options));
    BITMAP bitmap{};
    EXPECT_NE(GetObject(edges.Bitmap(), sizeof bitmap, &bitmap), 0);
    EXPECT_EQ(bitmap.bmWidth, picture.width);
    EXPECT_EQ(bitmap.bmHeight, picture.height);
    Found found;
    found.thresholds = edges.Thresholds();
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (CImgProc::GetPixel(bitmap, x, y)) found.pixels.push_back({x, y});
        }
    }
    return found;
}

constexpr EdgeMethod kMethods[] = {EdgeMethod::Canny, EdgeMethod::ShenCastan};

Inside Disc(double cx, double cy, double r) {
    return [=](double x, double y) { return r - std::hypot(x - cx, y - cy); };
}
Inside HalfPlane(double angle, double offset) {
    return [=](double x, double y) { return x * std::cos(angle) + y * std::sin(angle) - offset; };
}

struct Shape {
    const char* name;
    Inside inside;
    std::function<DPOINT(double)> border;  ///< points of it, for 0 to 1, well inside the picture
};

std::vector<Shape> Shapes() {
    std::vector<Shape> shapes = {
        {"disc", Disc(64.3, 59.8, 40), [](double t) {
             return DPOINT{64.3 + 40 * std::cos(6.2832 * t), 59.8 + 40 * std::sin(6.2832 * t)};
         }}};
    for (const double degrees : {0.0, 90.0, 45.0, 17.0, 105.0}) {
        const double a = degrees / 57.29578;
        const double offset = 64 * std::cos(a) + 60 * std::sin(a) + 0.3;
        shapes.push_back({"step", HalfPlane(a, offset), [=](double t) {
                              const double along = (t - 0.5) * 90;
                              return DPOINT{64 + 0.3 * std::cos(a) - along * std::sin(a),
                                            60 + 0.3 * std::sin(a) + along * std::cos(a)};
                          }});
    }
    return shapes;
}

/// How much of the border has an edge pixel within a distance, and how much of
/// the edges lies within it of the border. The picture's outermost pixels do
/// not count.
struct Rates {
    double detected = 0;
    double placed = 0;
    double meanDistance = 0;
};

Rates RatesOf(const Found& found, const Shape& shape, const Grey& picture, double distance) {
    Rates rates;
    constexpr int samples = 400;
    for (int i = 0; i < samples; ++i) {
        const DPOINT p = shape.border((i + 0.5) / samples);
        rates.detected += std::any_of(found.pixels.begin(), found.pixels.end(), [&](const POINT& q) {
            return std::hypot(q.x - p.x, q.y - p.y) <= distance;
        });
    }
    int counted = 0;
    for (const POINT& p : found.pixels) {
        if (std::min({p.x, p.y, picture.width - 1 - p.x, picture.height - 1 - p.y}) < 8) continue;
        ++counted;
        const double off = std::fabs(shape.inside(p.x, p.y));
        rates.meanDistance += off;
        rates.placed += off <= distance;
    }
    rates.detected /= samples;
    rates.placed /= std::max(counted, 1);
    rates.meanDistance /= std::max(counted, 1);
    return rates;
}

TEST(EdgeDetect, StepsAreFoundAndPlacedWithinAPixel) {
    struct Case {
        double step, noise, sigma;
        double detected, placed;
    };
    for (const EdgeMethod method : kMethods) {
        for (const Case& c : {Case{200, 0, 1.4, 1, 1},
                              {60, 0, 1, 1, 1},
                              {12, 0, 1.4, 1, 1},
                              {100, 10, 1.4, 0.99, 0.97},
                              {60, 10, 2, 0.99, 0.9}}) {
            for (const Shape& shape : Shapes()) {
                const Grey picture =
                    Drawn(128, 120, shape.inside, 128 - c.step / 2, 128 + c.step / 2, c.noise);
                EdgeOptions options;
                options.method = method;
                options.sigma = c.sigma;
                const Found found = Detected(picture, options);
                // A border that a pixel's centre misses by up to 0.71 has its noise on
                // top.
                const Rates rates = RatesOf(found, shape, picture, c.noise > 0 ? 1.5 : 1.0);
                SCOPED_TRACE(std::string(shape.name) + " of " + std::to_string(c.step) + " in noise " +
                             std::to_string(c.noise) +
                             (method == EdgeMethod::Canny ? " Canny" : " Shen-Castan"));
                EXPECT_GE(rates.detected, c.detected);
                EXPECT_GE(rates.placed, c.placed);
                EXPECT_LT(rates.meanDistance, 0.75);
            }
        }
    }
}

TEST(EdgeDetect, FlatAndSlopingAreasAndNoiseHaveNoEdges) {
    const auto slope = [](double x, double) { return (x - 64) / 300; };
    for (const EdgeMethod method : kMethods) {
        EdgeOptions options;
        options.method = method;
        for (const int level : {0, 1, 127, 255}) {
            const Grey flat = Drawn(
                64, 64, [](double, double) { return 1.0; }, 0, level, 0);
            EXPECT_TRUE(Detected(flat, options).pixels.empty());
            EXPECT_EQ(Detected(flat, options).thresholds.high, CEdgeDetect::EDGE_LEAST_STEP);
            options.thresholds = EdgeThresholds{0, 0};
            const bool isExact = method == EdgeMethod::Canny;
            EXPECT_TRUE(!isExact || Detected(flat, options).pixels.empty()) << "none at all";
            options.thresholds.reset();
        }
        EXPECT_TRUE(Detected(Drawn(128, 64, slope, 0, 255, 0), options).pixels.empty());
        for (const double noise : {3.0, 20.0}) {
            const Grey picture = Drawn(
                256, 256, [](double, double) { return 1.0; }, 0, 128, noise);
            EXPECT_LT(Detected(picture, options).pixels.size(), 65536 / 200u) << noise;
        }
    }
}

TEST(EdgeDetect, ANegativeHasTheSameEdges) {
    ExpectLaw(
        [](std::uint32_t seed, bool isFine, bool isGiven) {
            std::mt19937 random(seed);
            Grey picture(1 + static_cast<int>(random() % 40), 1 + static_cast<int>(random() % 40));
            for (auto& level : picture.levels)
                level = static_cast<std::uint8_t>(isFine ? random() : random() % 2 * 99);
            Grey negative = picture;
            for (auto& level : negative.levels) level = static_cast<std::uint8_t>(255 - level);
            for (const EdgeMethod method : kMethods) {
                EdgeOptions options;
                options.method = method;
                options.sigma = 0.5 + static_cast<double>(seed % 5);
                if (isGiven) options.thresholds = EdgeThresholds{2, 9};
                const Found a = Detected(picture, options);
                const Found b = Detected(negative, options);
                RC_ASSERT(a.thresholds.high == b.thresholds.high);
                RC_ASSERT(a.pixels.size() == b.pixels.size());
                for (std::size_t i = 0; i < a.pixels.size(); ++i)
                    RC_ASSERT(a.pixels[i].x == b.pixels[i].x && a.pixels[i].y == b.pixels[i].y);
            }
        },
        60);
}

TEST(EdgeDetect, ThresholdsAreHeightsOfSteps) {
    for (const EdgeMethod method : kMethods) {
        for (const double sigma : {0.7, 1.4, 4.0}) {
            // Between whole pixels, where the ideal step lies.
            const Grey picture = Drawn(
                64, 64, [](double x, double) { return x < 31.5 ? -1.0 : 1.0; }, 50, 110, 0);
            EdgeOptions options;
            options.method = method;
            options.sigma = sigma;
            for (const auto& [high, isFound] : {std::pair(57.0, true), {63.0, false}}) {
                options.thresholds = EdgeThresholds{high, high};
                EXPECT_EQ(Detected(picture, options).pixels.size() >= 64, isFound) << sigma << ' ' << high;
            }
        }
    }
}

TEST(EdgeDetect, WeakPixelsCountWhereTheyHangOnStrongOnes) {
    // A step whose height falls from 80 at the top to 10 at the bottom, and one
    // of 30 beside it.
    Grey picture(96, 96);
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 96; ++x)
            picture.At(x, y) = static_cast<std::uint8_t>(x < 32   ? 100
                                                         : x < 64 ? 180 - 70 * y / 95
                                                                  : 150 - 70 * y / 95);
    }
    for (const EdgeMethod method : kMethods) {
        EdgeOptions options;
        options.method = method;
        options.thresholds = EdgeThresholds{20, 60};
        const Found found = Detected(picture, options);
        int left = 0;
        for (const POINT& p : found.pixels) {
            EXPECT_LT(p.x, 40) << "the even step nowhere reaches the high threshold";
            EXPECT_LT(p.y, 90);
            left += p.x < 40 && p.y < 70;
        }
        EXPECT_GE(left, 69) << "down to the low one it is followed";
    }
}

/// A bitmap of a depth, and the grey picture it stands for.
TEST(EdgeDetect, BitmapsAreTakenByTheirLuminanceAndLeftAsTheyAre) {
    std::mt19937 random(3);
    for (const int depth : {1, 32}) {
        Grey grey(61, 33);
        const UniqueBitmap handle(depth == 1 ? CImgProc::CreateBitmapBW(61, 33)
                                             : CImgProc::CreateBitmap32(61, 33));
        BITMAP bitmap{};
        GetObject(handle.Get(), sizeof bitmap, &bitmap);
        for (int y = 0; y < 33; ++y) {
            for (int x = 0; x < 61; ++x) {
                const int block = (x / 8 + y / 8) % 3;
                const int level =
                    depth == 1 ? 255 * (block > 0) : static_cast<int>(random() % 20) + 90 * block;
                grey.At(x, y) = static_cast<std::uint8_t>(level);
                if (depth == 1) {
                    CImgProc::SetPixel(bitmap, x, y, level > 0);
                } else {
                    CImgProc::SetPixel32(bitmap, x, y, RGB(level, level, level));
                }
            }
        }
        auto* const bytes = static_cast<std::uint8_t*>(bitmap.bmBits);
        const std::vector<std::uint8_t> before(bytes,
                                               bytes + std::ptrdiff_t{bitmap.bmWidthBytes} * bitmap.bmHeight);
        for (const EdgeMethod method : kMethods) {
            EdgeOptions options;
            options.method = method;
            CEdgeDetect edges;
            ASSERT_TRUE(edges.Detect(handle.Get(), options));
            BITMAP out{};
            GetObject(edges.Bitmap(), sizeof out, &out);
            std::size_t count = 0;
            const Found found = Detected(grey, options);
            for (const POINT& p : found.pixels) count += CImgProc::GetPixel(out, p.x, p.y);
            EXPECT_EQ(count, found.pixels.size());
            EXPECT_GT(count, 100u);
        }
        EXPECT_EQ(before, std::vector(bytes, bytes + std::ptrdiff_t{bitmap.bmWidthBytes} * bitmap.bmHeight));
    }
    CEdgeDetect edges;
    EXPECT_FALSE(edges.Detect(HBITMAP{nullptr}));
    EXPECT_FALSE(edges.Detect(GreyView{}));
    EXPECT_EQ(edges.Bitmap(), nullptr);
    CPolyPolyBezier curves;
    EXPECT_FALSE(edges.Output(curves));
}

TEST(EdgeDetect, OddPicturesAndOptionsHaveDefinedResults) {
    const double odd[] = {std::numeric_limits<double>::quiet_NaN(), -1, 0, 1e300, 100};
    for (const auto& [width, height] : {std::pair(1, 1), {1, 50}, {50, 1}, {2, 2}, {33, 17}}) {
        Grey board(width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) board.At(x, y) = (x + y) % 2 == 0 ? 255 : 0;
        }
        for (const EdgeMethod method : kMethods) {
            for (const double sigma : odd) {
                for (const double threshold : odd) {
                    EdgeOptions options{method, sigma, EdgeThresholds{threshold, threshold}};
                    const Found found = Detected(board, options);
                    EXPECT_LE(found.pixels.size(), board.levels.size());
                    EXPECT_TRUE(board.levels.size() > 1 || found.pixels.empty());
                }
            }
        }
    }
}

TEST(EdgeDetect, CurvesAreCloseToSmoothBordersAndSimpleAlongStairs) {
    struct Case {
        const char* border;
        double sharpness;  // levels per distance: a pixel wide, or a jump
        double noise;
        double within;
        int nodes;
    };
    for (const Case& c :
         {Case{"smooth", 1, 0, 0.2, 7}, {"stairs", 1e9, 0, 0.6, 7}, {"stairs", 1e9, 4, 0.6, 7}}) {
        for (const double radius : {16.0, 25.0, 40.3}) {
            const DPOINT centre{64.3, 59.8};
            const Inside disc = Disc(centre.x, centre.y, radius);
            const Grey picture = Drawn(
                128, 120, [&](double x, double y) { return c.sharpness * disc(x, y); }, 60, 200, c.noise);
            for (const EdgeMethod method : kMethods) {
                SCOPED_TRACE(std::string(c.border) + " of radius " + std::to_string(radius) +
                             (method == EdgeMethod::Canny ? " Canny" : " Shen-Castan"));
                CEdgeDetect edges;
                EdgeOptions options{method, 1.4, EdgeThresholds{20, 80}};
                ASSERT_TRUE(edges.Detect(picture.View(), options));
                CPolyPolyBezier curves;
                ASSERT_TRUE(edges.Output(curves));
                ASSERT_EQ(curves.GetSize(), 1);
                EXPECT_TRUE(curves[0][0].pt == curves[0][curves[0].GetUpperBound()].pt) << "closed";
                EXPECT_LE(curves[0].GetSize(), c.nodes);
                CArray<DPOINT, DPOINT> points;
                GetPolyline(curves[0], points, 0.05);
                for (int k = 0; k < points.GetSize(); ++k)
                    EXPECT_NEAR(std::hypot(points[k].x - centre.x, points[k].y - centre.y), radius, c.within);
            }
        }
    }
}

}  // namespace
}  // namespace tarvex::test
