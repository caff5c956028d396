// What color.sh needs to judge reductions and traces in colour, each in a call of its own:
//
//   color_compare colors PICTURE             the number of different colours among the opaque pixels
//   color_compare flat PICTURE REDUCED       flat colours of the picture, and how many of them the reduced
//                                            one has: colours on more than 1% of the opaque pixels, counted
//                                            where the eight pixels around have the same colour; "has" means
//                                            within 390 by the reduction's own distance
//   color_compare error PICTURE REDUCED      mean squared error per channel over the opaque pixels
//   color_compare difference PICTURE DRAWN   mean difference per channel; transparent means white
//   color_compare seams PICTURE A B          where a drawing on two grounds differs, though the picture is
//   opaque
//                                            there: pixels and the largest difference with opaque pixels
//                                            all around, and the same at the edge of the opaque part
//   color_compare masks PICTURE PREFIX       writes PREFIXn.pbm for each colour of at least
//                                            half opacity; prints n and the
//   colour
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using std::size_t;

struct Pixel {
    std::uint8_t red, green, blue, alpha;
};

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Pixel> pixels;

    const Pixel& At(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    /// Also outside, so that the picture's edge is no edge of what is opaque.
    bool IsOpaque(int x, int y) const {
        return x < 0 || y < 0 || x >= width || y >= height || At(x, y).alpha == 255;
    }
    template <class Ask>
    static bool AllAround(int x, int y, Ask ask) {
        for (int k = 0; k < 9; ++k) {
            if (!ask(x + k % 3 - 1, y + k / 3 - 1)) return false;
        }
        return true;
    }
};

Picture Read(const char* name) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, name) == 0) throw std::runtime_error(image.message);
    image.format = PNG_FORMAT_RGBA;
    Picture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    picture.pixels.resize(PNG_IMAGE_SIZE(image) / sizeof(Pixel));
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error(image.message);
    return picture;
}

std::uint32_t KeyOf(const Pixel& p) {
    return static_cast<std::uint32_t>(p.red) << 16 | static_cast<std::uint32_t>(p.green) << 8 | p.blue;
}

std::map<std::uint32_t, size_t> CountColors(const Picture& picture, int leastAlpha = 255) {
    std::map<std::uint32_t, size_t> counts;
    for (const Pixel& p : picture.pixels) {
        if (p.alpha >= leastAlpha) ++counts[KeyOf(p)];
    }
    return counts;
}

int Distance(std::uint32_t a, std::uint32_t b) {
    const auto square = [&](unsigned shift) {
        const int d = static_cast<int>(a >> shift & 255U) - static_cast<int>(b >> shift & 255U);
        return d * d;
    };
    return 3 * square(16) + 4 * square(8) + 2 * square(0);
}

void Flat(const Picture& picture, const Picture& reduced) {
    const auto palette = CountColors(reduced);
    std::map<std::uint32_t, size_t> flat;
    size_t opaque = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (!picture.IsOpaque(x, y)) continue;
            ++opaque;
            const std::uint32_t key = KeyOf(picture.At(x, y));
            const bool isFlat = Picture::AllAround(x, y, [&](int u, int v) {
                return u >= 0 && v >= 0 && u < picture.width && v < picture.height &&
                       KeyOf(picture.At(u, v)) == key && picture.IsOpaque(u, v);
            });
            if (isFlat) ++flat[key];
        }
    }
    int wanted = 0;
    int found = 0;
    for (const auto& [key, count] : flat) {
        if (count * 100 <= opaque) continue;
        ++wanted;
        found += std::any_of(palette.begin(), palette.end(),
                             [key = key](const auto& entry) { return Distance(entry.first, key) < 390; });
    }
    std::printf("%d %d\n", wanted, found);
}

template <class Channel>
double SumOver(const Picture& a, const Picture& b, Channel add) {
    if (a.width != b.width || a.height != b.height) throw std::runtime_error("the sizes differ");
    double sum = 0;
    for (size_t i = 0; i < a.pixels.size(); ++i) {
        for (std::uint8_t Pixel::*channel : {&Pixel::red, &Pixel::green, &Pixel::blue})
            sum += add(a.pixels[i], b.pixels[i], channel);
    }
    return sum;
}

