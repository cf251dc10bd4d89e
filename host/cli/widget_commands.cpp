#include "host/cli/commands.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include "host/cli/output.h"
#include "host/gallery/state_sheet.h"
#include "host/home/page_state.h"
#include "host/layout/layout.h"
#include "host/paint/painter.h"
#include "host/paint/picture_formats.h"
#include "host/process/program_options.h"
#include "platform/base/ascii.h"
#include "platform/json/json_document.h"
#include "platform/view/view_json.h"

namespace host {
namespace {

using nlohmann::ordered_json;
using platform::Error;
using platform::ProcessOptions;
using platform::Result;

constexpr std::chrono::seconds waitingLimit{70};
constexpr double longestSide = 4096.0;

tl::unexpected<Error> wrongUsage(std::string message) {
    return platform::failure("UsageError", 2, std::move(message));
}

const char* requestName(EntryRequest request) {
    return std::ranges::find(entryRequests, request, &decltype(entryRequests)::value_type::second)->first;
}

/// An answer, and what it cost.
struct Answered {
    platform::WidgetFamily family{};
    EntryAnswer answer;
    ExtensionStatistics statistics;
    platform::RuntimeOptions options;
};

enum class Wanted { entries, views };

Result<Answered> askExtension(const ProcessOptions& process, const WidgetQuestion& question, Wanted wanted) {
    const auto family = platform::widgetFamily(question.family);
    if (!family) {
        return wrongUsage("unknown family \"" + question.family +
                          "\"; choose systemSmall, systemMedium or systemLarge");
    }
    const auto resolved = TRY(resolvedOptions(process));

    ExtensionProcess extension(extensionOptions(process, resolved));
    EntryAnswer answer = TRY(extension.ask({.kind = question.kind,
                                            .family = *family,
                                            .request = question.request,
                                            .wantsEntries = wanted == Wanted::entries,
                                            .wantsViews = wanted == Wanted::views},
                                           waitingLimit));
    if (answer.entries.empty()) {
        return platform::failure("ExtensionError", 3, question.kind + " answered without an entry");
    }
    return Answered{*family, std::move(answer), extension.statistics(), resolved};
}

/// To a thousandth.
double rounded(double milliseconds) { return std::round(milliseconds * 1000.0) / 1000.0; }

ordered_json statisticsJson(const ExtensionStatistics& statistics) {
    return {{"peakRssKiB", statistics.peakRssKiB},  {"privateKiB", statistics.privateKiB},
            {"userMs", rounded(statistics.userMs)}, {"systemMs", rounded(statistics.systemMs)},
            {"wallMs", rounded(statistics.wallMs)}, {"networkMs", rounded(statistics.networkMs)}};
}

Result<ordered_json> entryJson(const AnsweredEntry& entry) {
    Result<ordered_json> json = platform::parsedJson(entry.json);
    if (json) return json;
    return platform::failure("ExtensionError", 2,
                             "the extension sent an entry that cannot be read: " + json.error().message);
}

ordered_json listingJson(const WidgetListing& widget) {
    ordered_json families = ordered_json::array();
    for (const platform::WidgetFamily family : widget.families) {
        families.push_back(platform::description(family));
    }
    return {{"kind", widget.kind},
            {"displayName", widget.displayName},
            {"description", widget.description},
            {"families", std::move(families)}};
}

/// Fails before anything is asked or drawn when the result could not be written.
Result<PictureFormat> pictureFormat(const DrawingOptions& drawing) {
    if (drawing.scale < 1 || drawing.scale > 3) return wrongUsage("the scale must be 1, 2 or 3");
    return pictureFormatOf(drawing.output.value_or(".json"));
}

struct DrawingTiming {
    double layoutMs = 0.0;
    Painter::Timing painter;
};

Result<DrawingTiming> draw(const platform::View& view, const LayoutOptions& layout,
                           const DrawingOptions& drawing, const PictureFormat& format) {
    const auto painter = TRY(Painter::make(platform::resourcesDirectory()));

    DrawingTiming timing;
    const auto start = std::chrono::steady_clock::now();
    const DisplayList list = makeDisplayList(view, layout, painter->measurer(drawing.scale));
    timing.layoutMs =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();

    const std::string content = TRY(format.content(*painter, list, drawing.scale, timing.painter));
    TRY(drawing.output ? writeFile(*drawing.output, content) : printText(content));
    return timing;
}

Result<platform::Size> parseSize(const std::string& text) {
    const auto side = [](std::string_view part) {
        const double length = platform::parsedNumber<double>(part).value_or(0.0);
        return length > 0.0 && length <= longestSide ? length : 0.0;
    };
    const std::size_t cross = std::min(text.find('x'), text.size());
    const platform::Size size{side(text.substr(0, cross)),
                              side(text.substr(std::min(cross + 1, text.size())))};
    if (size.width > 0.0 && size.height > 0.0) return size;
    return wrongUsage("the size \"" + text +
                      "\" is not WxH, such as 338x158, with sides above 0 and at most 4096 points");
}

struct Tree {
    platform::View view;
    LayoutOptions layout;
};

Result<Tree> readTree(const ProcessOptions& process, const TreeFile& tree) {
    const auto resolved = TRY(resolvedOptions(process));
    const platform::Size size = TRY(parseSize(tree.size));
    const std::string text = TRY(readFile(tree.file));
    const Result<platform::View> view = platform::viewFromJson(text);
    if (!view) {
        return platform::failure("ViewError", view.error().code, tree.file + ": " + view.error().message);
    }
    return Tree{*view, {.size = size, .osVersion = resolved.osVersion, .kind = {}, .family = {}}};
}

}  // namespace

Result<void> printGallery(const ProcessOptions& process) {
    const auto widgets = resolvedOptions(process).and_then([&](const platform::RuntimeOptions& resolved) {
        return ExtensionProcess(extensionOptions(process, resolved)).gallery(waitingLimit);
    });
    if (!widgets) return tl::unexpected(widgets.error());
    ordered_json list = ordered_json::array();
    for (const WidgetListing& widget : *widgets) list.push_back(listingJson(widget));
    return print(list);
}

Result<void> drawGallery(const ProcessOptions& process, const std::string& folder,
                         const std::optional<std::string>& comparedWith) {
    SheetOptions options{.folder = folder, .process = process};
    if (comparedWith) options.comparedWith = *comparedWith;
    if (process.isVerbose) options.log = printLine;
    const SheetOutcome outcome = TRY(drawStateSheet(options));
    auto printed = printText(std::to_string(outcome.pictures) + " pictures, see " +
                             (options.folder / "index.html").string() + "\n");
    if (!printed || outcome.isLikeBefore()) return printed;
    return platform::failure("GalleryError", 2, "pictures: " + outcome.differences());
}

Result<void> printEntries(const ProcessOptions& process, const WidgetQuestion& question) {
    const Answered answered = TRY(askExtension(process, question, Wanted::entries));
    ordered_json entries = ordered_json::array();
    for (const AnsweredEntry& entry : answered.answer.entries) {
        ordered_json json = TRY(entryJson(entry));
        entries.push_back(std::move(json));
    }
    ordered_json output{
        {"kind", question.kind}, {"family", question.family}, {"request", requestName(question.request)}};
    if (question.request == EntryRequest::timeline) {
        output["entries"] = std::move(entries);
        output["policy"] = policyJson(answered.answer.policy.value_or(platform::TimelineReloadPolicy{}));
    } else {
        output["entry"] = std::move(entries.front());
    }
    const Result<void> printed = print(output);
    if (printed && question.isMeasured) {
        printLine(ordered_json{{"extension", statisticsJson(answered.statistics)}}.dump());
    }
    return printed;
}

Result<void> printView(const ProcessOptions& process, const WidgetQuestion& question) {
    const Answered answered = TRY(askExtension(process, question, Wanted::views));
    return print(platform::viewJson(answered.answer.entries.front().view.value_or(platform::View())));
}

Result<void> drawWidget(const ProcessOptions& process, const WidgetQuestion& question,
                        const DrawingOptions& drawing) {
    const PictureFormat format = TRY(pictureFormat(drawing));
    const Answered answered = TRY(askExtension(process, question, Wanted::views));
    const Result<DrawingTiming> timing = draw(answered.answer.entries.front().view.value_or(platform::View()),
                                              {.size = answered.options.screen.widgetSize(answered.family),
                                               .osVersion = answered.options.osVersion,
                                               .kind = question.kind,
                                               .family = question.family,
                                               .isRedacted = question.request == EntryRequest::placeholder},
                                              drawing, format);
    if (!timing) return tl::unexpected(timing.error());
    if (question.isMeasured) {
        printLine(ordered_json{{"extension", statisticsJson(answered.statistics)},
                               {"host",
                                {{"layoutMs", rounded(timing->layoutMs)},
                                 {"paintMs", rounded(timing->painter.paintMs)},
                                 {"encodeMs", rounded(timing->painter.encodeMs)}}}}
                      .dump());
    }
    return {};
}

Result<void> drawTree(const ProcessOptions& process, const TreeFile& file, const DrawingOptions& drawing) {
    const PictureFormat format = TRY(pictureFormat(drawing));
    const Tree tree = TRY(readTree(process, file));
    return draw(tree.view, tree.layout, drawing, format).map([](const DrawingTiming&) {});
}

Result<void> layoutTree(const ProcessOptions& process, const TreeFile& file, int scale) {
    if (scale < 1 || scale > 3) return wrongUsage("the scale must be 1, 2 or 3");
    const Tree tree = TRY(readTree(process, file));
    const auto painter = TRY(Painter::make(platform::resourcesDirectory()));
    return print(laidOutJson(tree.view, tree.layout, painter->measurer(scale)));
}

}  // namespace host
