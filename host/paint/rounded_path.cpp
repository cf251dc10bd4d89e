#include "host/paint/rounded_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace host {
namespace {

// How far from the corner point a continuous corner begins, in radii.
constexpr double continuousReach = 1.528665;

struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// From `start` around `corner` to `end`, both `reach` away from it, as a quarter of a superellipse.
void addContinuousCorner(cairo_t* canvas, Point corner, Point start, Point end, double reach, double radius) {
    // How far an arc stays from the corner point on the diagonal, along either axis, in radii.
    constexpr double leftByArc = 1.0 - std::numbers::sqrt2 / 2.0;
    const double exponent = std::log(0.5) / std::log(1.0 - leftByArc * radius / reach);
    const Point center{start.x + end.x - corner.x, start.y + end.y - corner.y};
    constexpr int steps = 24;
    for (int step = 1; step <= steps; ++step) {
        const double angle = std::numbers::pi / 2.0 * step / steps;
        const double towardsStart = std::pow(std::cos(angle), 2.0 / exponent);
        const double towardsEnd = std::pow(std::sin(angle), 2.0 / exponent);
        cairo_line_to(canvas,
                      center.x + (start.x - center.x) * towardsStart + (end.x - center.x) * towardsEnd,
                      center.y + (start.y - center.y) * towardsStart + (end.y - center.y) * towardsEnd);
    }
}

void addContinuousRectangle(cairo_t* canvas, const Rect& frame, double radius, double halfSide) {
    const double reach = std::min(continuousReach * radius, halfSide);
    const double left = frame.x;
    const double top = frame.y;
    const double right = frame.x + frame.width;
    const double bottom = frame.y + frame.height;
    cairo_move_to(canvas, left + reach, top);
    cairo_line_to(canvas, right - reach, top);
    addContinuousCorner(canvas, {right, top}, {right - reach, top}, {right, top + reach}, reach, radius);
    cairo_line_to(canvas, right, bottom - reach);
    addContinuousCorner(canvas, {right, bottom}, {right, bottom - reach}, {right - reach, bottom}, reach,
                        radius);
    cairo_line_to(canvas, left + reach, bottom);
    addContinuousCorner(canvas, {left, bottom}, {left + reach, bottom}, {left, bottom - reach}, reach,
                        radius);
    cairo_line_to(canvas, left, top + reach);
    addContinuousCorner(canvas, {left, top}, {left, top + reach}, {left + reach, top}, reach, radius);
    cairo_close_path(canvas);
}

void addCircularRectangle(cairo_t* canvas, const Rect& frame, double radius) {
    constexpr double right = 0.0;
    constexpr double quarter = std::numbers::pi / 2.0;
    const double x = frame.x + radius;
    const double y = frame.y + radius;
    const double endX = frame.x + frame.width - radius;
    const double endY = frame.y + frame.height - radius;
    cairo_new_sub_path(canvas);
    cairo_arc(canvas, endX, y, radius, right - quarter, right);
    cairo_arc(canvas, endX, endY, radius, right, quarter);
    cairo_arc(canvas, x, endY, radius, quarter, 2 * quarter);
    cairo_arc(canvas, x, y, radius, 2 * quarter, 3 * quarter);
    cairo_close_path(canvas);
}

}  // namespace

void addRoundedRectangle(cairo_t* canvas, const Rect& frame, double cornerRadius,
                         platform::RoundedCornerStyle style) {
    const double halfSide = std::min(frame.width, frame.height) / 2.0;
    const double radius = std::min(cornerRadius, halfSide);
    if (!(radius > 0.0)) {
        cairo_rectangle(canvas, frame.x, frame.y, frame.width, frame.height);
    } else if (style == platform::RoundedCornerStyle::continuous) {
        addContinuousRectangle(canvas, frame, radius, halfSide);
    } else {
        addCircularRectangle(canvas, frame, radius);
    }
}

}  // namespace host
