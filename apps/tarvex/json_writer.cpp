#include "tarvex/json_writer.h"

#include <array>

#include "tarvex/decimal.h"

namespace tarvex::app {

namespace {

class JsonWriter {
  public:
    JsonWriter(std::string& out, int precision) : m_out(out), m_precision(precision) {}

    void Number(double value) {
        m_out += DecimalText(ToUnits(value, m_precision), m_precision, LeadingZero::Kept).View();
    }

    void Numbers(std::span<const double> values) {
        char separator = '[';
        for (const double value : values) {
            m_out += separator;
            Number(value);
            separator = ',';
        }
        m_out += ']';
    }

    void Node(const BPOINT& node) {
        Numbers(std::array{node.cp1.x, node.cp1.y, node.pt.x, node.pt.y, node.cp2.x, node.cp2.y});
    }

    /// `widths` has as many numbers as there are nodes, or none.
    void Contour(ContourView nodes, std::span<const double> widths) {
        const bool isClosed = nodes.size() > 1 && nodes.front().pt == nodes.back().pt;
        m_out += isClosed ? "{\"closed\":true,\"nodes\":[" : "{\"closed\":false,\"nodes\":[";
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (i > 0) m_out += ',';
            Node(nodes[i]);
        }
        m_out += ']';
        if (!widths.empty()) {
            m_out += ",\"widths\":";
            Numbers(widths);
        }
        m_out += '}';
    }

  private:
    std::string& m_out;
    int m_precision;
};

}  // namespace

std::string WriteJson(const JsonOptions& options, std::span<const ContourView> contours,
                      std::span<const std::span<const double>> widths) {
    std::string out = "{\"width\":";
    JsonWriter writer(out, options.precision);
    writer.Number(options.width);
    out += ",\"height\":";
    writer.Number(options.height);
    out += ",\"contours\":[";
    for (std::size_t i = 0; i < contours.size(); ++i) {
        out += i > 0 ? ",\n" : "\n";
        writer.Contour(contours[i], i < widths.size() ? widths[i] : std::span<const double>());
    }
    out += "\n]}\n";
    return out;
}

}  // namespace tarvex::app