void Error(const Picture& picture, const Picture& reduced) {
    size_t opaque = 0;
    for (const Pixel& p : picture.pixels) opaque += p.alpha == 255 ? 1 : 0;
    const double squares =
        SumOver(picture, reduced, [](const Pixel& a, const Pixel& b, std::uint8_t Pixel::*channel) {
            const int d = a.*channel - b.*channel;
            return a.alpha == 255 ? d * d : 0;
        });
    std::printf("%.1f\n", squares / (3.0 * static_cast<double>(std::max<size_t>(opaque, 1))));
}

void Difference(const Picture& picture, const Picture& drawn) {
    const auto onWhite = [](const Pixel& p, std::uint8_t Pixel::*channel) {
        return (p.*channel * p.alpha + 255 * (255 - p.alpha) + 127) / 255;
    };
    const double sum =
        SumOver(picture, drawn, [&](const Pixel& a, const Pixel& b, std::uint8_t Pixel::*channel) {
            return std::abs(onWhite(a, channel) - onWhite(b, channel));
        });
    std::printf("%.2f\n", sum / (3.0 * static_cast<double>(picture.pixels.size())));
}

void Seams(const Picture& picture, const Picture& a, const Picture& b) {
    const int scale = a.width / std::max(picture.width, 1);
    if (a.width != picture.width * scale || a.height != picture.height * scale || b.width != a.width)
        throw std::runtime_error("the drawings are not of a multiple of the picture's size");
    size_t pixels[2] = {};
    int worst[2] = {};
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            const Pixel& p = a.At(x, y);
            const Pixel& q = b.At(x, y);
            const int seen =
                std::max({std::abs(p.red - q.red), std::abs(p.green - q.green), std::abs(p.blue - q.blue)});
            if (seen == 0 || !picture.IsOpaque(x / scale, y / scale)) continue;
            const auto isOpaque = [&](int u, int v) { return picture.IsOpaque(u, v); };
            const int edge = Picture::AllAround(x / scale, y / scale, isOpaque) ? 0 : 1;
            ++pixels[edge];
            worst[edge] = std::max(worst[edge], seen);
        }
    }
    std::printf("%zu %d %zu %d\n", pixels[0], worst[0], pixels[1], worst[1]);
}

void Masks(const Picture& picture, const std::string& prefix) {
    constexpr int leastAlpha = 128;
    int number = 0;
    for (const auto& [key, count] : CountColors(picture, leastAlpha)) {
        std::string bytes =
            "P4\n" + std::to_string(picture.width) + ' ' + std::to_string(picture.height) + '\n';
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; x += 8) {
                unsigned byte = 0;
                for (int bit = 0; bit < 8 && x + bit < picture.width; ++bit) {
                    const Pixel& p = picture.At(x + bit, y);
                    if (p.alpha >= leastAlpha && KeyOf(p) == key) byte |= 0x80U >> bit;
                }
                bytes.push_back(static_cast<char>(byte));
            }
        }
        std::ofstream(prefix + std::to_string(number) + ".pbm", std::ios::binary) << bytes;
        std::printf("%d #%06x\n", number++, key);
    }
}

}  // namespace

int main(int count, char** values) {
    try {
        const std::string what = count > 2 ? values[1] : "";
        if (what == "colors" && count == 3) {
            std::printf("%zu\n", CountColors(Read(values[2])).size());
        } else if (what == "flat" && count == 4) {
            Flat(Read(values[2]), Read(values[3]));
        } else if (what == "error" && count == 4) {
            Error(Read(values[2]), Read(values[3]));
        } else if (what == "difference" && count == 4) {
            Difference(Read(values[2]), Read(values[3]));
        } else if (what == "seams" && count == 5) {
            Seams(Read(values[2]), Read(values[3]), Read(values[4]));
        } else if (what == "masks" && count == 4) {
            Masks(Read(values[2]), values[3]);
        } else {
            std::fputs("usage: color_compare colors|flat|error|difference|seams|masks PICTURE ...\n", stderr);
            return 2;
        }
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "color_compare: %s: %s\n", values[2], e.what());
        return 2;
    }
}
