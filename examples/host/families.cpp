// The extension: calls each family of the library and prints what comes out. It also keeps drawing objects
// in a static object of its own, as extensions do, which lets go of them when the extension is unloaded.
#include "families.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "figures.h"
#include "tarvex/colortrace.h"
#include "tarvex/edges.h"
#include "tarvex/ellipse.h"
#include "tarvex/imagetrace.h"
#include "tarvex/offset.h"
#include "tarvex/tarvex.h"

namespace {

using namespace tarvex;
using figures::Printer;

using Contour = CArray<BPOINT, BPOINT>;

constexpr double kCircleHandle = 0.5522847498307936;

/// A closed contour of four curves around a circle.
std::unique_ptr<Contour> Circle(double x, double y, double r) {
    auto contour = std::make_unique<Contour>();
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

HBITMAP NewBitmap(int size, RGBQUAD*& pixels) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = info.bmiHeader.biHeight = size;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    pixels = static_cast<RGBQUAD*>(bits);
    return bitmap;
}

/// A bitmap of 32 bits that goes with its owner.
class Picture {
  public:
    template <class ColourAt>
    Picture(int size, ColourAt colourAt) {
        RGBQUAD* pixels = nullptr;
        m_bitmap = NewBitmap(size, pixels);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) *pixels++ = colourAt(2 * x - size, 2 * y - size, size);
        }
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() { DeleteObject(m_bitmap); }
    operator HBITMAP() const { return m_bitmap; }  // NOLINT(google-explicit-constructor)

  private:
    HBITMAP m_bitmap;
};

/// A white ring and a bar across it, on black. Coordinates are doubled, from the middle.
RGBQUAD RingAndBar(int x, int y, int size) {
    const int square = x * x + y * y;
    const bool inside = (square < size * size * 3 / 4 && square > size * size / 3) ||
                        (y > -size / 8 && y < size / 8 && x < size / 2);
    const auto level = static_cast<BYTE>(inside ? 255 : 0);
    return {level, level, level, 0};
}

/// Three areas of colour with gentle shading.
RGBQUAD Shades(int x, int y, int size) {
    const int shade = (x + size) * 24 / size;
    const int area = x * x + y * y < size * size / 3 ? 0 : x > y ? 1 : 2;
    const int blue[] = {200, 30, 40};
    const int green[] = {60, 180, 40};
    const int red[] = {20, 40, 190};
    return {static_cast<BYTE>(blue[area] + shade), static_cast<BYTE>(green[area] + shade),
            static_cast<BYTE>(red[area] + shade), 0};
}

void Geometry(const Printer& printer) {
    CArray<tagPOINT, tagPOINT> hull;
    for (int i = 0; i < 500; ++i) hull.Add({i * 7919 % 1009, i * 104729 % 997});
    GetConvexHull(hull);
    printer.Print("convex hull", hull);

    CArray<DPOINT, DPOINT> zigzag;
    for (int i = 0; i < 40; ++i) zigzag.Add({i * 2.5, i % 2 * 10.0});
    CArray<DPOINT, DPOINT> crossings;
    GetPolyLineWithLineSegIntersection(zigzag, {{-3, 4.7}, {101, 5.9}}, crossings);
    printer.Print("crossings", crossings);
    printer.Print("offset polygon", ShrinkPolyline(zigzag, -1.5));
}

void Curves(const Printer& printer) {
    const auto circle = Circle(0, 0, 1000);
    for (const double resolution : {100.0, 5.0, 0.25}) {
        CArray<DPOINT, DPOINT> points;
        GetPolyline(*circle, points, resolution);
        printer.Print("flattening", points);
        for (const double error : {0.1, 1.0, 20.0}) {
            Contour fitted;
            FitCurve(points.GetData(), points.GetSize(), &fitted, error);
            printer.Print("fit", fitted);
        }
    }
    CArray<double, double> lengths;
    for (const double r : {1.0, 10.0, 1234.5}) lengths.Add(GetBezierArea(*Circle(3, 4, r)));
    printer.Print("areas", lengths);
    printer.Print("offset curves", ShrinkBezier(*circle, 100));
}

