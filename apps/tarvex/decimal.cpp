#include "tarvex/decimal.h"

#include <cmath>

namespace tarvex::app {

std::int64_t ToUnits(double value, int precision) {
    static constexpr double POWERS[MAX_PRECISION + 1] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    constexpr double most = 1e15;
    const double scaled = value * POWERS[precision];
    if (std::isnan(scaled)) return 0;
    if (scaled >= most) return static_cast<std::int64_t>(most);
    if (scaled <= -most) return -static_cast<std::int64_t>(most);
    return static_cast<std::int64_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

DecimalText::DecimalText(std::int64_t units, int precision, LeadingZero zero) {
    const bool isNegative = units < 0;
    std::uint64_t rest =
        isNegative ? 0 - static_cast<std::uint64_t>(units) : static_cast<std::uint64_t>(units);
    std::size_t at = CAPACITY;
    std::size_t end = CAPACITY;
    for (int i = 0; i < precision; ++i) {
        const char digit = static_cast<char>('0' + rest % 10);
        rest /= 10;
        if (at == end && digit == '0') {
            --at;  // a trailing zero: its place stays empty
            --end;
            continue;
        }
        m_text[--at] = digit;
    }
    m_dropped = CAPACITY - end;
    m_hasPoint = at != end;
    if (m_hasPoint) m_text[--at] = '.';
    if (rest != 0 || !m_hasPoint || zero == LeadingZero::Kept) {
        do {
            m_text[--at] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
    }
    if (isNegative) m_text[--at] = '-';
    m_start = at;
}

}  // namespace tarvex::app
