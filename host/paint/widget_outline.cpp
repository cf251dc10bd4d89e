#include "host/paint/widget_outline.h"

#include <sstream>
#include "host/paint/owned.h"
#include "host/paint/rounded_path.h"

namespace host {

std::string widgetOutline(const platform::Size& size) {
    constexpr double cornerRadius = 22.0;
    const Owned<cairo_surface_t, cairo_surface_destroy> surface(
        cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    const Owned<cairo_t, cairo_destroy> canvas(cairo_create(surface.get()));
    addRoundedRectangle(canvas.get(), {0.0, 0.0, size.width, size.height}, cornerRadius,
                        platform::RoundedCornerStyle::continuous);
    const Owned<cairo_path_t, cairo_path_destroy> path(cairo_copy_path_flat(canvas.get()));

    std::ostringstream text;
    for (int index = 0; index < path->num_data; index += path->data[index].header.length) {
        const cairo_path_data_t* step = &path->data[index];
        switch (step->header.type) {
            case CAIRO_PATH_MOVE_TO: text << 'M' << step[1].point.x << ' ' << step[1].point.y; break;
            case CAIRO_PATH_LINE_TO: text << 'L' << step[1].point.x << ' ' << step[1].point.y; break;
            case CAIRO_PATH_CURVE_TO:
                break;  // a flat path has none
            // A closed path is followed by a move to its start, which would begin a path of its own.
            case CAIRO_PATH_CLOSE_PATH: return text.str() + "Z";
        }
    }
    return text.str();
}

}  // namespace host
