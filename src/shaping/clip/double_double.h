// Numbers of twice a double's precision, as unevaluated sums of two doubles (Dekker 1971, Knuth 1969).
// Sums, differences and products of doubles are exact while nothing overflows or underflows.
#pragma once

namespace tarvex::clip {

/// The parts of one number, or of several side by side when `Number` is lanes of doubles.
template <class Number>
struct TwoParts {
    Number high{};
    Number low{};
};

using DoubleDouble = TwoParts<double>;

template <class Number>
TwoParts<Number> Sum(Number a, Number b) {
    const Number sum = a + b;
    const Number bPart = sum - a;
    return {sum, (a - (sum - bPart)) + (b - bPart)};
}

template <class Number>
TwoParts<Number> Difference(Number a, Number b) {
    const Number difference = a - b;
    const Number bPart = difference - a;
    return {difference, (a - (difference - bPart)) - (b + bPart)};
}

template <class Number>
TwoParts<Number> Product(Number a, Number b) {
    const Number splitter = 134217729;  // 2^27 + 1
    const Number aBig = splitter * a;
    const Number aHigh = aBig - (aBig - a);
    const Number aLow = a - aHigh;
    const Number bBig = splitter * b;
    const Number bHigh = bBig - (bBig - b);
    const Number bLow = b - bHigh;
    const Number product = a * b;
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
