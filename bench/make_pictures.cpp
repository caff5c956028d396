// Makes a large black-and-white picture: make_pictures KIND SIZE OUT.pbm. The kinds stress a tracer in
// different ways:
//   blobs         round spots, one per 2,000 pixels or so: many ordinary contours
//   noise         every pixel by chance: as many contours as there can be
//   comb          one contour as long as the picture allows
//   rings         contours within contours
//   spiral        one thin winding band
//   checkerboard  squares of 8 pixels that touch at their corners
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

class Picture {
  public:
    explicit Picture(int size)
        : m_size(size), m_set(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)) {}

    int size() const { return m_size; }

    void Set(int x, int y) {
        if (x >= 0 && y >= 0 && x < m_size && y < m_size) {
            m_set[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size) +
                  static_cast<std::size_t>(x)] = true;
        }
    }

    void Fill(const std::function<bool(int, int)>& inside) {
        for (int y = 0; y < m_size; ++y) {
            for (int x = 0; x < m_size; ++x) {
                if (inside(x, y)) Set(x, y);
            }
        }
    }

    bool Write(const char* name) const {
        std::ofstream out(name, std::ios::binary);
        out << "P4\n" << m_size << ' ' << m_size << '\n';
        std::size_t i = 0;
        for (int y = 0; y < m_size; ++y) {
            for (int x = 0; x < m_size; x += 8) {
                unsigned byte = 0;
                for (int bit = 0; bit < 8 && x + bit < m_size; ++bit) {
                    if (m_set[i++]) byte |= 0x80U >> bit;
                }
                out.put(static_cast<char>(byte));
            }
        }
        return static_cast<bool>(out.flush());
    }

  private:
    int m_size;
    std::vector<bool> m_set;
};

void Blobs(Picture& picture) {
    std::mt19937 random(1);
    const int n = picture.size();
    const int count = static_cast<int>(static_cast<double>(n) * n / 2000);
    for (int i = 0; i < count; ++i) {
        const auto below = [&random](int bound) {
            return static_cast<int>(random() % static_cast<unsigned>(bound));
        };
        const int cx = below(n);
        const int cy = below(n);
        const int r = 4 + below(9);
        for (int y = -r; y <= r; ++y) {
            for (int x = -r; x <= r; ++x) {
                if (x * x + y * y <= r * r) picture.Set(cx + x, cy + y);
            }
        }
    }
}

void Noise(Picture& picture) {
    std::mt19937 random(2);
    picture.Fill([&random](int, int) { return (random() & 1U) != 0; });
}

void Comb(Picture& picture) {
    const int n = picture.size();
    picture.Fill([n](int x, int y) {
        return x >= 4 && x < n - 4 && y >= 4 && y < n - 4 && (y < 12 || x / 4 % 2 == 1);
    });
}

void Rings(Picture& picture) {
    const double middle = picture.size() / 2.0;
    picture.Fill([middle](int x, int y) {
        const double r = std::hypot(x - middle, y - middle);
        return r < middle - 4 && std::fmod(r, 16) < 8;
    });
}

void Spiral(Picture& picture) {
    const double middle = picture.size() / 2.0;
    picture.Fill([middle](int x, int y) {
        const double r = std::hypot(x - middle, y - middle);
        const double turn = std::atan2(y - middle, x - middle) / (2 * std::numbers::pi);
        const double within = std::fmod(r - turn * 16 + 16, 16);
        return r < middle - 20 && within < 8;
    });
}

void Checkerboard(Picture& picture) {
    picture.Fill([](int x, int y) { return (x / 8 + y / 8) % 2 == 0; });
}

}  // namespace

int main(int count, char** values) {
    static const std::map<std::string, void (*)(Picture&)> kinds = {
        {"blobs", Blobs}, {"noise", Noise},   {"comb", Comb},
        {"rings", Rings}, {"spiral", Spiral}, {"checkerboard", Checkerboard}};
    const auto kind = count == 4 ? kinds.find(values[1]) : kinds.end();
    const long size = count == 4 ? std::strtol(values[2], nullptr, 10) : 0;
    if (kind == kinds.end() || size < 16 || size > 20000) {
        std::fputs("usage: make_pictures blobs|noise|comb|rings|spiral|checkerboard SIZE OUT.pbm\n", stderr);
        return 2;
    }
    Picture picture(static_cast<int>(size));
    kind->second(picture);
    if (!picture.Write(values[3])) {
        std::perror(values[3]);
        return 2;
    }
    return 0;
}
