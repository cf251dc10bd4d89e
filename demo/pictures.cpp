#include "demo/pictures.h"
#include <turbojpeg.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace demo {

namespace {

constexpr int width = 480;
constexpr int height = 320;

struct Tone {
    double red, green, blue;
};

constexpr Tone mix(Tone a, Tone b, double share) {
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share};
}

/// Shapes with soft edges on a canvas whose units are pixels.
class Canvas {
public:
    Canvas(Tone top, Tone foot) : pixels_(static_cast<std::size_t>(width) * height) {
        for (int y = 0; y < height; ++y)
            std::fill_n(pixels_.begin() + std::ptrdiff_t{y} * width, width,
                        mix(top, foot, double(y) / height));
    }

    void disc(double x, double y, double radius, Tone tone, double opacity = 1.0) {
        paint(tone, opacity, [=](double px, double py) { return radius - std::hypot(px - x, py - y); });
    }

    void box(double x, double y, double w, double h, Tone tone, double opacity = 1.0) {
        const auto depth = [=](double px, double py) {
            return std::min({px - x, x + w - px, py - y, y + h - py});
        };
        paint(tone, opacity, depth);
    }

    /// Everything below a line that `heightAt` gives.
    template <typename HeightAt>
    void land(Tone tone, double opacity, HeightAt heightAt) {
        paint(tone, opacity, [=](double px, double py) { return py - heightAt(px); });
    }

    void stroke(double x1, double y1, double x2, double y2, double thickness, Tone tone) {
        const double length2 = (x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1);
        paint(tone, 1.0, [=](double px, double py) {
            const double along =
                std::clamp(((px - x1) * (x2 - x1) + (py - y1) * (y2 - y1)) / length2, 0.0, 1.0);
            return thickness / 2 - std::hypot(px - x1 - along * (x2 - x1), py - y1 - along * (y2 - y1));
        });
    }

    std::string jpeg() const {
        std::vector<unsigned char> bytes;
        bytes.reserve(pixels_.size() * 3);
        for (const Tone& tone : pixels_) {
            for (const double part : {tone.red, tone.green, tone.blue})
                bytes.push_back(static_cast<unsigned char>(std::lround(std::clamp(part, 0.0, 1.0) * 255.0)));
        }
        const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
        unsigned char* encoded = nullptr;
        unsigned long size = 0;
        std::string jpeg;
        if (tjCompress2(encoder.get(), bytes.data(), width, 0, height, TJPF_RGB, &encoded, &size, TJSAMP_420,
                        85, 0) == 0)
            jpeg.assign(reinterpret_cast<const char*>(encoded), size);
        tjFree(encoded);
        return jpeg;
    }

private:
    /// `inside` is a distance in pixels from the shape's edge, positive within.
    template <typename Inside>
    void paint(Tone tone, double opacity, Inside inside) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double cover = std::clamp(inside(x + 0.5, y + 0.5) + 0.5, 0.0, 1.0) * opacity;
                Tone& pixel = pixels_[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
                if (cover > 0.0) pixel = mix(pixel, tone, cover);
            }
        }
    }

    std::vector<Tone> pixels_;
};

constexpr Tone white{1, 1, 1}, gold{0.97, 0.76, 0.30}, night{0.06, 0.11, 0.22}, teal{0.05, 0.48, 0.50},
    rose{0.90, 0.38, 0.38}, leaf{0.20, 0.66, 0.42}, sand{0.95, 0.88, 0.76}, sky{0.55, 0.76, 0.92};

/// 0 to 1, the same for the same number.
double scatter(int number) {
    const double value = std::sin(number * 12.9898) * 43758.5453;
    return value - std::floor(value);
}

Canvas skylineAtDusk() {
    Canvas canvas({0.20, 0.18, 0.42}, {0.98, 0.62, 0.42});
    canvas.disc(340, 210, 46, {1.0, 0.85, 0.55});
    for (int i = 0; i < 14; ++i) {
        const double tall = 70 + 130 * scatter(i);
        canvas.box(i * 36 - 8, height - tall, 30, tall, mix(night, {0.22, 0.20, 0.42}, scatter(i + 40)));
        for (int floor = 0; floor * 18 < tall - 22; ++floor) {
            const double y = height - tall + 12 + floor * 18;
            if (scatter(i * 31 + int(y)) > 0.4) canvas.box(i * 36 - 2, y, 6, 7, gold, 0.9);
            if (scatter(i * 17 + int(y)) > 0.5) canvas.box(i * 36 + 9, y, 6, 7, gold, 0.7);
        }
    }
    return canvas;
}

