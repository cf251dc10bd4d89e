#pragma once

// Draws display lists, and measures what they are made of.

#include <filesystem>
#include <memory>
#include <string>
#include "host/layout/display_list.h"
#include "host/layout/measurer.h"
#include "platform/base/result.h"

namespace host {

/// Keeps fonts, assets and surfaces between pictures. One thread at a time. On one machine, the same list
/// always gives the same bytes, whatever the environment variables say.
class Painter {
public:
    /// `resources` holds `assets/*.svg`. Fails (domain "PaintError") when a font or the assets are missing.
    static platform::Result<std::unique_ptr<Painter>> make(const std::filesystem::path& resources);
    ~Painter();

    /// Lives as long as the painter. `scale` is 1, 2 or 3 pixels per point.
    const Measurer& measurer(int scale);

    struct Timing {
        double paintMs = 0.0;
        double encodeMs = 0.0;
    };

    /// PNG of size × scale pixels, square corners. `timing` may be null.
    platform::Result<std::string> png(const DisplayList& list, int scale, Timing* timing = nullptr);
    /// SVG with text as outlines.
    platform::Result<std::string> svg(const DisplayList& list);

private:
    struct Implementation;
    explicit Painter(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace host
