#pragma once

// What the page is told, as JSON texts. None of them ever holds a token, a user id or a portfolio address.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>
#include "host/home/home_screen.h"
#include "host/schedule/day_strip.h"

namespace host {

/// What the page needs to know of a picture, so that it can be tapped and read out.
nlohmann::ordered_json pictureJson(const ShownPicture& picture, const DisplayList& list);

/// {"after": DATE} or "atEnd"; null when there is none.
nlohmann::ordered_json policyJson(const std::optional<platform::TimelineReloadPolicy>& policy);

/// Describes the home screen to the page. Any thread.
class PageState {
public:
    /// `home` must outlive it.
    explicit PageState(HomeScreen& home) : home_(home) {}

    /// Everything that the page shows.
    std::string state();
    /// The ledger's entries after that number.
    std::string ledger(std::uint64_t after) const;
    /// What the workbench shows of one widget; nothing when there is no such widget.
    std::optional<std::string> inspection(int id) const;
    /// Kinds, users and assets to choose from; they stay the same.
    std::string choices() const;
    /// The present day, with pictures by their numbers. Takes seconds: see HomeScreen::day.
    std::string day();
    /// PNG of that number of the latest day.
    std::optional<std::string> dayPicture(std::size_t number) const;

private:
    /// The state is asked for far more often than there is a new picture, which has to be laid out for it.
    struct CachedPicture {
        std::shared_ptr<const ShownPicture> picture;
        std::shared_ptr<const nlohmann::ordered_json> json;
    };

    nlohmann::ordered_json widgetsJson();
    nlohmann::ordered_json widgetJson(const WidgetState& state, const GridPlace& place, ReloadMode mode);
    nlohmann::ordered_json cachedPictureJson(int id, const std::shared_ptr<const ShownPicture>& picture);
    nlohmann::ordered_json phoneAppJson() const;
    std::string displayName(const std::string& kind) const;

    HomeScreen& home_;
    mutable std::mutex mutex_;
    std::map<int, CachedPicture> pictures_;
    std::vector<std::string> dayPictures_;
};

}  // namespace host