void Transforms(const Printer& printer) {
    CScaleDraw view;
    const tagRECT window = {0, 0, 640, 480};
    view.SetScaleToRect(-1000, -700, 900, 800, &window);
    CArray<DPOINT, DPOINT> places;
    for (int i = 0; i < 100; ++i) places.Add(view.s2p(tagPOINT{i * 7, i * 3}));
    printer.Print("scaled drawing", places);

    CView3D turned;
    turned.Translate(10, 20, 0);
    turned.Scale(1.25, 0.75, 1);
    CPolyPolyBezier ring = Ring(0, 0, 1000);
    ring.ApplyTransformation(turned);
    printer.Print("transformed", ring);

    CRandomGenerator random(7);
    CArray<double, double> numbers;
    for (int i = 0; i < 1000; ++i) numbers.Add(random.Random());
    printer.Print("random numbers", numbers);
}

double AreaOf(const CPolyPolyBezier& shape) {
    double area = 0;
    for (int i = 0; i < shape.GetSize(); ++i) area += GetBezierArea(shape[i]);
    return std::abs(area);
}

/// The drawn result is Windows' own there, so it is told by how near it comes to the exact one.
void Shaping(const Printer& printer) {
    const char* const names[] = {"difference", "intersection", "exclusive or", "union"};
    for (int op = SHAPING_DIFFERENCE; op <= SHAPING_UNION; ++op) {
        CPolyPolyBezier a = Ring(0, 0, 500);
        CPolyPolyBezier b = Ring(350, 155, 450);
        PolyPolyBezierShaping(op, a, b);
        printer.Print(names[op], a);
    }
    for (const int op : {SHAPING_DIFFERENCE, SHAPING_INTERSECTION, SHAPING_UNION}) {
        CPolyPolyBezier a;
        CPolyPolyBezier b;
        CPolyPolyBezier exact;
        a.Add(Circle(0, 0, 500));
        b.Add(Circle(350, 155, 450));
        exact.Copy(a);
        CPolyPolyBezier other;
        other.Copy(b);
        PolyPolyBezierShaping(op, exact, other);
        DRECT frame;
        exact.CalcFrame(frame, 1);
        constexpr double mostPixels = 3;
        const double around = 2 * (frame.right - frame.left + frame.bottom - frame.top);
        PolyPolyBezierBmpShaping(op, a, b, ALTERNATE, ALTERNATE);
        DRECT drawn;
        a.CalcFrame(drawn, 1);
        const double off = std::max({std::abs(drawn.left - frame.left), std::abs(drawn.right - frame.right),
                                     std::abs(drawn.top - frame.top), std::abs(drawn.bottom - frame.bottom),
                                     std::abs(AreaOf(a) - AreaOf(exact)) / around});
        char line[80];
        std::snprintf(line, sizeof line, "%s drawn: %d parts, %s 3 pixels of the exact one", names[op],
                      a.GetSize(), off <= mostPixels ? "within" : "NOT WITHIN");
        printer.Line(line);
    }
}

void Tracing(const Printer& printer) {
    const Picture picture(300, RingAndBar);
    CShapeTrace shapes(picture);
    CPolyPolyBezier lines;
    shapes.DoTrace(lines, 10);
    printer.Print("outlines traced", lines);

    CSkeleton skeleton;
    skeleton.InputMono(picture);
    skeleton.Output(lines);
    printer.Print("skeleton", lines);

    CPolyPolyWidth widths;
    CImageTrace(picture).DoTrace({}, lines, widths);
    printer.Print("centre lines", lines);
    printer.Print("their widths", widths);

    CEdgeDetect edges;
    edges.Detect(picture);
    edges.Output(lines);
    printer.Print("edges", lines);
}

