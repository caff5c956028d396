// Regions of any picture of labels with any options: closed, finite, in the picture or hardly beside it, and
// as tiles fitting together to the last bit.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "input.h"
#include "tarvex/colortrace.h"
#include "tarvex/nodes.h"

namespace tarvex::fuzz {
namespace {

struct Picture {
    int width;
    int height;
    std::vector<std::uint16_t> labels;
    std::vector<RGBQUAD> source;
    std::vector<std::uint8_t> opacity;
    bool hasGround = false;

    LabelView View() const { return {labels.data(), width, height, width}; }
};

constexpr unsigned kColors = 5;

/// Runs of labels, of single pixels or longer; the pixels' colours and opacity vary with the same bytes.
Picture TakePicture(Input& input) {
    Picture picture{input.TakeBetween(1, 40), input.TakeBetween(1, 40), {}, {}, {}};
    const int longest = input.TakeBetween(0, 1) == 0 ? 1 : 24;
    const auto sparse =
        static_cast<unsigned>(input.TakeBetween(0, 3));  // how seldom a pixel has no label; 0 is never
    const auto bytes = input.Rest();
    const std::size_t count =
        static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    std::size_t next = 0;
    while (picture.labels.size() < count) {
        const unsigned byte = bytes.empty() ? 0U : bytes[next++ % bytes.size()];
        const bool isGround = sparse > 0 && byte % (sparse * 11U) == 0;
        const auto label = isGround ? NO_LABEL : static_cast<std::uint16_t>(byte % kColors);
        for (unsigned run = 1 + byte / kColors % static_cast<unsigned>(longest);
             run > 0 && picture.labels.size() < count; --run) {
            picture.labels.push_back(label);
            const auto level = static_cast<BYTE>(byte * 3 + run * 17);
            picture.source.push_back({level, static_cast<BYTE>(byte), static_cast<BYTE>(255 - level), 0});
            picture.opacity.push_back(isGround ? level / 2 : static_cast<BYTE>(128 + level / 2));
        }
        picture.hasGround = picture.hasGround || isGround;
    }
    return picture;
}

constexpr std::array<RGBQUAD, kColors> kPalette{
    {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 255, 0}, {0, 0, 250, 0}, {200, 100, 0, 0}}};

using Bits = std::array<double, 8>;

Bits Reversed(const Bits& c) { return {c[6], c[7], c[4], c[5], c[2], c[3], c[0], c[1]}; }

/// Checks the contours, and counts their segments.
std::map<Bits, int> Check(const std::vector<PaintedRegions>& painted, const Picture& picture) {
    std::map<Bits, int> segments;
    // Layers run on beneath others for less than two pixels, and curves may swing out by a little more.
    const double margin = 4;
    for (const PaintedRegions& regions : painted) {
        Require(regions.label < kColors, "what has no label is not painted");
        for (int i = 0; i < regions.outlines.GetSize(); ++i) {
            const auto& nodes = regions.outlines[i];
            const int last = nodes.GetUpperBound();
            Require(last >= 1, "a contour has a segment");
            Require(GetBezierArea({nodes.GetData(), static_cast<std::size_t>(last + 1)}) != 0,
                    "a contour encloses an area");
            Require(nodes[0].pt.x == nodes[last].pt.x && nodes[0].pt.y == nodes[last].pt.y,
                    "a contour ends where it begins");
            for (const BPOINT& node : nodes) {
                for (const DPOINT& p : {node.cp1, node.pt, node.cp2})
                    Require(std::isfinite(p.x) && std::isfinite(p.y), "points are finite");
                Require(node.pt.x > -margin && node.pt.y > -margin && node.pt.x < picture.width + margin &&
                            node.pt.y < picture.height + margin,
                        "anchors lie in the picture, or hardly beside it");
            }
            for (int k = 0; k < last; ++k) {
                const BPOINT& a = nodes[k];
                const BPOINT& b = nodes[k + 1];
                ++segments[{a.pt.x, a.pt.y, a.cp2.x, a.cp2.y, b.cp1.x, b.cp1.y, b.pt.x, b.pt.y}];
            }
        }
    }
    return segments;
}

bool IsOnFrame(const Bits& c, const Picture& picture) {
    return (c[0] == c[6] && (c[0] == 0 || c[0] == picture.width)) ||
           (c[1] == c[7] && (c[1] == 0 || c[1] == picture.height));
}

}  // namespace

void TryInput(Input input) {
    RegionOptions options;
    const int wild = input.TakeBetween(0, 15);
    options.minPoints = wild == 1 ? input.Take<std::int32_t>() : input.TakeBetween(0, 12);
    if (wild == 2) options.tolerance = input.Take<double>();
    if (wild == 3) options.tolerance = input.TakeBetween(0, 255) / 64.0;
    const int known = input.TakeBetween(0, 3);
    Picture picture = TakePicture(input);
    if ((known & 1) != 0) {
        options.source = picture.source;
        options.colors = kPalette;
        std::vector<RGBQUAD> colors(kPalette.begin(), kPalette.end());
        if (options.minPoints % 2 == 0)
            picture.labels =
                RestoreThinFeatures(picture.width, picture.source, picture.labels, colors, kColors);
    }
    if ((known & 2) != 0) options.opacity = picture.opacity;
    double part = 0;
    options.progress = [&part](double now) {
        Require(now >= part && now <= 1, "progress goes from 0 to 1");
        part = now;
        return true;
    };
    Check(TraceRegions(picture.View(), options), picture);
    part = 0;
    options.style = RegionStyle::cutout;
    const auto tiles = TraceRegions(picture.View(), options);
    const auto segments = Check(tiles, picture);
    Require(tiles.size() <= kColors, "tiles of one label come together");
    const bool isWhole = !picture.hasGround && options.minPoints < 4;
    for (const auto& [segment, count] : segments) {
        if (IsOnFrame(segment, picture)) continue;
        const auto back = segments.find(Reversed(segment));
        Require(back != segments.end() || !isWhole, "there is no gap between tiles");
        Require(back == segments.end() || back->second == count, "a border belongs to two tiles");
    }
}

}  // namespace tarvex::fuzz
