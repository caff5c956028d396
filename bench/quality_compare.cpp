// What quality.sh needs to judge a tracing, each in a call of its own:
//
//   quality_compare mask PICTURE.png MASK.pbm
//       Lays the picture on white, turns it grey, divides it by Otsu's threshold and writes the dark
//       side as the mask. Prints width, height and the part of the pixels that is set.
//   quality_compare score MASK.pbm RENDERED.png DRAWING.svg
//       Prints the intersection over union of the mask and the dark half of the rendering, the same
//       for the light half, and the number of segments in the drawing's paths.
//
// The threshold is computed here and not by the library, so that a fault there cannot hide.
#include <png.h>

#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using std::size_t;

struct Grey {
    size_t width = 0;
    size_t height = 0;
    std::vector<std::uint8_t> pixels;
};

struct Mask {
    size_t width = 0;
    size_t height = 0;
    std::vector<bool> set;
};

std::uint8_t OnWhite(unsigned value, unsigned alpha) {
    return static_cast<std::uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}

Grey ReadPng(const char* name) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, name) == 0) throw std::runtime_error(image.message);
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> rgba(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    Grey grey{image.width, image.height, {}};
    grey.pixels.reserve(grey.width * grey.height);
    for (size_t i = 0; i + 3 < rgba.size(); i += 4) {
        const unsigned luma =
            (299U * OnWhite(rgba[i], rgba[i + 3]) + 587U * OnWhite(rgba[i + 1], rgba[i + 3]) +
             114U * OnWhite(rgba[i + 2], rgba[i + 3]) + 500U) /
            1000U;
        grey.pixels.push_back(static_cast<std::uint8_t>(luma));
    }
    return grey;
}

// The threshold that maximises the variance between the pixels up to it and those above (Otsu 1979).
int OtsuThreshold(const std::vector<std::uint8_t>& pixels) {
    std::array<double, 256> histogram{};
    for (const std::uint8_t p : pixels) histogram[p] += 1;
    double total = 0;
    for (size_t v = 0; v < histogram.size(); ++v) total += histogram[v] * static_cast<double>(v);

    const auto count = static_cast<double>(pixels.size());
    int best = 0;
    double best_variance = -1;
    double below = 0;
    double sum_below = 0;
    for (int v = 0; v < 256; ++v) {
        below += histogram[static_cast<size_t>(v)];
        sum_below += histogram[static_cast<size_t>(v)] * v;
        if (below == 0 || below == count) continue;
        const double difference = sum_below / below - (total - sum_below) / (count - below);
        const double variance = below * (count - below) * difference * difference;
        if (variance > best_variance) {
            best_variance = variance;
            best = v;
        }
    }
    return best;
}

void WritePbm(const char* name, const Mask& mask) {
    std::string bytes = "P4\n" + std::to_string(mask.width) + ' ' + std::to_string(mask.height) + '\n';
    for (size_t y = 0; y < mask.height; ++y) {
        for (size_t x = 0; x < mask.width; x += 8) {
            unsigned byte = 0;
            for (size_t bit = 0; bit < 8 && x + bit < mask.width; ++bit) {
                if (mask.set[y * mask.width + x + bit]) byte |= 0x80U >> bit;
            }
            bytes.push_back(static_cast<char>(byte));
        }
    }
    std::ofstream out(name, std::ios::binary);
    out << bytes;
    if (!out.flush()) throw std::runtime_error("cannot write the mask");
}

Mask ReadPbm(const char* name) {
    std::ifstream in(name, std::ios::binary);
    std::string magic;
    Mask mask;
    if (!(in >> magic >> mask.width >> mask.height) || magic != "P4") throw std::runtime_error("no mask");
    in.get();
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const size_t stride = (mask.width + 7) / 8;
    if (bytes.size() != stride * mask.height) throw std::runtime_error("the mask ends early");
    mask.set.resize(mask.width * mask.height);
    for (size_t y = 0; y < mask.height; ++y) {
        for (size_t x = 0; x < mask.width; ++x) {
            const auto byte = static_cast<unsigned char>(bytes[y * stride + x / 8]);
            mask.set[y * mask.width + x] = (byte & (0x80U >> (x % 8))) != 0;
        }
    }
    return mask;
}

double IntersectionOverUnion(const std::vector<bool>& a, const std::vector<bool>& b, bool inverted) {
    size_t both = 0;
    size_t either = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const bool in_b = b[i] != inverted;
        both += a[i] && in_b ? 1 : 0;
        either += a[i] || in_b ? 1 : 0;
    }
    return either == 0 ? 1 : static_cast<double>(both) / static_cast<double>(either);
}

