// Conversions between red, green, blue and the terms in which people mix and choose colours.
#include <algorithm>
#include <cmath>

#include "core/rounding.h"
#include "tarvex/colors.h"
#include "tarvex/records.h"

namespace tarvex {

namespace {

constexpr double kAchromatic = 1e-7;  // differences below this have no hue

double ClampedUnit(double v) { return v > 0 ? std::min(v, 1.0) : 0.0; }

int Ink(double v) { return std::clamp(SaturatingInt(v), 0, 255); }

int Channel(double v) { return SaturatingInt(v * 255 + 0.5); }

}  // namespace

void RGB2CMYK(int r, int g, int b, int& c, int& m, int& y, int& k) {
    const double cyan = 1 - r / 255.0;
    const double magenta = 1 - g / 255.0;
    const double yellow = 1 - b / 255.0;
    const double black = std::min({cyan, magenta, yellow});
    if (std::fabs(black - 1) <= GEOMETRY_EPSILON) {
        c = m = y = 0;
        k = 255;
        return;
    }
    c = Ink(255 * (cyan - black) / (1 - black));
    m = Ink(255 * (magenta - black) / (1 - black));
    y = Ink(255 * (yellow - black) / (1 - black));
    k = Ink(255 * black);
}

void RGB2HLS(int r, int g, int b, double& h, double& l, double& s) {
    const double red = std::clamp(r, 0, 255) / 255.0;
    const double green = std::clamp(g, 0, 255) / 255.0;
    const double blue = std::clamp(b, 0, 255) / 255.0;
    const double most = std::max({red, green, blue});
    const double least = std::min({red, green, blue});
    double hue = 0;
    double saturation = 0;
    l = (most + least) / 2;
    if (!(std::fabs(most - least) < kAchromatic || std::fabs(2 - most - least) < kAchromatic)) {
        const double range = most - least;
        saturation = l <= 0.5 ? range / (most + least) : range / (2 - most - least);
        if (red == most) {
            hue = (green - blue) / range;
        } else if (green == most) {
            hue = (blue - red) / range + 2;
        } else {
            hue = (red - green) / range + 4;
        }
    }
    h = std::clamp((hue + 1) * 60, 0.0, 360.0);
    l = ClampedUnit(l);
    s = ClampedUnit(saturation);
}

void HLS2RGB(double h, double l, double s, int& r, int& g, int& b) {
    const double v = std::isnan(h) ? -1 : std::clamp(h / 60 - 1, -1.0, 5.0);
    l = ClampedUnit(l);
    s = ClampedUnit(s);
    if (s == 0) {
        r = g = b = Channel(l);
        return;
    }
    const double low = l <= 0.5 ? (1 - s) * l : l - (1 - l) * s;
    const double high = 2 * l - low;
    const double range = high - low;
    double red = low;
    double green = low;
    double blue = low;
    if (v < 1) {
        red = high;
        if (v >= 0) {
            green = low + range * v;
        } else {
            blue = low - range * v;
        }
    } else if (v < 3) {
        green = high;
        if (v >= 2) {
            blue = low + range * (v - 2);
        } else {
            red = low - range * (v - 2);
        }
    } else {
        blue = high;
        if (v >= 4) {
            red = low + range * (v - 4);
        } else {
            green = low - range * (v - 4);
        }
    }
    r = Channel(red);
    g = Channel(green);
    b = Channel(blue);
}

}  // namespace tarvex
