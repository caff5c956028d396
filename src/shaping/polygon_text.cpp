// The text form of polygon sets. Written and read without the locale; a count in hostile text is never
// believed further than the text could hold.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "shaping/polygon_guard.h"
#include "tarvex/clipper.h"
#include "tarvex/framework.h"

namespace tarvex {
namespace {

constexpr int kDigits = 15;

void AppendNumber(std::string& text, std::int32_t number) {
    text += std::to_string(number);
    text += '\n';
}

void AppendCoordinate(std::string& text, double value) {
    char digits[400];  // 309 before the point, 15 behind it
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed, kDigits);
    text += ' ';
    text.append(digits, end.ptr);
}

class Reader {
  public:
    explicit Reader(std::string_view text) : m_text(text) {}

    template <class Number>
    bool Read(Number& number) {
        m_text.remove_prefix(std::min(m_text.find_first_not_of(" \t\r\n\v\f"), m_text.size()));
        if (m_text.starts_with('+') && !m_text.starts_with("+-")) m_text.remove_prefix(1);
        const auto [end, error] = std::from_chars(m_text.data(), m_text.data() + m_text.size(), number);
        m_text.remove_prefix(static_cast<std::size_t>(end - m_text.data()));
        return error == std::errc();
    }

    std::size_t Remaining() const { return m_text.size(); }

  private:
    std::string_view m_text;
};

struct TextContour {
    std::int32_t count = 0;  ///< negative for a marked contour, which has no vertices
    std::int32_t hole = 0;
    std::vector<DPOINT> vertices;
};

bool ReadContour(Reader& reader, ClipHoleFlags flags, TextContour& contour) {
    std::int32_t& count = contour.count;
    if (!reader.Read(count)) return false;
    if (flags == ClipHoleFlags::written && !reader.Read(contour.hole)) return false;
    if (count > 0 && static_cast<std::size_t>(count) > reader.Remaining() / 4) return false;  // " 0 0"
    contour.vertices.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (std::int32_t i = 0; i < count; ++i) {
        DPOINT p;
        if (!reader.Read(p.x) || !reader.Read(p.y)) return false;
        contour.vertices.push_back(p);
    }
    return true;
}

}  // namespace

std::string WriteClipPolygon(const ClipPolygon& polygon, ClipHoleFlags flags) {
    const std::int32_t count = polygon.contours == nullptr ? 0 : std::max(polygon.contourCount, 0);
    std::string text;
    AppendNumber(text, count);
    for (std::int32_t i = 0; i < count; ++i) {
        const ClipContour& contour = polygon.contours[i];
        const std::int32_t vertices =
            contour.vertices == nullptr ? std::min(contour.vertexCount, 0) : contour.vertexCount;
        AppendNumber(text, vertices);
        if (flags == ClipHoleFlags::written)
            AppendNumber(text, polygon.holes == nullptr ? 0 : polygon.holes[i]);
        for (std::int32_t v = 0; v < vertices; ++v) {
            AppendCoordinate(text, contour.vertices[v].x);
            AppendCoordinate(text, contour.vertices[v].y);
            text += '\n';
        }
    }
    return text;
}

bool ReadClipPolygon(std::string_view text, ClipHoleFlags flags, ClipPolygon& polygon) try {
    FreeClipPolygon(polygon);
    Reader reader(text);
    std::int32_t count = 0;
    if (!reader.Read(count) || count < 0) return false;
    if (static_cast<std::size_t>(count) > reader.Remaining() / 2) return false;  // "\n0"
    std::vector<TextContour> contours;
    for (std::int32_t i = 0; i < count; ++i) {
        TextContour contour;
        if (!ReadContour(reader, flags, contour)) return false;
        contours.push_back(std::move(contour));
    }
    PolygonGuard guard;
    ClipPolygon& made = guard.polygon;
    if (count == 0) return true;
    made.holes = new std::int32_t[contours.size()]{};
    made.contours = new ClipContour[contours.size()];
    for (const TextContour& contour : contours) {
        ClipContour& target = made.contours[made.contourCount];
        if (!contour.vertices.empty()) target.vertices = new DPOINT[contour.vertices.size()];
        std::copy(contour.vertices.begin(), contour.vertices.end(), target.vertices);
        target.vertexCount = contour.count;
        made.holes[made.contourCount++] = contour.hole;
    }
    polygon = guard.Release();
    return true;
} catch (const std::bad_alloc&) {
    AfxThrowMemoryException();
}

}  // namespace tarvex
