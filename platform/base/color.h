#pragma once

// A colour with its components, in device sRGB.

#include <array>
#include <cstddef>
#include <span>

namespace platform {

/// A colour made from red, green and blue has four components, one made from white has two, and one that is
/// not a plain colour (such as a pattern) has none. Its hexadecimal text depends on that.
/// Components are fractions of 1.
class Color {
public:
    /// Without components; drawn as transparent.
    constexpr Color() = default;

    static constexpr Color rgb(double red, double green, double blue, double alpha = 1.0) {
        return Color({red, green, blue, alpha}, 4);
    }
    static constexpr Color white(double white, double alpha = 1.0) {
        return Color({white, alpha, 0.0, 0.0}, 2);
    }
    /// The platform's standard gray: half white, opaque.
    static constexpr Color gray() { return white(0.5); }

    constexpr std::span<const double> components() const { return {values_.data(), count_}; }

    constexpr double red() const { return count_ == 0 ? 1.0 : values_[0]; }
    constexpr double green() const { return count_ == 0 ? 1.0 : values_[count_ == 4 ? 1 : 0]; }
    constexpr double blue() const { return count_ == 0 ? 1.0 : values_[count_ == 4 ? 2 : 0]; }
    constexpr double alpha() const { return count_ == 0 ? 0.0 : values_[count_ - 1]; }

    constexpr Color withAlpha(double alpha) const {
        Color changed = *this;
        if (changed.count_ != 0) changed.values_[changed.count_ - 1] = alpha;
        return changed;
    }

    bool operator==(const Color&) const = default;

private:
    constexpr Color(std::array<double, 4> values, std::size_t count) : values_(values), count_(count) {}

    std::array<double, 4> values_{};
    std::size_t count_ = 0;
};

}  // namespace platform
