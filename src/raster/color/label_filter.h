// The majority filter on pictures of at most 256 colours, which are then numbers.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "raster/color/distance.h"

namespace tarvex::color {

/// A picture as labels, each the number of a colour; labels are counted in the order in which colours
/// first occur, stored row after stored row.
class Labels {
  public:
    static constexpr std::size_t mostColors = 256;

    /// Nothing when the picture has more colours.
    static std::optional<Labels> Of(const PixelView& image);

    /// The picture with its colours replaced as CColorReduction::ReplaceColors says; `mean` has its size, the
    /// palette at least one colour and at most mostColors.
    static Labels Replaced(const PixelView& image, const PixelView& mean, std::span<const RGBQUAD> palette);

    /// Gives every pixel the label of the largest class among the 5 x 5 pixels around it, all at once, as
    /// MajorityOfWindow would.
    void Filter();

    /// Writes the labels' colours to a picture of their size, with the reserved bytes of another.
    void Paint(const PixelView& to, const PixelView& reserved) const;

  private:
    /// The labels, surrounded by their edges again: two columns on the left, two and what vector reads may
    /// touch on the right.
    static constexpr int margin = 2;
    static constexpr int slack = 16;

    Labels(int width, int height);
    const std::uint8_t* Row(int y) const {
        return m_labels.data() + static_cast<std::size_t>(y) * m_stride + margin;
    }
    std::uint8_t* Row(int y) { return const_cast<std::uint8_t*>(static_cast<const Labels*>(this)->Row(y)); }
    void RepeatEdges();
    void FindNeighbours();
    void FindUnsettled(int y, std::vector<std::uint8_t>& blocks) const;
    void FilterRow(int y, const std::vector<std::uint8_t>& unsettled, std::uint8_t* out) const;
    void Settle(int y, const std::uint8_t* labels);
    std::uint8_t Majority(const std::array<const std::uint8_t*, 5>& rows, int x) const;

    int m_width = 0;
    int m_height = 0;
    std::size_t m_stride = 0;
    std::vector<RGBQUAD> m_colors;
    std::vector<std::uint8_t> m_labels;
    /// The labels of the colours that are almost equal to each, other than itself.
    std::vector<std::vector<std::uint8_t>> m_near;
    /// For eight pixels side by side, 1 where the last filtering changed one; 1 everywhere before the first.
    std::size_t m_blocks = 0;
    std::vector<std::uint8_t> m_changed;
};

}  // namespace tarvex::color
