// How the example writes results: each as a line of its name, its size and a digest, with its numbers below
// it, all exact. Two systems that print the same text agree on every bit of every number.
#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "families.h"
#include "tarvex/tarvex.h"

namespace tarvex::figures {

/// A number in C++'s hexadecimal form, the same on every system. Zero has no sign here.
inline std::string Hexadecimal(double v) {
    const auto bits = std::bit_cast<std::uint64_t>(v);
    const auto mantissa = static_cast<unsigned long long>(bits & 0xFFFFFFFFFFFFF);
    const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
    if (v == 0) return "0x0p+0";
    if (exponent == 0x7FF) return mantissa != 0 ? "nan" : v > 0 ? "inf" : "-inf";
    char text[40];
    std::snprintf(text, sizeof text, "%013llx", mantissa);
    std::string digits = text;
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    std::snprintf(text, sizeof text, "%s0x%d%s%sp%+d", v < 0 ? "-" : "", exponent == 0 ? 0 : 1,
                  digits.empty() ? "" : ".", digits.c_str(), exponent == 0 ? -1022 : exponent - 1023);
    return text;
}

/// The numbers of a result, in rows: a row a point, a node, a line.
class Table {
  public:
    void Row(std::initializer_list<double> numbers) { m_rows.emplace_back(numbers); }

    void Add(double v) { Row({v}); }
    void Add(const DPOINT& p) { Row({p.x, p.y}); }
    void Add(const tagPOINT& p) { Row({static_cast<double>(p.x), static_cast<double>(p.y)}); }
    void Add(const DLINE& l) { Row({l.p1.x, l.p1.y, l.p2.x, l.p2.y}); }
    void Add(const BPOINT& n) { Row({n.cp1.x, n.cp1.y, n.pt.x, n.pt.y, n.cp2.x, n.cp2.y}); }
    template <class T>
    void Add(const CArray<T, T>& all) {
        for (const T& one : all) Add(one);
    }
    template <class Element>
    void Add(const COwningList<Element>& all) {
        for (int i = 0; i < all.GetSize(); ++i) Add(all[i]);
    }

    const std::vector<std::vector<double>>& Rows() const { return m_rows; }

    /// FNV-1a over the bits of all numbers.
    std::uint64_t Digest() const {
        std::uint64_t digest = 0xCBF29CE484222325u;
        for (const auto& row : m_rows) {
            for (const double v : row) {
                const auto bits = std::bit_cast<std::uint64_t>(v == 0 ? 0.0 : v);
                for (int shift = 0; shift < 64; shift += 8)
                    digest = (digest ^ (bits >> shift & 0xFF)) * 0x100000001B3u;
            }
        }
        return digest;
    }

  private:
    std::vector<std::vector<double>> m_rows;
};

class Printer {
  public:
    Printer(HostPrint print, void* context) : m_print(print), m_context(context) {}

    void Line(const std::string& text) const { m_print(m_context, text.c_str()); }

    /// `parts` is the number of contours, lines or the like. Of long results the first rows stand for all.
    template <class Result>
    void Print(const char* what, int parts, const Result& result) const {
        constexpr std::size_t mostRows = 12;
        Table table;
        table.Add(result);
        char line[128];
        std::snprintf(line, sizeof line, "%-24s %5d in %6zu rows  %016llx", what, parts, table.Rows().size(),
                      static_cast<unsigned long long>(table.Digest()));
        Line(line);
        for (std::size_t i = 0; i < table.Rows().size() && i < mostRows; ++i) {
            std::string text = " ";
            for (const double v : table.Rows()[i]) text.append(" ").append(Hexadecimal(v));
            Line(text);
        }
    }

    template <class T>
    void Print(const char* what, const CArray<T, T>& result) const {
        Print(what, 1, result);
    }
    template <class Element>
    void Print(const char* what, const COwningList<Element>& result) const {
        Print(what, result.GetSize(), result);
    }

  private:
    HostPrint m_print;
    void* m_context;
};

}  // namespace tarvex::figures
