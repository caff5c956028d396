// Path data in few bytes.
//
// Coordinates are rounded once, to integers in units of the last decimal; all that follows is exact.
// For each segment the shortest kind of command that draws it is chosen (a horizontal or vertical line,
// a line, a curve whose first control point mirrors the last one, any curve) and written twice into
// small buffers, absolute and relative; the shorter one is appended, the relative one when they tie.
// A command's letter is left out where SVG repeats the last one, a separator wherever a sign or a
// decimal point starts the next number anyway.
#include "tarvex/svg_writer.h"

#include <array>
#include <cstdlib>

#include "tarvex/decimal.h"

namespace tarvex::app {

namespace {

struct UnitPoint {
    std::int64_t x = 0;
    std::int64_t y = 0;
    friend bool operator==(const UnitPoint&, const UnitPoint&) = default;
    friend UnitPoint operator-(const UnitPoint& a, const UnitPoint& b) { return {a.x - b.x, a.y - b.y}; }
};

/// What the text so far ends with decides what may be left out next.
struct TextState {
    char command = 0;       ///< the one that a bare number would repeat
    bool hasPoint = false;  ///< of the last number
    bool afterNumber = false;
};

/// The text of one command. Small, on the stack, built twice for each segment.
class CommandText {
  public:
    CommandText(const TextState& state, int precision) : m_state(state), m_precision(precision) {}

    void Command(char letter) {
        if (letter == m_state.command) return;
        m_text[m_size++] = letter;
        m_state = {letter, false, false};
    }

    void Number(std::int64_t units) {
        const DecimalText text(units, m_precision, LeadingZero::Dropped);
        const std::string_view view = text.View();
        const bool startsItself = view[0] == '-' || (view[0] == '.' && m_state.hasPoint);
        if (m_state.afterNumber && !startsItself) m_text[m_size++] = ' ';
        for (const char c : view) m_text[m_size++] = c;
        m_state.hasPoint = text.HasPoint();
        m_state.afterNumber = true;
    }

    void Point(const UnitPoint& p) {
        Number(p.x);
        Number(p.y);
    }

    std::size_t Size() const { return m_size; }
    std::string_view View() const { return {m_text.data(), m_size}; }
    const TextState& State() const { return m_state; }
    /// After a moveto, numbers without a letter are linetos.
    void SetRepeated(char letter) { m_state.command = letter; }

  private:
    std::array<char, 160> m_text;  // a letter and six numbers of at most 20 characters
    std::size_t m_size = 0;
    TextState m_state;
    int m_precision;
};

class PathWriter {
  public:
    PathWriter(std::string& out, int precision) : m_out(out), m_precision(precision) {}

    void Contour(ContourView nodes) {
        if (nodes.size() < 2) return;
        const std::size_t sizeBefore = m_out.size();
        const TextState stateBefore = m_state;
        const UnitPoint currentBefore = m_current;

        const UnitPoint start = Rounded(nodes.front().pt);
        const bool isClosed = nodes.front().pt == nodes.back().pt;
        MoveTo(start);
        m_drawn = false;
        for (std::size_t i = 1; i < nodes.size(); ++i) {
            const bool closes = isClosed && i + 1 == nodes.size();
            const UnitPoint end = closes ? start : Rounded(nodes[i].pt);
            Segment(Rounded(nodes[i - 1].cp2), Rounded(nodes[i].cp1), end,
                    closes ? Role::Closing : Role::Inner);
        }
        if (!m_drawn) {
            m_out.resize(sizeBefore);
            m_state = stateBefore;
            m_current = currentBefore;
            return;
        }
        if (isClosed) Close(start);
    }

  private:
    UnitPoint Rounded(const DPOINT& p) const {
        return {ToUnits(p.x, m_precision), ToUnits(p.y, m_precision)};
    }

    /// Appends the shorter of the two commands that `write` gives for the absolute and the relative
    /// letter; it is called with the origin that the numbers are relative to.
    template <class Write>
    void AppendShorter(Write write) {
        CommandText relative(m_state, m_precision);
        write(relative, true, m_current);
        CommandText absolute(m_state, m_precision);
        write(absolute, false, UnitPoint{});
        const CommandText& shorter = absolute.Size() < relative.Size() ? absolute : relative;
        m_out += shorter.View();
        m_state = shorter.State();
    }

    void MoveTo(const UnitPoint& p) {
        AppendShorter([&p](CommandText& text, bool isRelative, const UnitPoint& origin) {
            text.Command(isRelative ? 'm' : 'M');
            text.Point(p - origin);
            text.SetRepeated(isRelative ? 'l' : 'L');
        });
        m_current = m_mirrored = p;
    }

