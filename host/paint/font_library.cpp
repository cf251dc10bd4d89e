#include "host/paint/font_library.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

namespace host {
namespace {

using platform::failure;
using platform::Result;
using FontConfiguration = Owned<FcConfig, FcConfigDestroy>;
using FontMap = Owned<PangoFontMap, g_object_unref>;

// Inter in three weights, then fonts for characters that Inter lacks.
constexpr std::array fontFiles{
    "/usr/share/fonts/opentype/inter/Inter-Regular.otf",
    "/usr/share/fonts/opentype/inter/Inter-Medium.otf",
    "/usr/share/fonts/opentype/inter/Inter-Bold.otf",
    "/usr/share/fonts/truetype/lohit-devanagari/Lohit-Devanagari.ttf",
    "/usr/share/fonts/truetype/noto/NotoColorEmoji.ttf",
};

constexpr std::array readByFontLibraries{"FREETYPE_PROPERTIES", "HB_SHAPER_LIST", "HB_OPTIONS",
                                         "FONTCONFIG_SYSROOT",  "FC_DEBUG",       "FC_LANG"};

// The emoji are bitmaps of one size. Without this they are drawn at that size, whatever size is wanted.
constexpr const char* configuration = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <match target="font">
    <test name="outline" compare="eq"><bool>false</bool></test>
    <edit name="bitmapscale" mode="assign">
      <divide><name target="pattern">pixelsize</name><name target="font">pixelsize</name></divide>
    </edit>
  </match>
  <match target="font">
    <test name="outline" compare="eq"><bool>false</bool></test>
    <edit name="matrix" mode="assign">
      <times>
        <name>matrix</name>
        <matrix>
          <name>bitmapscale</name> <double>0</double>
          <double>0</double> <name>bitmapscale</name>
        </matrix>
      </times>
    </edit>
    <edit name="size" mode="assign">
      <divide><name>size</name><name>bitmapscale</name></divide>
    </edit>
  </match>
</fontconfig>
)";

Result<FontConfiguration> makeConfiguration() {
    FontConfiguration config(FcConfigCreate());
    const auto* text = reinterpret_cast<const FcChar8*>(configuration);
    if (!config || !FcConfigParseAndLoadFromMemory(config.get(), text, FcTrue)) {
        return failure("PaintError", 1, "cannot read the font configuration");
    }
    for (const char* file : fontFiles) {
        if (!FcConfigAppFontAddFile(config.get(), reinterpret_cast<const FcChar8*>(file))) {
            return failure("PaintError", 1, std::string("cannot find the font ") + file);
        }
    }
    return config;
}

void setFontOptions(PangoContext* context) {
    const Owned<cairo_font_options_t, cairo_font_options_destroy> options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options.get());
}

/// The font that is found under our family's name.
std::string resolvedFamily(PangoContext* context) {
    const Owned<PangoFontDescription, pango_font_description_free> wanted(pango_font_description_new());
    pango_font_description_set_family_static(wanted.get(), textFamily);
    pango_font_description_set_absolute_size(wanted.get(), 12 * PANGO_SCALE);
    const Owned<PangoFont, g_object_unref> font(pango_context_load_font(context, wanted.get()));
    if (!font) return {};
    const Owned<PangoFontDescription, pango_font_description_free> found(pango_font_describe(font.get()));
    return pango_font_description_get_family(found.get());
}

// Tracking of the platform's text sizes, in thousandths of an em, from 8 points up in whole points.
constexpr double firstTrackedSize = 8.0;
constexpr std::array<double, 10> trackingOfSizes{26, 19, 12, 6, 0, -6, -11, -16, -20, -26};

// Inter Bold runs narrower than the platform's bold.
constexpr double boldTracking = 20.0;

constexpr std::string_view compactMedium = "SFCompactDisplay-Medium";
constexpr std::string_view compactRegular = "SFCompactDisplay-Regular";

bool isCompact(const platform::Font& font) {
    return font.name == compactMedium || font.name == compactRegular;
}

double tableTracking(double size) {
    const double position =
        std::clamp(size - firstTrackedSize, 0.0, static_cast<double>(trackingOfSizes.size() - 1));
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, trackingOfSizes.size() - 1);
    return std::lerp(trackingOfSizes[below], trackingOfSizes[above], position - static_cast<double>(below));
}

}  // namespace

Result<TextContext> makeTextContext() {
    for (const char* variable : readByFontLibraries) unsetenv(variable);
    FontConfiguration config = TRY(makeConfiguration());
    // Otherwise the library reads the machine's fonts, which are not needed, and prints warnings about them.
    FcConfigSetCurrent(config.get());

    const FontMap map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), config.get());
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map.get()), 72.0);

    TextContext context(pango_font_map_create_context(map.get()));
    pango_context_set_language(context.get(), pango_language_from_string("en"));
    pango_context_set_base_dir(context.get(), PANGO_DIRECTION_LTR);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    setFontOptions(context.get());

    if (const std::string family = resolvedFamily(context.get()); family != textFamily) {
        return failure("PaintError", 1, "text would be drawn in \"" + family + "\" instead of " + textFamily);
    }
    return context;
}

platform::FontWeight drawnWeight(const platform::Font& font) {
    if (font.name == "system") return font.weight;
    return font.name == compactMedium ? platform::FontWeight::medium : platform::FontWeight::regular;
}

double drawnSize(const platform::Font& font) {
    return std::isfinite(font.size) ? std::clamp(font.size, 1.0, 400.0) : platform::Font{}.size;
}

FontMetrics systemMetrics(double size) {
    constexpr double unitsPerEm = 2048.0;
    return {.ascent = size * 1950.0 / unitsPerEm,
            .descent = size * 494.0 / unitsPerEm,
            .capHeight = size * 1443.0 / unitsPerEm};
}

double tracking(const platform::Font& font) {
    if (isCompact(font)) return 0.0;
    const double size = drawnSize(font);
    const double extra = drawnWeight(font) == platform::FontWeight::bold ? boldTracking : 0.0;
    return (tableTracking(size) + extra) / 1000.0 * size;
}

}  // namespace host
