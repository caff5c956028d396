// Short decimal numbers: coordinates as integers in units of the last decimal place.
//
// Both writers compute with such integers, so that what is rounded is rounded once and differences
// are exact.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarvex::app {

inline constexpr int MAX_PRECISION = 9;

/// Units of `precision` decimals nearest to `value`, halves away from zero. Saturates at ±10^15
/// units, so that sums and differences of a few cannot overflow; NaN gives 0.
std::int64_t ToUnits(double value, int precision);

enum class LeadingZero { Dropped, Kept };

/// The shortest text of a number of units: no trailing zeros after the point, no point without
/// decimals, no "-0"; 0.5 as ".5" or "0.5". Precision 0..MAX_PRECISION.
class DecimalText {
  public:
    DecimalText(std::int64_t units, int precision, LeadingZero zero);

    std::string_view View() const { return {m_text + m_start, CAPACITY - m_start - m_dropped}; }
    bool HasPoint() const { return m_hasPoint; }

  private:
    static constexpr std::size_t CAPACITY = 24;  // sign, 19 digits, point and to spare

    char m_text[CAPACITY];
    std::size_t m_start = CAPACITY;
    std::size_t m_dropped = 0;
    bool m_hasPoint = false;
};

}  // namespace tarvex::app
