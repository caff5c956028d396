// What the reader of satin files asks for, checked on the file itself.
#pragma once

#include <cmath>
#include <cstdlib>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

namespace tarvex::app::test {

struct SatinFile {
    int columns = 0;
    int fills = 0;
    std::vector<double> angles;  ///< of the fills
    std::vector<std::string> faults;
    double jumps = 0;  ///< between columns, in all
};

using SatinPoint = std::pair<double, double>;
using SatinLine = std::vector<SatinPoint>;

/// The subpaths of data that has nothing but absolute "M x,y L x,y x,y" and Z.
inline std::vector<SatinLine> SubpathsOf(const std::string& data) {
    std::vector<SatinLine> lines;
    const char* at = data.c_str();
    while (*at != 0) {
        if (*at == 'M') lines.emplace_back();
        if (std::isalpha(static_cast<unsigned char>(*at)) != 0 || *at == ' ') {
            ++at;
            continue;
        }
        char* next = nullptr;
        const double x = std::strtod(at, &next);
        const double y = std::strtod(next + 1, &next);
        if (next == at || lines.empty()) return {};
        lines.back().emplace_back(x, y);
        at = next;
    }
    return lines;
}

/// How many segments of a line a straight segment crosses; meeting one of its vertices counts as half for
/// each side.
inline double TimesCrossed(const SatinLine& rung, const SatinLine& line) {
    const auto side = [](const SatinPoint& a, const SatinPoint& b, const SatinPoint& p) {
        const double s =
            (b.first - a.first) * (p.second - a.second) - (b.second - a.second) * (p.first - a.first);
        return std::fabs(s) < 1e-9 ? 0 : s < 0 ? -1 : 1;
    };
    double times = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const int a = side(rung[0], rung[1], line[i - 1]), b = side(rung[0], rung[1], line[i]);
        const int c = side(line[i - 1], line[i], rung[0]), d = side(line[i - 1], line[i], rung[1]);
        if (c * d < 0 && a * b <= 0 && (a != 0 || b != 0)) times += a * b < 0 ? 1 : 0.5;
    }
    return times;
}

inline void CheckColumn(const std::vector<SatinLine>& lines, const std::string& id, SatinFile& file) {
    const auto fault = [&](const std::string& what) { file.faults.push_back(id + ": " + what); };
    if (lines.size() < 3) return fault("no rails and rung");
    const std::size_t rungs = lines.size() - 2;
    if (rungs == 2) fault("two rungs");
    const auto apart = [](const SatinPoint& a, const SatinPoint& b) {
        return std::hypot(a.first - b.first, a.second - b.second);
    };
    const SatinLine &first = lines[0], &second = lines[1];
    if (first.size() < 2 || second.size() < 2) return fault("a rail without length");
    if (apart(first.front(), second.front()) + apart(first.back(), second.back()) >
        apart(first.front(), second.back()) + apart(first.back(), second.front()) + 1e-9)
        fault("rails in opposite directions");
    for (std::size_t k = 2; k < lines.size(); ++k) {
        if (lines[k].size() != 2) return fault("a rung of several parts");
        for (const SatinLine* rail : {&first, &second}) {
            if (TimesCrossed(lines[k], *rail) != 1)
                fault("rung " + std::to_string(k - 1) + " crosses a rail otherwise than once");
            for (const SatinPoint& end : {rail->front(), rail->back()}) {
                if (TimesCrossed(lines[k], {end, {end.first + 1e-6, end.second + 1e-6}}) != 0)
                    fault("a rung at the very end");
            }
        }
    }
}

inline SatinFile CheckSatin(const std::string& svg) {
    SatinFile file;
    pugi::xml_document xml;
    if (!xml.load_string(svg.c_str())) file.faults.push_back("no XML");
    const pugi::xml_node root = xml.document_element();
    const auto expect = [&file](bool holds, const std::string& what) {
        if (!holds) file.faults.push_back(what);
    };
    expect(root.attribute("xmlns:inkstitch").as_string() == std::string("http://inkstitch.org/namespace"),
           "namespace");
    for (const char* size : {"width", "height"})
        expect(std::string(root.attribute(size).as_string()).ends_with("mm"), "size in millimetres");
    expect(root.attribute("viewBox"), "view box");
    expect(root.child("metadata").child("inkstitch:inkstitch_svg_version").text().as_int() == 3, "version 3");
    SatinPoint needle;
    for (const pugi::xml_node path : root.children("path")) {
        const std::string style = path.attribute("style").as_string();
        const std::string id = path.attribute("id").as_string();
        const auto lines = SubpathsOf(path.attribute("d").as_string());
        if (lines.empty()) {
            file.faults.push_back(id + ": unreadable data");
        } else if (path.attribute("inkstitch:satin_column").as_bool()) {
            ++file.columns;
            expect(style.starts_with("fill:none;stroke:#"), id + ": style");
            CheckColumn(lines, id, file);
            file.jumps += std::hypot(lines[0][0].first - needle.first, lines[0][0].second - needle.second);
            needle = lines[0].back();
        } else {
            ++file.fills;
            expect(style.starts_with("fill:#") && style.find("stroke:none") != std::string::npos,
                   id + ": style");
            expect(path.attribute("inkstitch:fill_method").as_string() == std::string("auto_fill"),
                   id + ": method");
            file.angles.push_back(path.attribute("inkstitch:angle").as_double(-1));
        }
    }
    return file;
}

}  // namespace tarvex::app::test
