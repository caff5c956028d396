// Kerning from a font's GPOS table, which font files bring and nobody has checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvex::platform {

/// Pair adjustments of the feature `kern`. No byte outside the table is read, whatever its offsets and counts
/// say, and a query takes a bounded number of steps.
class KerningTable {
  public:
    KerningTable() = default;
    explicit KerningTable(std::vector<std::byte> gpos);

    /// Whether the table has anything to say about kerning.
    bool HasPairs() const { return !m_subtables.empty(); }
    /// Font units to add to the advance of `left` before `right`.
    int Adjustment(std::uint16_t left, std::uint16_t right) const;

  private:
    struct Subtable {
        std::size_t offset = 0;
        unsigned lookup = 0;  ///< of the subtables of one lookup the first one that fits counts
    };

    std::vector<std::byte> m_table;
    std::vector<Subtable> m_subtables;
};

}  // namespace tarvex::platform
