// Shapes go through the same paths, pens and brushes as everything that the library draws; so a rendered
// drawing shows what programs see.
#include "tarvex/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

namespace tarvex::app {

namespace {

struct DeletePaint {
    using pointer = HGDIOBJ;
    void operator()(HGDIOBJ handle) const { DeleteObject(handle); }
};
using UniquePaint = std::unique_ptr<HGDIOBJ, DeletePaint>;

/// Puts the former pen or brush back.
class Selection {
  public:
    Selection(HDC dc, HGDIOBJ object) : m_dc(dc), m_former(SelectObject(dc, object)) {
        if (m_former == nullptr) throw std::bad_alloc();
    }
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    ~Selection() { SelectObject(m_dc, m_former); }

  private:
    HDC m_dc;
    HGDIOBJ m_former;
};

std::uint8_t Blended(int below, int above, int alpha) {
    return static_cast<std::uint8_t>((below * (255 - alpha) + above * alpha + 127) / 255);
}

/// The sums of blue, green and red over the blocks of samples that make one row of pixels.
void AddSamples(const std::uint8_t* row, int samples, std::vector<std::uint32_t>& sums) {
    for (std::size_t i = 0; i < sums.size(); i += 3) {
        for (int s = 0; s < samples; ++s, row += 4) {
            sums[i] += row[0];
            sums[i + 1] += row[1];
            sums[i + 2] += row[2];
        }
    }
}

Picture WithoutColour(const Picture& picture) {
    for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
        const std::uint8_t* p = picture.pixels.data() + i;
        if (p[0] != p[1] || p[1] != p[2]) return picture;
    }
    Picture grey(picture.width, picture.height, PixelFormat::Grey8);
    for (std::size_t i = 0; i < grey.pixels.size(); ++i) grey.pixels[i] = picture.pixels[3 * i];
    return grey;
}

}  // namespace

Canvas::Canvas(int width, int height, int samples)
    : m_width(width),
      m_height(height),
      m_samples(samples),
      m_colours(MakeLayer(width * samples, height * samples, 32)) {
    std::memset(m_colours.bits, 0xFF, m_colours.stride * static_cast<std::size_t>(height * samples));
}

Canvas::Layer Canvas::MakeLayer(int width, int height, int depth) {
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colours[2];
    } info{{}, {{0, 0, 0, 0}, {255, 255, 255, 0}}};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = width;
    info.header.biHeight = -height;  // the first row first
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(depth);
    Layer layer;
    void* bits = nullptr;
    layer.bitmap.reset(CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS,
                                        &bits, nullptr, 0));
    layer.dc.reset(CreateCompatibleDC(nullptr));
    if (!layer.bitmap || !layer.dc || SelectObject(layer.dc.get(), layer.bitmap.get()) == nullptr)
        throw std::bad_alloc();
    layer.bits = static_cast<std::uint8_t*>(bits);
    layer.stride = (static_cast<std::size_t>(width) * static_cast<std::size_t>(depth) + 31) / 32 * 4;
    return layer;
}

void Canvas::SetView(const DPOINT& corner, double scale) {
    m_view.SetMinScale(0);
    m_view.SetMaxScale(HUGE_VAL);
    m_view.SetScale(scale * m_samples);
    m_view.SetOffset(corner.x, corner.y, 0, 0);
}

void Canvas::Fill(const CPolyPolyBezier& shape, const Rgba& colour, FillRule rule) {
    Paint(shape, Part::Interior, colour, 0, rule == FillRule::EvenOdd ? ALTERNATE : WINDING);
}

void Canvas::Stroke(const CPolyPolyBezier& shape, const Rgba& colour, double width) {
    constexpr double widest = 1e6;
    const double samples = std::clamp(width * m_samples, 1.0, widest);
    Paint(shape, Part::Outline, colour, static_cast<int>(std::lround(samples)), ALTERNATE);
}

