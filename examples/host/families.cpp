// The extension: one call of each family, its result as exact figures. A figure is a count and a digest of
// the bits of all doubles in the result, so that two systems agree on a line only if they agree on every bit.
#include "families.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "tarvex/tarvex.h"

namespace {

using namespace tarvex;

class Figures {
  public:
    Figures(HostPrint print, void* context) : m_print(print), m_context(context) {}

    void Print(const char* what, long count, std::uint64_t digest) const {
        char line[128];
        std::snprintf(line, sizeof line, "%-22s %6ld  %016llx", what, count,
                      static_cast<unsigned long long>(digest));
        m_print(m_context, line);
    }

  private:
    HostPrint m_print;
    void* m_context;
};

/// FNV-1a over the bits of numbers. Zero has no sign here.
class Digest {
  public:
    void Add(double v) {
        const auto bits = std::bit_cast<std::uint64_t>(v == 0 ? 0.0 : v);
        for (int shift = 0; shift < 64; shift += 8)
            m_value = (m_value ^ (bits >> shift & 0xFF)) * 0x100000001B3u;
    }
    void Add(const DPOINT& p) { Add(p.x), Add(p.y); }
    void Add(const tagPOINT& p) { Add(static_cast<double>(p.x)), Add(static_cast<double>(p.y)); }
    void Add(const BPOINT& node) { Add(node.cp1), Add(node.pt), Add(node.cp2); }
    template <class T>
    void Add(const CArray<T, T>& all) {
        for (int i = 0; i < all.GetSize(); ++i) Add(all.GetAt(i));
    }
    void Add(const CPolyPolyBezier& all) {
        for (int i = 0; i < all.GetSize(); ++i) Add(*all.GetAt(i));
    }
    void Add(const CPolyPolyDPoint& all) {
        for (int i = 0; i < all.GetSize(); ++i) Add(*all.GetAt(i));
    }
    void Add(const CPolyPolyInclination& all) {
        for (int i = 0; i < all.GetSize(); ++i) Add(*all.GetAt(i));
    }
    std::uint64_t Value() const { return m_value; }

  private:
    std::uint64_t m_value = 0xCBF29CE484222325u;
};

template <class T>
std::uint64_t DigestOf(const T& all) {
    Digest digest;
    digest.Add(all);
    return digest.Value();
}

constexpr double kCircleHandle = 0.5522847498307936;

/// A closed contour of four curves around a circle.
CArray<BPOINT, BPOINT>* Circle(double x, double y, double r) {
    auto* contour = new CArray<BPOINT, BPOINT>;
    const double h = r * kCircleHandle;
    const BPOINT nodes[] = {{{x + r, y - h}, {x + r, y}, {x + r, y + h}, 0},
                            {{x + h, y + r}, {x, y + r}, {x - h, y + r}, 0},
                            {{x - r, y + h}, {x - r, y}, {x - r, y - h}, 0},
                            {{x - h, y - r}, {x, y - r}, {x + h, y - r}, 0}};
    for (const BPOINT& node : nodes) contour->Add(node);
    contour->Add(nodes[0]);
    return contour;
}

CPolyPolyBezier Ring(double x, double y, double r) {
    CPolyPolyBezier ring;
    ring.Add(Circle(x, y, r));
    ring.Add(Circle(x, y, r / 2));
    return ring;
}

/// A ring and a bar across it, in a bitmap of 32 bits.
HBITMAP Picture(int size) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = size;
    info.bmiHeader.biHeight = size;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    auto* pixels = static_cast<std::uint32_t*>(bits);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const int dx = 2 * x - size;
            const int dy = 2 * y - size;
            const int square = dx * dx + dy * dy;
            const bool inside = (square < size * size * 3 / 4 && square > size * size / 3) ||
                                (dy > -size / 8 && dy < size / 8 && dx < size / 2);
            pixels[y * size + x] = inside ? 0xFFFFFFu : 0u;
        }
    }
    return bitmap;
}

