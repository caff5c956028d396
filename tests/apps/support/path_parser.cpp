#include "apps/support/path_parser.h"

#include <cctype>
#include <string>

namespace tarvex::app::test {

namespace {

class PathParser {
  public:
    explicit PathParser(std::string_view text) : m_text(text) {}

    std::vector<ParsedContour> Parse() {
        while (m_at < m_text.size()) {
            const char letter = m_text[m_at++];
            if (letter == 'z' || letter == 'Z') {
                Close();
                continue;
            }
            if (std::string_view("mMlLhHvVcCsS").find(letter) == std::string_view::npos)
                Fail("unknown command");
            char command = letter;
            do {
                One(command);
                if (command == 'm') command = 'l';
                if (command == 'M') command = 'L';
            } while (m_at < m_text.size() && std::isalpha(static_cast<unsigned char>(m_text[m_at])) == 0);
        }
        return m_contours;
    }

  private:
    [[noreturn]] void Fail(const char* what) const {
        throw std::invalid_argument(std::string(what) + " at " + std::to_string(m_at) + " of " +
                                    std::string(m_text));
    }

    bool IsDigitAt(std::size_t at) const {
        return at < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[at])) != 0;
    }

    double Number() {
        if (m_at < m_text.size() && m_text[m_at] == ' ') ++m_at;
        const std::size_t start = m_at;
        if (m_at < m_text.size() && m_text[m_at] == '-') ++m_at;
        std::size_t digits = 0;
        for (; IsDigitAt(m_at); ++m_at) ++digits;
        if (m_at < m_text.size() && m_text[m_at] == '.') {
            for (++m_at; IsDigitAt(m_at); ++m_at) ++digits;
        }
        if (digits == 0) Fail("no number");
        return std::stod(std::string(m_text.substr(start, m_at - start)));
    }

    DPOINT Point(bool isRelative) {
        const double x = Number();
        const double y = Number();
        return isRelative ? DPOINT{m_current.x + x, m_current.y + y} : DPOINT{x, y};
    }

    void One(char letter) {
        const bool isRelative = std::islower(static_cast<unsigned char>(letter)) != 0;
        switch (std::tolower(static_cast<unsigned char>(letter))) {
            case 'm': {
                const DPOINT p = Point(isRelative);
                m_contours.push_back({p, false, {}});
                m_current = m_mirrored = p;
                return;
            }
            case 'l':
                return Line(Point(isRelative));
            case 'h':
                return Line({Number() + (isRelative ? m_current.x : 0), m_current.y});
            case 'v':
                return Line({m_current.x, Number() + (isRelative ? m_current.y : 0)});
            case 'c': {
                const DPOINT c1 = Point(isRelative);
                const DPOINT c2 = Point(isRelative);
                return Curve(c1, c2, Point(isRelative));
            }
            default: {
                const DPOINT c2 = Point(isRelative);
                return Curve(m_mirrored, c2, Point(isRelative));
            }
        }
    }

    ParsedContour& Open() {
        if (m_contours.empty() || m_contours.back().isClosed) Fail("no moveto");
        return m_contours.back();
    }

    void Line(const DPOINT& end) {
        Open().segments.push_back({true, m_current, m_current, end, end});
        m_current = m_mirrored = end;
    }

    void Curve(const DPOINT& c1, const DPOINT& c2, const DPOINT& end) {
        Open().segments.push_back({false, m_current, c1, c2, end});
        m_current = end;
        m_mirrored = {2 * end.x - c2.x, 2 * end.y - c2.y};
    }

    void Close() {
        ParsedContour& contour = Open();
        if (!(m_current == contour.start)) Line(contour.start);
        contour.isClosed = true;
        m_current = m_mirrored = contour.start;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<ParsedContour> m_contours;
    DPOINT m_current;
    DPOINT m_mirrored;
};

}  // namespace

std::vector<ParsedContour> ParsePath(std::string_view text) { return PathParser(text).Parse(); }

}  // namespace tarvex::app::test
