// Pair adjustment (lookup type 2, and 9 which extends it) as the OpenType format lays it out.
//
// The features named `kern` of all scripts are taken together: a pair of letters is of one script, so the
// lookups of the others do not cover it. Each lookup counts once, with its first subtable that covers the
// left glyph and, where that lists pairs one by one, the right glyph too.
#include "platform/font_kerning.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace tarvex::platform {
namespace {

constexpr std::uint32_t kKernTag = 0x6B65726E;
constexpr unsigned kPairLookup = 2;
constexpr unsigned kExtensionLookup = 9;
constexpr unsigned kXAdvance = 4;

/// Real fonts have some dozens; a query walks through all of them.
constexpr std::size_t kMostSubtables = 2000;
/// Entries of lists that are looked at in search of them: lists may overlap, and repeat one another.
constexpr std::size_t kMostEntries = 20'000;

/// Big-endian numbers; 0 beyond the end.
class Bytes {
  public:
    explicit Bytes(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    unsigned U16(std::size_t at) const { return Byte(at) << 8 | Byte(at + 1); }
    std::uint32_t U32(std::size_t at) const { return U16(at) << 16 | U16(at + 2); }
    int I16(std::size_t at) const { return static_cast<std::int16_t>(U16(at)); }

  private:
    unsigned Byte(std::size_t at) const {
        return at < m_bytes.size() ? std::to_integer<unsigned>(m_bytes[at]) : 0;
    }

    std::span<const std::byte> m_bytes;
};

/// The last of `count` records whose first number is not above `key`. Records are sorted by it; when they are
/// not, the answer is some record, or none.
std::optional<std::size_t> LastNotAbove(const Bytes& bytes, std::size_t records, std::size_t count,
                                        std::size_t size, unsigned key) {
    std::size_t low = 0;
    std::size_t high = count;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (bytes.U16(records + middle * size) <= key) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    if (low == 0) return std::nullopt;
    return records + (low - 1) * size;
}

/// The glyph's place in a coverage table.
std::optional<std::size_t> Covered(const Bytes& bytes, std::size_t table, unsigned glyph) {
    const unsigned format = bytes.U16(table);
    const std::size_t count = bytes.U16(table + 2);
    const std::size_t records = table + 4;
    if (format == 1) {
        const auto record = LastNotAbove(bytes, records, count, 2, glyph);
        if (!record || bytes.U16(*record) != glyph) return std::nullopt;
        return (*record - records) / 2;
    }
    if (format != 2) return std::nullopt;
    const auto range = LastNotAbove(bytes, records, count, 6, glyph);
    if (!range || bytes.U16(*range + 2) < glyph) return std::nullopt;
    return bytes.U16(*range + 4) + glyph - bytes.U16(*range);
}

unsigned ClassOf(const Bytes& bytes, std::size_t table, unsigned glyph) {
    const unsigned format = bytes.U16(table);
    if (format == 1) {
        const unsigned first = bytes.U16(table + 2);
        if (glyph < first || glyph - first >= bytes.U16(table + 4)) return 0;
        return bytes.U16(table + 6 + std::size_t{2} * (glyph - first));
    }
    if (format != 2) return 0;
    const auto range = LastNotAbove(bytes, table + 4, bytes.U16(table + 2), 6, glyph);
    return range && bytes.U16(*range + 2) >= glyph ? bytes.U16(*range + 4) : 0;
}

/// How many bytes a value record takes: two for each bit of its format.
std::size_t ValueSize(unsigned format) {
    std::size_t size = 0;
    for (unsigned bit = 1; bit <= 0x80; bit <<= 1) size += (format & bit) != 0 ? 2 : 0;
    return size;
}

int XAdvanceOf(const Bytes& bytes, std::size_t value, unsigned format) {
    return (format & kXAdvance) != 0 ? bytes.I16(value + ValueSize(format & (kXAdvance - 1))) : 0;
}

/// What one subtable says about a pair; none when it leaves it to the next.
std::optional<int> PairIn(const Bytes& bytes, std::size_t table, unsigned left, unsigned right) {
    const auto place = Covered(bytes, table + bytes.U16(table + 2), left);
    if (!place) return std::nullopt;
    const unsigned format = bytes.U16(table + 4);
    const std::size_t valueSizes = ValueSize(format) + ValueSize(bytes.U16(table + 6));
    if (bytes.U16(table) == 1) {
        if (*place >= bytes.U16(table + 8)) return std::nullopt;
        const std::size_t set = table + bytes.U16(table + 10 + 2 * *place);
        const auto pair = LastNotAbove(bytes, set + 2, bytes.U16(set), 2 + valueSizes, right);
        if (!pair || bytes.U16(*pair) != right) return std::nullopt;
        return XAdvanceOf(bytes, *pair + 2, format);
    }
    if (bytes.U16(table) != 2) return std::nullopt;
    const std::size_t leftClass = ClassOf(bytes, table + bytes.U16(table + 8), left);
    const std::size_t rightClass = ClassOf(bytes, table + bytes.U16(table + 10), right);
    const std::size_t rightClasses = bytes.U16(table + 14);
    if (leftClass >= bytes.U16(table + 12) || rightClass >= rightClasses) return std::nullopt;
    return XAdvanceOf(bytes, table + 16 + (leftClass * rightClasses + rightClass) * valueSizes, format);
}

std::set<unsigned> KernLookups(const Bytes& bytes) {
    std::set<unsigned> lookups;
    std::size_t entries = 0;
    const std::size_t features = bytes.U16(6);
    for (std::size_t i = 0; i < bytes.U16(features); ++i) {
        const std::size_t record = features + 2 + 6 * i;
        if (bytes.U32(record) != kKernTag) continue;
        const std::size_t feature = features + bytes.U16(record + 4);
        for (std::size_t k = 0; k < bytes.U16(feature + 2); ++k) {
            if (++entries > kMostEntries) return lookups;
            lookups.insert(bytes.U16(feature + 4 + 2 * k));
        }
    }
    return lookups;
}

}  // namespace

KerningTable::KerningTable(std::vector<std::byte> gpos) : m_table(std::move(gpos)) {
    const Bytes bytes(m_table);
    const std::size_t lookups = bytes.U16(8);
    std::size_t entries = 0;
    for (const unsigned index : KernLookups(bytes)) {
        if (index >= bytes.U16(lookups)) continue;
        const std::size_t lookup = lookups + bytes.U16(lookups + 2 + std::size_t{2} * index);
        const unsigned type = bytes.U16(lookup);
        for (std::size_t i = 0; i < bytes.U16(lookup + 4); ++i) {
            if (m_subtables.size() == kMostSubtables || ++entries > kMostEntries) return;
            std::size_t subtable = lookup + bytes.U16(lookup + 6 + 2 * i);
            if (type == kExtensionLookup && bytes.U16(subtable + 2) == kPairLookup) {
                subtable += bytes.U32(subtable + 4);
            } else if (type != kPairLookup) {
                break;
            }
            if (subtable < m_table.size()) m_subtables.push_back({subtable, index});
        }
    }
}

int KerningTable::Adjustment(std::uint16_t left, std::uint16_t right) const {
    const Bytes bytes(m_table);
    int sum = 0;
    std::optional<unsigned> done;
    for (const Subtable& subtable : m_subtables) {
        if (done == subtable.lookup) continue;
        const auto value = PairIn(bytes, subtable.offset, left, right);
        if (!value) continue;
        sum += *value;
        done = subtable.lookup;
    }
    return sum;
}

}  // namespace tarvex::platform