    void Close(const UnitPoint& start) {
        m_out += 'z';
        m_state = {};
        m_current = m_mirrored = start;
    }

    /// A straight segment that closes its contour is left to closepath, which draws it.
    enum class Role { Inner, Closing };

    void Segment(const UnitPoint& c1, const UnitPoint& c2, const UnitPoint& end, Role role) {
        if (IsStraight(c1, c2, end)) {
            if (end == m_current) return;
            m_drawn = true;
            if (role == Role::Inner) Line(end);
            m_current = m_mirrored = end;
            return;
        }
        m_drawn = true;
        const bool isSmooth = c1 == m_mirrored;
        AppendShorter([&](CommandText& text, bool isRelative, const UnitPoint& origin) {
            if (isSmooth) {
                text.Command(isRelative ? 's' : 'S');
            } else {
                text.Command(isRelative ? 'c' : 'C');
                text.Point(c1 - origin);
            }
            text.Point(c2 - origin);
            text.Point(end - origin);
        });
        m_mirrored = {2 * end.x - c2.x, 2 * end.y - c2.y};
        m_current = end;
    }

    void Line(const UnitPoint& end) {
        AppendShorter([&](CommandText& text, bool isRelative, const UnitPoint& origin) {
            if (end.y == m_current.y) {
                text.Command(isRelative ? 'h' : 'H');
                text.Number(end.x - origin.x);
            } else if (end.x == m_current.x) {
                text.Command(isRelative ? 'v' : 'V');
                text.Number(end.y - origin.y);
            } else {
                text.Command(isRelative ? 'l' : 'L');
                text.Point(end - origin);
            }
        });
    }

    /// Whether the curve is its chord: its control points lie on it. Beyond 2^30 units, where the
    /// products could overflow, only controls on the ends count.
    bool IsStraight(const UnitPoint& c1, const UnitPoint& c2, const UnitPoint& end) const {
        const auto isAtEnd = [&](const UnitPoint& c) { return c == m_current || c == end; };
        const auto isOnChord = [&](const UnitPoint& c) {
            if (isAtEnd(c)) return true;
            const UnitPoint chord = end - m_current;
            const UnitPoint offset = c - m_current;
            constexpr std::int64_t most = std::int64_t{1} << 30;
            for (const std::int64_t v : {chord.x, chord.y, offset.x, offset.y}) {
                if (v > most || v < -most) return false;
            }
            const std::int64_t dot = chord.x * offset.x + chord.y * offset.y;
            return chord.x * offset.y == chord.y * offset.x && dot > 0 &&
                   std::abs(offset.x) <= std::abs(chord.x) && std::abs(offset.y) <= std::abs(chord.y);
        };
        return isOnChord(c1) && isOnChord(c2);
    }

    std::string& m_out;
    int m_precision;
    TextState m_state;
    UnitPoint m_current;
    UnitPoint m_mirrored;  ///< the first control point that `s` implies
    bool m_drawn = false;
};

std::string Size(double value, int precision) {
    return std::string(DecimalText(ToUnits(value, precision), precision, LeadingZero::Kept).View());
}

/// Colours are the program's own, but an attribute stays an attribute whatever they are.
std::string Escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

void WriteShape(std::string& out, const SvgShape& shape, int precision) {
    const std::size_t before = out.size();
    out += "<path";
    if (shape.paint == Paint::Fill) {
        if (shape.rule == FillRule::EvenOdd) out += " fill-rule=\"evenodd\"";
        if (shape.colour != "#000") out += " fill=\"" + Escaped(shape.colour) + '"';
    } else {
        out += " fill=\"none\" stroke=\"" + Escaped(shape.colour) + "\" stroke-width=\"" +
               Size(shape.strokeWidth, precision) + '"';
    }
    out += " d=\"";
    const std::size_t start = out.size();
    PathWriter writer(out, precision);
    for (const ContourView& contour : shape.contours) writer.Contour(contour);
    if (out.size() == start) {
        out.resize(before);
        return;
    }
    out += "\"/>\n";
}

}  // namespace

std::string SvgPathData(std::span<const ContourView> contours, int precision) {
    std::string out;
    PathWriter writer(out, precision);
    for (const ContourView& contour : contours) writer.Contour(contour);
    return out;
}

std::string WriteSvg(const SvgOptions& options, std::span<const SvgShape> shapes) {
    const std::string width = Size(options.width, options.precision);
    const std::string height = Size(options.height, options.precision);
    std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
                      "\" viewBox=\"" + Size(options.left, options.precision) + ' ' +
                      Size(options.top, options.precision) + ' ' + width + ' ' + height + "\">\n";
    for (const SvgShape& shape : shapes) WriteShape(out, shape, options.precision);
    out += "</svg>\n";
    return out;
}

}  // namespace tarvex::app
