#include "extension/widgets/news/views/news_widget_entry_view.h"

#include <algorithm>
#include <utility>
#include <vector>
#include "extension/widgets/news/views/news_cell_view.h"
#include "platform/base/fatal.h"
#include "platform/url/url.h"

namespace extension {

using platform::ColorFill;
using platform::ContentMode;
using platform::Divider;
using platform::Font;
using platform::HStack;
using platform::Image;
using platform::Spacer;
using platform::Text;
using platform::View;
using platform::VStack;

namespace {

constexpr std::size_t storiesWhenCompact = 2;

View requiredLink(std::string address, const View& label) {
    if (!platform::URL::parse(address)) platform::fatalError("the link of a view is no address: " + address);
    return platform::Link(std::move(address), label);
}

/// The words and their arrow.
View moreNewsLabel(const NewsTimelineEntry& entry) {
    return HStack(
        {.spacing = 4},
        Text("View More News", Font::custom("SFCompactDisplay-Medium", 12)).foregroundColor(entry.textColor),
        // Two points lower, so that it stands on the words' middle line.
        Image(entry.arrowIcon, {.isResizable = true})
            .frame({.width = 4.0, .height = 8.0})
            .padding({.top = 2}));
}

/// One point high and wholly filled: the divider's own line, one pixel, would show through.
View headerLine(const platform::Color& color) {
    return Divider().opacity(0.0).frame({.height = 1.0}).overlay(ColorFill(color).opacity(0.5));
}

}  // namespace

View NewsWidgetEntryView::body(const platform::EnvironmentValues& environment) const {
    const bool isCompact = environment.widgetFamily != platform::WidgetFamily::systemLarge;
    return VStack({}, NewsHeaderView{.entry = entry, .moreNewsLink = moreNewsLink, .isCompact = isCompact},
                  NewsWidgetView{.entry = entry, .isCompact = isCompact})
        .padding({.top = 20, .leading = 25, .bottom = 20, .trailing = 25});
}

View NewsHeaderView::body() const {
    const View logo = Image("AppLogo", {.isResizable = true})
                          .aspectRatio(std::nullopt, ContentMode::fit)
                          .frame({.height = isCompact ? 24.0 : 30.0});
    return VStack({.spacing = 0},
                  requiredLink(moreNewsLink, HStack({.spacing = 8}, logo, Spacer(), moreNewsLabel(entry))),
                  headerLine(entry.textColor))
        .padding({.top = 5, .bottom = 1.5});
}

View NewsWidgetView::body() const {
    const std::size_t count =
        isCompact ? std::min(storiesWhenCompact, entry.newsUIVM.size()) : entry.newsUIVM.size();
    std::vector<View> links;
    for (std::size_t i = 0; i < count; ++i) {
        const NewsUIVM& story = entry.newsUIVM[i];
        links.push_back(requiredLink(
            story.deeplink,
            NewsCellView{.story = story, .entry = entry, .isCompact = isCompact, .isLast = i + 1 == count}));
    }
    return platform::Group(std::move(links));
}

}  // namespace extension
