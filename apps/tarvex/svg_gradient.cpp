// The mean of a gradient is an integral over pieces between stops, of premultiplied colours, which are linear
// there. On a disc the ring at a distance weighs as its circumference, so what is integrated is a quadratic
// polynomial at most, for which Simpson's rule is exact.
#include "tarvex/svg_gradient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "tarvex/svg_paint.h"
#include "tarvex/svg_property.h"

namespace tarvex::app {

namespace {

constexpr int MOST_REFERENCES = 32;  // that are followed from gradient to gradient; more may run in a circle

/// Red, green and blue times alpha, and alpha, of 0 to 1.
using Premultiplied = std::array<double, 4>;

struct Stop {
    double offset;
    Premultiplied colour;
};

enum class Kind { linear, radial };

/// The mean colours of the same stops on a line and on a disc.
struct Means {
    Rgba linear = {0, 0, 0, 0};
    Rgba radial = {0, 0, 0, 0};
};

std::string_view LocalName(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    return name.substr(name.rfind(':') + 1);
}

std::optional<Kind> KindOf(const pugi::xml_node& node) {
    const std::string_view name = LocalName(node);
    if (name == "linearGradient") return Kind::linear;
    if (name == "radialGradient") return Kind::radial;
    return std::nullopt;
}

double ShareOf(const std::optional<std::string_view>& text, double otherwise) {
    const auto value = text ? ParseLength(*text, 1) : std::nullopt;
    return value && !std::isnan(*value) ? std::clamp(*value, 0.0, 1.0) : otherwise;
}

std::vector<Stop> StopsOf(const pugi::xml_node& gradient) {
    std::vector<Stop> stops;
    for (const pugi::xml_node& node : gradient.children()) {
        if (LocalName(node) != "stop") continue;
        const double before = stops.empty() ? 0 : stops.back().offset;  // no stop lies before its predecessor
        const double offset = std::max(before, ShareOf(node.attribute("offset").value(), 0));
        const auto declared = Property(node, "stop-color");
        const Rgba colour = (declared ? ParseColour(*declared) : std::nullopt).value_or(Rgba{0, 0, 0, 255});
        const double alpha = colour.alpha / 255.0 * ShareOf(Property(node, "stop-opacity"), 1);
        const auto part = [alpha](std::uint8_t level) { return level / 255.0 * alpha; };
        stops.push_back({offset, {part(colour.red), part(colour.green), part(colour.blue), alpha}});
    }
    return stops;
}

/// Adds the integral over a piece along which the colour goes evenly from one stop's to the other's.
void Integrate(const Stop& from, const Stop& to, Kind kind, Premultiplied& sum) {
    const auto weight = [kind](double at) { return kind == Kind::radial ? 2 * at : 1; };
    const double middle = 4 * weight((from.offset + to.offset) / 2);
    for (std::size_t i = 0; i < sum.size(); ++i) {
        const double a = from.colour[i];
        const double b = to.colour[i];
        sum[i] += (to.offset - from.offset) / 6 *
                  (a * weight(from.offset) + (a + b) / 2 * middle + b * weight(to.offset));
    }
}

Rgba MeanOf(const std::vector<Stop>& stops, Kind kind) {
    Premultiplied sum = {};
    Stop last = {0, stops.front().colour};
    for (const Stop& stop : stops) Integrate(std::exchange(last, stop), stop, kind, sum);
    Integrate(last, {1, last.colour}, kind, sum);
    if (sum[3] <= 0) return {0, 0, 0, 0};
    const auto level = [](double v) {
        return static_cast<std::uint8_t>(std::lround(255 * std::clamp(v, 0.0, 1.0)));
    };
    return {level(sum[0] / sum[3]), level(sum[1] / sum[3]), level(sum[2] / sum[3]), level(sum[3])};
}

/// The gradients of a drawing, and the means of those that have stops of their own.
class Gradients : public pugi::xml_tree_walker {
  public:
    bool for_each(pugi::xml_node& node) override {
        const auto kind = KindOf(node);
        const std::string_view id = node.attribute("id").value();
        if (!kind || id.empty()) return true;
        const auto [place, isNew] = m_entries.try_emplace(id, Entry{*kind, ReferredId(node), std::nullopt});
        if (!isNew) return true;  // an id that stands twice is the first element's
        if (const std::vector<Stop> stops = StopsOf(node); !stops.empty())
            place->second.means = Means{MeanOf(stops, Kind::linear), MeanOf(stops, Kind::radial)};
        return true;
    }

    void Collect(std::map<std::string, Rgba, std::less<>>& colours) const {
        for (const auto& [id, entry] : m_entries) {
            const Means means = MeansOf(entry);
            colours.emplace(id, entry.kind == Kind::linear ? means.linear : means.radial);
        }
    }

  private:
    struct Entry {
        Kind kind = Kind::linear;
        std::string_view refersTo;
        std::optional<Means> means;
    };

    static std::string_view ReferredId(const pugi::xml_node& node) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            const std::string_view name = attribute.name();
            const std::string_view value = attribute.value();
            if (name.substr(name.rfind(':') + 1) == "href" && value.starts_with('#')) return value.substr(1);
        }
        return {};
    }

    Means MeansOf(const Entry& first) const {
        const Entry* entry = &first;
        for (int i = 0; i < MOST_REFERENCES && !entry->means; ++i) {
            const auto next = m_entries.find(entry->refersTo);
            if (next == m_entries.end()) break;
            entry = &next->second;
        }
        return entry->means.value_or(Means{});
    }

    std::map<std::string_view, Entry> m_entries;
};

}  // namespace

GradientColours::GradientColours(const pugi::xml_node& root) {
    Gradients gradients;
    pugi::xml_node(root).traverse(gradients);
    gradients.Collect(m_colours);
}

std::optional<Rgba> GradientColours::Find(std::string_view id) const {
    const auto found = m_colours.find(id);
    if (found == m_colours.end()) return std::nullopt;
    return found->second;
}

}  // namespace tarvex::app