Canvas risingChart() {
    Canvas canvas({0.03, 0.20, 0.27}, {0.02, 0.10, 0.16});
    for (int y = 50; y < height; y += 54) canvas.box(0, y, width, 1.2, white, 0.12);
    double before = 250;
    for (int i = 0; i < 16; ++i) {
        const double level = 250 - i * 11 - 38 * (scatter(i + 3) - 0.5);
        const bool isUp = level < before;
        canvas.box(i * 29 + 18, std::min(level, before) - 16, 2, std::abs(level - before) + 32, white, 0.5);
        canvas.box(i * 29 + 12, std::min(level, before), 14, std::abs(level - before) + 4,
                   isUp ? leaf : rose);
        before = level;
    }
    return canvas;
}

Canvas coins() {
    Canvas canvas({0.99, 0.95, 0.86}, {0.93, 0.80, 0.58});
    for (int pile = 0; pile < 4; ++pile) {
        const double x = 90 + pile * 100;
        for (int i = 0; i <= pile * 3 + 1; ++i) {
            canvas.box(x - 38, 276 - i * 18, 76, 14, mix(gold, {0.75, 0.50, 0.12}, i % 2 * 0.3));
            canvas.box(x - 38, 276 - i * 18, 76, 4, {1.0, 0.90, 0.58}, 0.9);
        }
    }
    return canvas;
}

Canvas hillsAtDawn() {
    Canvas canvas(sky, {0.99, 0.90, 0.78});
    canvas.disc(120, 120, 34, {1.0, 0.95, 0.75});
    for (int layer = 0; layer < 4; ++layer) {
        canvas.land(mix({0.52, 0.70, 0.62}, {0.08, 0.30, 0.30}, layer / 3.0), 1.0, [=](double x) {
            return 175.0 + layer * 36 - 26 * std::sin(x / (70.0 + layer * 13) + layer * 1.7);
        });
    }
    return canvas;
}

Canvas waterfront() {
    Canvas canvas({0.70, 0.86, 0.94}, {0.92, 0.96, 0.97});
    canvas.land({0.10, 0.40, 0.56}, 1.0, [](double x) { return 215.0 + 3 * std::sin(x / 14); });
    for (int i = 0; i < 3; ++i) {
        const double x = 60 + i * 150;
        canvas.box(x, 190, 120, 34, mix(night, rose, i * 0.35));
        for (int crate = 0; crate < 4; ++crate)
            canvas.box(x + 6 + crate * 28, 164 - scatter(i * 9 + crate) * 22, 25,
                       26 + scatter(i * 9 + crate) * 22,
                       mix(mix(gold, teal, scatter(crate + i * 4)), rose, scatter(crate * 7 + i) * 0.5));
    }
    return canvas;
}

Canvas microphone() {
    Canvas canvas({0.36, 0.22, 0.55}, {0.17, 0.10, 0.32});
    for (int ring = 5; ring > 0; --ring) canvas.disc(240, 140, ring * 48, white, 0.05);
    canvas.box(205, 110, 70, 80, white);
    canvas.disc(240, 110, 35, white);
    canvas.disc(240, 190, 35, white);
    canvas.box(236, 222, 8, 52, white);
    canvas.box(200, 270, 80, 8, white);
    for (int y = 100; y < 200; y += 16) canvas.box(214, y, 52, 3, {0.36, 0.22, 0.55}, 0.7);
    return canvas;
}

Canvas fields() {
    Canvas canvas({0.98, 0.83, 0.50}, sand);
    canvas.disc(370, 96, 40, {1.0, 0.96, 0.80});
    canvas.land({0.40, 0.58, 0.24}, 1.0, [](double) { return 170.0; });
    for (int i = -8; i < 22; ++i)
        canvas.stroke(240 + (i - 7) * 14, 170, 240 + (i - 7) * 95, height, 7, {0.24, 0.44, 0.18});
    return canvas;
}

Canvas rooms() {
    Canvas canvas(sand, {0.90, 0.80, 0.70});
    canvas.box(60, 60, 150, 110, sky);
    canvas.box(132, 60, 5, 110, white);
    canvas.box(60, 112, 150, 5, white);
    canvas.box(0, 250, width, 70, {0.62, 0.45, 0.34});
    canvas.box(230, 190, 200, 80, teal);
    canvas.box(230, 150, 200, 50, mix(teal, white, 0.2));
    canvas.disc(420, 80, 26, gold);
    canvas.box(417, 100, 6, 160, night, 0.6);
    return canvas;
}

}  // namespace

std::string makePicture(int number) {
    constexpr std::array scenes{skylineAtDusk, risingChart, coins,  hillsAtDawn,
                                waterfront,    microphone,  fields, rooms};
    static_assert(scenes.size() == pictureCount);
    return scenes.at(static_cast<std::size_t>(number) % scenes.size())().jpeg();
}

}  // namespace demo
