// Numbers of twice a double's precision, as unevaluated sums of two doubles (Dekker 1971, Knuth 1969).
// Sums, differences and products of doubles are exact while nothing overflows or underflows.
#pragma once

namespace tarvex::clip {

struct DoubleDouble {
    double high = 0;
    double low = 0;
};

inline DoubleDouble Sum(double a, double b) {
    const double sum = a + b;
    const double bPart = sum - a;
    return {sum, (a - (sum - bPart)) + (b - bPart)};
}

inline DoubleDouble Difference(double a, double b) { return Sum(a, -b); }

inline DoubleDouble Product(double a, double b) {
    constexpr double splitter = 134217729;  // 2^27 + 1
    const double aBig = splitter * a;
    const double aHigh = aBig - (aBig - a);
    const double aLow = a - aHigh;
    const double bBig = splitter * b;
    const double bHigh = bBig - (bBig - b);
    const double bLow = b - bHigh;
    const double product = a * b;
    return {product, aLow * bLow - (((product - aHigh * bHigh) - aLow * bHigh) - aHigh * bLow)};
}

/// The same value with the high part as near to it as a double can be; needs |high| >= |low|.
inline DoubleDouble Normalized(double high, double low) {
    const double sum = high + low;
    return {sum, low - (sum - high)};
}

inline DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble high = Sum(a.high, b.high);
    const DoubleDouble low = Sum(a.low, b.low);
    const DoubleDouble sum = Normalized(high.high, high.low + low.high);
    return Normalized(sum.high, sum.low + low.low);
}

inline DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) {
    return a + DoubleDouble{-b.high, -b.low};
}

inline DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble product = Product(a.high, b.high);
    return Normalized(product.high, product.low + (a.high * b.low + a.low * b.high));
}

inline DoubleDouble operator/(const DoubleDouble& a, const DoubleDouble& b) {
    const double first = a.high / b.high;
    const DoubleDouble rest = a - b * DoubleDouble{first, 0};
    const double second = rest.high / b.high;
    const DoubleDouble rest2 = rest - b * DoubleDouble{second, 0};
    const DoubleDouble sum = Normalized(first, second);
    return Normalized(sum.high, sum.low + rest2.high / b.high);
}

}  // namespace tarvex::clip
