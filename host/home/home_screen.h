#pragma once

// The home screen behind its page: the placed widgets, the extension that draws them, the phone app that they
// belong to, and the clock that they see.

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>
#include "companion/demo_service.h"
#include "companion/operations.h"
#include "host/home/placements.h"
#include "host/paint/widget_renderer.h"
#include "host/process/extension_process.h"
#include "host/schedule/day_strip.h"
#include "host/schedule/ledger.h"
#include "host/schedule/widget_schedule.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace host {

/// An error of the home screen, for people to read.
inline tl::unexpected<platform::Error> refusal(std::string message) {
    return platform::failure("HomeScreenError", 1, std::move(message));
}

struct HomeScreenOptions {
    /// Of the phone app. Its widget center is ignored: the home screen is its own.
    platform::RuntimeOptions runtime;
    /// Its log goes to the inspector.
    ExtensionOptions extension;
    /// The information dictionary that the extension is given: written at the start, and again when the
    /// environment changes.
    std::filesystem::path infoPlist;
    std::filesystem::path resources;
    /// Of the demo service; absent when the extension calls another service.
    std::optional<std::string> demoOrigin;
    /// Receives every line of the log that the inspector shows; any thread. May be empty.
    std::function<void(std::string_view line)> log = {};
};

/// Any thread. Errors (domain "HomeScreenError" and those of the parts) are for people to read.
class HomeScreen {
public:
    /// Places the widgets of last time, or a first choice. Fails when nothing can be drawn.
    static platform::Result<std::unique_ptr<HomeScreen>> start(HomeScreenOptions options);
    ~HomeScreen();

    /// Asks the extension nothing more, so that everyone who waits for an answer gets one soon. Call it
    /// before the end.
    void stop();

    /// `listener` is called whenever the state may have changed, perhaps on several threads at once. Once
    /// this returns, the listener before it is no longer called. A listener must not call this.
    void whenChanged(std::function<void()> listener);
    /// Tells the listener that the state may have changed.
    void changed();

    // What it shows.

    const std::vector<WidgetListing>& gallery() const { return gallery_; }
    std::vector<Placement> placements() const { return placements_.all(); }
    platform::Instant now() const { return clock_.now(); }
    /// The placed widgets, the rules by which they are reloaded, and the setting of their clock.
    WidgetSchedule& schedule() { return *schedule_; }
    const Ledger& ledger() const { return ledger_; }
    const ExtensionProcess& extension() const { return *extension_; }
    WidgetRenderer& renderer() { return renderer_; }
    std::vector<std::string> log() const;
    std::string environment() const;

    /// PNG of a widget as it is now.
    platform::Result<std::string> picture(int id, int scale);
    /// PNG of a widget of the gallery: its snapshot or its placeholder.
    platform::Result<std::string> preview(const std::string& kind, platform::WidgetFamily family,
                                          EntryRequest request, int scale);
    /// What each kind would show through the present day by the phone's rules. Takes seconds, at most half a
    /// minute; one at a time.
    std::vector<DayRow> day();

    // What a person does at the home screen.

    platform::Result<void> place(const std::string& kind, platform::WidgetFamily family);
    platform::Result<void> remove(int id);
    platform::Result<void> move(int id, int index) { return placements_.move(id, index); }
    /// "prod" or "staging".
    platform::Result<void> setEnvironment(const std::string& environment);
    platform::Result<void> killExtension();

    // The phone app, and the demo service with the users and assets that it offers (none without one).

    const platform::Runtime& runtime() const { return *runtime_; }
    companion::PhoneApp& phoneApp() { return *phoneApp_; }
    const std::vector<companion::DemoUser>& users() const { return users_; }
    const std::vector<companion::DemoAsset>& assets() const { return assets_; }
    bool hasDemo() const { return demo_.has_value(); }
    std::string fault() const;
    platform::Result<void> setFault(const std::string& fault);

    /// The phone app has widgets of that kind reloaded, or all.
    void reloadForApp(std::optional<std::string_view> kind);

private:
    class Center;

    HomeScreen(HomeScreenOptions options, std::unique_ptr<Painter> painter);
    void noteLog(std::string line);
    void placeSaved();
    platform::Result<void> writeInformation(const std::string& environment);
    /// Hides another user's money as soon as the store names another user.
    void noticeUser();

    HomeScreenOptions options_;
    std::vector<WidgetListing> gallery_;
    std::vector<companion::DemoUser> users_;
    std::vector<companion::DemoAsset> assets_;

    /// Held shared while the listener runs, and exclusively while it is replaced.
    std::shared_mutex listenerMutex_;
    std::function<void()> listener_;

    mutable std::mutex mutex_;
    std::string environment_ = "prod";
    std::string fault_ = "none";
    std::deque<std::string> log_;
    std::optional<std::string> knownUser_;

    Placements placements_;
    std::unique_ptr<platform::Runtime> runtime_;
    std::unique_ptr<companion::PhoneApp> phoneApp_;
    std::optional<companion::DemoService> demo_;
    platform::Clock clock_;
    Ledger ledger_;
    WidgetRenderer renderer_;
    std::unique_ptr<ExtensionProcess> extension_;
    /// For `day` only, since its clock travels.
    std::mutex dayMutex_;
    std::unique_ptr<ExtensionProcess> dayExtension_;
    std::unique_ptr<WidgetSchedule> schedule_;
};

}  // namespace host
