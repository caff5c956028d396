// A sum of products of doubles without any rounding, for all finite doubles: a fixed-point number wide
// enough for the smallest product's last bit and the largest one's first.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tarvex::clip {

class ExactSum {
  public:
    /// Adds a * b. Up to 2^28 products fit.
    void Add(double a, double b) {
        if (a == 0 || b == 0) return;
        const Parts p = Split(a);
        const Parts q = Split(b);
        const bool negative = (a < 0) != (b < 0);
        const auto position = static_cast<std::size_t>(p.exponent + q.exponent + bias);
        AddBits(p.low * q.low, position, negative);
        AddBits(p.low * q.high, position + 32, negative);
        AddBits(p.high * q.low, position + 32, negative);
        AddBits(p.high * q.high, position + 64, negative);
    }

    /// Carries the digits through, from the lowest in use, and looks at the highest.
    int Sign() {
        if (m_first > m_last) return 0;
        std::int64_t carry = 0;
        bool anySet = false;
        for (std::size_t i = m_first; i <= m_last; ++i) {
            const std::int64_t sum = m_digits[i] + carry;
            carry = sum >> 32;
            anySet = anySet || (sum & 0xFFFFFFFF) != 0;
        }
        if (carry != 0) return carry < 0 ? -1 : 1;
        return anySet ? 1 : 0;
    }

  private:
    struct Parts {
        std::uint64_t low;
        std::uint64_t high;
        int exponent;
    };

    /// |value| = (high * 2^32 + low) * 2^exponent.
    static Parts Split(double value) {
        int exponent = 0;
        const double fraction = std::frexp(std::fabs(value), &exponent);
        const auto bits = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
        return {bits & 0xFFFFFFFF, bits >> 32, exponent - 53};
    }

    void AddBits(std::uint64_t bits, std::size_t position, bool negative) {
        const std::size_t digit = position / 32;
        const unsigned shift = position % 32;
        const std::uint64_t low = (bits & 0xFFFFFFFF) << shift;
        const std::uint64_t high = (bits >> 32) << shift;
        AddDigit(digit, low & 0xFFFFFFFF, negative);
        AddDigit(digit + 1, (low >> 32) + (high & 0xFFFFFFFF), negative);
        AddDigit(digit + 2, high >> 32, negative);
        m_first = std::min(m_first, digit);
        m_last = std::max(m_last, digit + 2);
    }

    void AddDigit(std::size_t digit, std::uint64_t value, bool negative) {
        const auto signedValue = static_cast<std::int64_t>(value);
        m_digits[digit] += negative ? -signedValue : signedValue;
    }

    static constexpr int bias = 2 * (1073 + 53);  // the smallest double is 2^-1074, a fraction times 2^-1073
    static constexpr std::size_t digitCount = (2 * bias) / 32 + 8;
    std::array<std::int64_t, digitCount> m_digits{};
    std::size_t m_first = digitCount;
    std::size_t m_last = 0;
};

}  // namespace tarvex::clip