void Colours(const Printer& printer) {
    constexpr int size = 260;  // smaller pictures are enlarged, which is GDI's doing on Windows
    const Picture picture(size, Shades);
    RGBQUAD palette[4] = {};
    int count = 4;
    CColorReduction(picture).DoColorReduction(palette, count, 0);
    CArray<DPOINT, DPOINT> colours;
    for (int i = 0; i < count; ++i)
        colours.Add(
            {palette[i].rgbRed * 256.0 + palette[i].rgbGreen, static_cast<double>(palette[i].rgbBlue)});
    printer.Print("palette", colours);

    BITMAP reduced{};
    GetObject(static_cast<HBITMAP>(picture), sizeof reduced, &reduced);
    const auto* pixels = static_cast<const RGBQUAD*>(reduced.bmBits);
    std::vector<std::uint16_t> labels;
    for (int i = 0; i < size * size; ++i) {
        const auto* const found = std::find_if(palette, palette + count, [&](const RGBQUAD& c) {
            return CColorReduction::IsEqual(c, pixels[i]);
        });
        labels.push_back(found < palette + count ? static_cast<std::uint16_t>(found - palette) : NO_LABEL);
    }
    for (const PaintedRegions& regions : TraceRegions({labels.data(), size, size, size}, {}))
        printer.Print("regions of a colour", regions.outlines);
}

void BreakUps(const Printer& printer) {
    const Picture picture(300, RingAndBar);
    CAutoTrace tracer(picture, 96.0);
    CPolyPolyInclination inclinations;
    tracer.DoTrace(150, 150, &inclinations, 0, false, false, false);
    printer.Print("break-up of a fill, rails", tracer.TracedLines());
    printer.Print("its inclinations", inclinations);

    CPolyPolyBezier shape = Ring(0, 0, 500);
    shape.Add(Circle(700, 0, 260));
    for (const IslandBreakUp& island : BreakUpShape(shape, {})) {
        CPolyPolyDPoint rails;
        for (const StitchRegion& region : island.regions) {
            for (const auto* rail : {&region.first, &region.second}) {
                auto line = std::make_unique<CArray<DPOINT, DPOINT>>();
                for (const DPOINT& p : *rail) line->Add(p);
                rails.Add(std::move(line));
            }
        }
        printer.Print("break-up of a shape", rails);
    }
    Contour rail1;
    Contour rail2;
    const auto circle = Circle(0, 0, 100);
    for (int i = 0; i < 3; ++i) {
        rail1.Add((*circle)[i]);
        rail2.Add({{0, 0}, {50.0 - 50 * i, 10.0}, {0, 0}, 0});
        rail2[i].cp1 = rail2[i].cp2 = rail2[i].pt;
    }
    CArray<DLINE, DLINE> satin;
    GetDefaultSatinInclinations(rail1, rail2, 20, satin);
    printer.Print("satin", satin);
}

/// Glyphs are the system's: only what any font agrees on is told.
void Text(const Printer& printer) {
    LOGFONTW font{};
    font.lfHeight = -500;
    DPOINT pen;
    CPolyPolyBezier letter;
    const int contours = GetTTOutlinePoints(font, L'O', letter, pen, 1);
    printer.Line(contours == 2 && pen.x > 0 ? "text: an O has two contours" : "text: there is no font");
}

/// What an extension keeps from one call to the next.
class Kept {
  public:
    ~Kept() {
        if (m_dc == nullptr) return;
        SelectObject(m_dc, m_former);
        if (!DeleteDC(m_dc) || !DeleteObject(m_bitmap)) {
            std::fputs("the library was gone before the extension's own objects\n", stderr);
            std::abort();
        }
    }
    void Fill() {
        if (m_dc != nullptr) return;
        RGBQUAD* pixels = nullptr;
        m_bitmap = NewBitmap(16, pixels);
        m_dc = CreateCompatibleDC(nullptr);
        m_former = SelectObject(m_dc, m_bitmap);
    }

  private:
    HBITMAP m_bitmap = nullptr;
    HDC m_dc = nullptr;
    HGDIOBJ m_former = nullptr;
};

Kept g_kept;

}  // namespace

extern "C"
#ifdef _WIN32
    __declspec(dllexport)
#else
    __attribute__((visibility("default")))
#endif
        void CallFamilies(HostPrint print, void* context) {
    g_kept.Fill();
    const Printer printer(print, context);
    Geometry(printer);
    Curves(printer);
    Transforms(printer);
    Shaping(printer);
    Tracing(printer);
    Colours(printer);
    BreakUps(printer);
    Text(printer);
}