// One number of path data at `text`, which it is cut from; flags of arcs are single digits.
bool TakeNumber(std::string_view& text, bool flag) {
    while (!text.empty() &&
           (std::isspace(static_cast<unsigned char>(text.front())) != 0 || text.front() == ',')) {
        text.remove_prefix(1);
    }
    const auto digits = [&text](size_t i) {
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0) ++i;
        return i;
    };
    size_t end = 0;
    if (flag) {
        end = !text.empty() && (text[0] == '0' || text[0] == '1') ? 1 : 0;
    } else {
        const size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
        end = digits(sign);
        size_t mantissa = end - sign;
        if (end < text.size() && text[end] == '.') {
            const size_t fraction = digits(end + 1);
            mantissa += fraction - end - 1;
            end = fraction;
        }
        if (mantissa == 0) return false;
        if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
            size_t exponent = end + 1;
            if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
            if (digits(exponent) > exponent) end = digits(exponent);
        }
    }
    text.remove_prefix(end);
    return end > 0;
}

// The lines and curves of path data; closing a contour is not counted.
size_t CountSegments(std::string_view data) {
    constexpr std::string_view kCommands = "MLHVCSQTA";
    constexpr std::array<int, 9> kNumbers = {2, 2, 1, 1, 6, 4, 4, 2, 7};
    size_t segments = 0;
    while (!data.empty()) {
        const auto command = static_cast<char>(std::toupper(static_cast<unsigned char>(data.front())));
        data.remove_prefix(1);
        const size_t kind = kCommands.find(command);
        if (kind == std::string_view::npos) continue;
        for (size_t group = 0;; ++group) {
            int taken = 0;
            while (taken < kNumbers[kind] && TakeNumber(data, command == 'A' && (taken == 3 || taken == 4)))
                ++taken;
            if (taken < kNumbers[kind]) break;
            if (command != 'M' || group > 0) ++segments;
        }
    }
    return segments;
}

size_t CountSegmentsOfDrawing(const char* name) {
    std::ifstream in(name, std::ios::binary);
    if (!in) throw std::runtime_error("no drawing");
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    size_t segments = 0;
    for (size_t at = text.find("<path"); at != std::string::npos; at = text.find("<path", at + 1)) {
        const size_t tag_end = text.find('>', at);
        size_t data = at;
        do {
            data = text.find("d=", data + 1);
        } while (data < tag_end && std::isspace(static_cast<unsigned char>(text[data - 1])) == 0);
        if (data >= tag_end || data + 2 >= text.size()) continue;
        const size_t end = text.find(text[data + 2], data + 3);
        if (end == std::string::npos) break;
        segments += CountSegments(std::string_view(text).substr(data + 3, end - data - 3));
    }
    return segments;
}

int MakeMask(const char* picture, const char* mask_name) {
    const Grey grey = ReadPng(picture);
    const int threshold = OtsuThreshold(grey.pixels);
    Mask mask{grey.width, grey.height, {}};
    size_t set = 0;
    for (const std::uint8_t p : grey.pixels) {
        mask.set.push_back(p <= threshold);
        set += p <= threshold ? 1 : 0;
    }
    WritePbm(mask_name, mask);
    std::printf("%zu %zu %.5f\n", mask.width, mask.height,
                static_cast<double>(set) / static_cast<double>(grey.pixels.size()));
    return 0;
}

int Score(const char* mask_name, const char* rendered_name, const char* drawing) {
    const Mask mask = ReadPbm(mask_name);
    const Grey rendered = ReadPng(rendered_name);
    if (rendered.width != mask.width || rendered.height != mask.height) {
        throw std::runtime_error("the rendering is not of the mask's size");
    }
    std::vector<bool> dark;
    for (const std::uint8_t p : rendered.pixels) dark.push_back(p < 128);
    std::printf("%.6f %.6f %zu\n", IntersectionOverUnion(mask.set, dark, false),
                IntersectionOverUnion(mask.set, dark, true), CountSegmentsOfDrawing(drawing));
    return 0;
}

}  // namespace

int main(int count, char** values) {
    try {
        if (count == 4 && std::strcmp(values[1], "mask") == 0) return MakeMask(values[2], values[3]);
        if (count == 5 && std::strcmp(values[1], "score") == 0) return Score(values[2], values[3], values[4]);
        std::fputs("usage: quality_compare mask PICTURE MASK | score MASK RENDERED DRAWING\n", stderr);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "quality_compare: %s: %s\n", values[2], e.what());
    }
    return 2;
}