void Canvas::Paint(const CPolyPolyBezier& shape, Part part, const Rgba& colour, int penWidth, int fillMode) {
    const bool isOpaque = colour.alpha == 255;
    if (!isOpaque && m_mask.bits == nullptr) m_mask = MakeLayer(m_width * m_samples, m_height * m_samples, 1);
    const Layer& layer = isOpaque ? m_colours : m_mask;
    SetPolyFillMode(layer.dc.get(), fillMode);
    Draw(layer, shape, part, isOpaque ? RGB(colour.red, colour.green, colour.blue) : RGB(255, 255, 255),
         penWidth);
    if (!isOpaque) BlendMask(colour);
}

void Canvas::Draw(const Layer& layer, const CPolyPolyBezier& shape, Part part, COLORREF colour,
                  int penWidth) {
    const bool isOutline = part == Part::Outline;
    const HDC dc = layer.dc.get();
    const UniquePaint paint(isOutline ? static_cast<HGDIOBJ>(CreatePen(PS_SOLID, penWidth, colour))
                                      : static_cast<HGDIOBJ>(CreateSolidBrush(colour)));
    if (!paint) throw std::bad_alloc();
    const Selection selection(dc, paint.get());
    m_drawn = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    BeginPath(dc);
    for (int i = 0; i < shape.GetSize(); ++i) {
        m_view.p2s(shape[i], m_points);
        if (m_points.IsEmpty()) continue;
        PolyBezier(dc, m_points.GetData(), static_cast<DWORD>(m_points.GetSize()));
        for (const tagPOINT& p : m_points) {
            m_drawn = {std::min(m_drawn.left, p.x), std::min(m_drawn.top, p.y), std::max(m_drawn.right, p.x),
                       std::max(m_drawn.bottom, p.y)};
        }
    }
    EndPath(dc);
    const BOOL isDrawn = isOutline ? StrokePath(dc) : FillPath(dc);
    if (isDrawn == FALSE) throw std::bad_alloc();
    InflateRect(&m_drawn, penWidth + 1, penWidth + 1);
}

void Canvas::BlendMask(const Rgba& colour) {
    const RECT whole = {0, 0, m_width * m_samples, m_height * m_samples};
    RECT area{};
    if (IntersectRect(&area, &m_drawn, &whole) == FALSE) return;
    for (int y = area.top; y < area.bottom; ++y) {
        std::uint8_t* mask = m_mask.bits + static_cast<std::size_t>(y) * m_mask.stride;
        std::uint8_t* pixels = m_colours.bits + static_cast<std::size_t>(y) * m_colours.stride;
        for (int x = area.left; x < area.right; ++x) {
            if ((mask[x >> 3] & 0x80 >> (x & 7)) == 0) continue;
            std::uint8_t* p = pixels + static_cast<std::size_t>(x) * 4;
            p[0] = Blended(p[0], colour.blue, colour.alpha);
            p[1] = Blended(p[1], colour.green, colour.alpha);
            p[2] = Blended(p[2], colour.red, colour.alpha);
        }
        std::memset(mask + (area.left >> 3), 0,
                    static_cast<std::size_t>((area.right + 7) / 8 - area.left / 8));
    }
}

Picture Canvas::Average() const {
    Picture picture(m_width, m_height, PixelFormat::Rgb8);
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(m_width) * 3);
    const auto count = static_cast<std::uint32_t>(m_samples * m_samples);
    for (int y = 0; y < m_height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (int s = 0; s < m_samples; ++s) {
            const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_samples) +
                             static_cast<std::size_t>(s);
            AddSamples(m_colours.bits + row * m_colours.stride, m_samples, sums);
        }
        std::uint8_t* out = picture.Row(y);
        for (std::size_t i = 0; i < sums.size(); i += 3) {
            for (std::size_t c = 0; c < 3; ++c)
                out[i + c] = static_cast<std::uint8_t>((sums[i + 2 - c] + count / 2) / count);
        }
    }
    return WithoutColour(picture);
}

}  // namespace tarvex::app