void Geometry(const Figures& figures) {
    CArray<tagPOINT, tagPOINT> hull;
    for (int i = 0; i < 500; ++i) hull.Add({i * 7919 % 1009, i * 104729 % 997});
    GetConvexHull(hull);
    figures.Print("convex hull", hull.GetSize(), DigestOf(hull));

    CArray<DPOINT, DPOINT> hits;
    CArray<DPOINT, DPOINT> zigzag;
    for (int i = 0; i < 40; ++i) zigzag.Add({i * 2.5, i % 2 * 10.0});
    GetPolyLineWithLineSegIntersection(zigzag, {{-3, 4.7}, {101, 5.9}}, hits);
    figures.Print("crossings", hits.GetSize(), DigestOf(hits));

    const CPolyPolyDPoint offsets = ShrinkPolyline(zigzag, -1.5);
    figures.Print("offset", offsets.GetSize(), DigestOf(offsets));
}

void Bezier(const Figures& figures) {
    CPolyPolyBezier ring = Ring(0, 0, 1000);
    CArray<DPOINT, DPOINT> points;
    GetPolyline(*ring.GetAt(0), points, 0.25);
    figures.Print("flattening", points.GetSize(), DigestOf(points));

    CArray<BPOINT, BPOINT> fitted;
    FitCurve(points.GetData(), points.GetSize(), &fitted, 1.0);
    figures.Print("fitting", fitted.GetSize(), DigestOf(fitted));
}

void Shaping(const Figures& figures) {
    const char* const names[] = {"difference", "intersection", "exclusive or", "union"};
    for (int op = 0; op < 4; ++op) {
        CPolyPolyBezier a = Ring(0, 0, 1000);
        CPolyPolyBezier b = Ring(700, 310, 900);
        PolyPolyBezierShaping(op, a, b);
        figures.Print(names[op], a.GetSize(), DigestOf(a));
    }
}

void Tracing(const Figures& figures) {
    const HBITMAP picture = Picture(300);
    {
        CShapeTrace tracer(picture);
        CPolyPolyBezier outlines;
        tracer.DoTrace(outlines, 10);
        figures.Print("shape outlines", outlines.GetSize(), DigestOf(outlines));
    }
    {
        CSkeleton skeleton;
        CPolyPolyBezier lines;
        if (skeleton.InputMono(picture)) skeleton.Output(lines);
        figures.Print("centre lines", lines.GetSize(), DigestOf(lines));
    }
    {
        CAutoTrace tracer(picture, 96.0);
        CPolyPolyInclination inclinations;
        tracer.DoTrace(150, 150, &inclinations, 0, false, false, false);
        figures.Print("break-up, rails", tracer.TracedLines().GetSize(), DigestOf(tracer.TracedLines()));
        figures.Print("break-up, positions", inclinations.GetSize(), DigestOf(inclinations));
    }
    {
        CColorReduction reduction(picture);
        RGBQUAD palette[8] = {};
        int count = 8;
        reduction.DoColorReduction(palette, count, 0);
        Digest digest;
        for (int i = 0; i < count; ++i) digest.Add(tagPOINT{palette[i].rgbRed, palette[i].rgbBlue});
        figures.Print("palette", count, digest.Value());
    }
    DeleteObject(picture);
}

void Numbers(const Figures& figures) {
    CRandomGenerator random(7);
    Digest digest;
    for (int i = 0; i < 1000; ++i) digest.Add(random.Random());
    figures.Print("random numbers", 1000, digest.Value());
}

void Transforms(const Figures& figures) {
    CScaleDraw view;
    const tagRECT window = {0, 0, 640, 480};
    view.SetScaleToRect(-1000, -700, 900, 800, &window);
    Digest digest;
    for (int i = 0; i < 100; ++i) digest.Add(view.s2p(tagPOINT{i * 7, i * 3}));
    figures.Print("scaled drawing", 100, digest.Value());
}

}  // namespace

extern "C"
#ifdef _WIN32
    __declspec(dllexport)
#else
    __attribute__((visibility("default")))
#endif
        void CallFamilies(HostPrint print, void* context) {
    const Figures figures(print, context);
    Geometry(figures);
    Bezier(figures);
    Transforms(figures);
    Shaping(figures);
    Tracing(figures);
    Numbers(figures);
}
