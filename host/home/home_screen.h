#pragma once

// The home screen behind its page: what is placed, what the phone app's controls do, and what the page
// is told of all that.

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>
#include "companion/operations.h"
#include "host/home/placements.h"
#include "host/paint/widget_renderer.h"
#include "host/process/extension_process.h"
#include "host/schedule/ledger.h"
#include "host/schedule/widget_schedule.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace host {

struct HomeScreenOptions {
    /// Of the phone app; the widget center is ours and is not looked at.
    platform::RuntimeOptions runtime;
    std::filesystem::path extensionProgram;
    std::vector<std::string> extensionArguments;
    /// The information dictionary that the extension is given: written there at the start, and anew when
    /// the environment changes.
    std::filesystem::path infoPlist;
    std::filesystem::path resources;
    /// Of the demo service; absent when the extension calls another one.
    std::optional<std::string> demoOrigin;
    /// Takes every line of the log that the inspector shows; any thread. May be empty.
    std::function<void(std::string_view line)> log = {};
};

/// Any thread. Texts that the page is told never hold a token, a user id or a portfolio address.
class HomeScreen {
public:
    /// Places the widgets of last time, or a first choice. Fails when nothing can be drawn.
    static platform::Result<std::unique_ptr<HomeScreen>> start(HomeScreenOptions options);
    ~HomeScreen();
    HomeScreen(const HomeScreen&) = delete;
    HomeScreen& operator=(const HomeScreen&) = delete;

    /// Asks the extension nothing any more: whoever waits for it is answered soon. For the end.
    void stop();

    /// Called whenever the state may be another, perhaps on several threads at once. The former listener is
    /// not called any more once this returns; not to be called by a listener.
    void whenChanged(std::function<void()> listener);

    /// Everything that the page shows, as JSON text.
    std::string stateText();
    /// The ledger's entries after that number, as JSON text.
    std::string ledgerText(std::uint64_t after) const;
    /// What the workbench tells of one widget, as JSON text; nothing when there is no such widget.
    std::optional<std::string> inspectionText(int id);
    /// PNG of a widget as it stands.
    platform::Result<std::string> picture(int id, int scale);
    /// PNG of a widget of the gallery, by its snapshot or its placeholder.
    platform::Result<std::string> preview(const std::string& kind, platform::WidgetFamily family,
                                          EntryRequest request, int scale);
    /// Kinds, users and assets to choose from, as JSON text; they stay the same.
    std::string choicesText() const;
    /// What each kind would show through a day by the phone's rules, as JSON text, with pictures by their
    /// numbers. Takes seconds, at most half a minute; one at a time.
    std::string dayText();
    /// PNG of that number of the latest day.
    std::optional<std::string> dayPicture(std::size_t number) const;

    /// Does what the page asks: {"action": …} and what that needs. Errors are for people to read.
    platform::Result<void> act(const nlohmann::json& request);
    /// Answers another process's question.
    std::string answerProcess(std::string_view question);

private:
    class Center;

    explicit HomeScreen(HomeScreenOptions options, std::unique_ptr<Painter> painter);
    void changed();
    void noteLog(std::string line);
    void placeSaved();
    platform::Result<void> save();
    platform::Result<void> writeInformation(const std::string& environment);
    platform::Result<std::string> askDemo(const std::string& path, std::optional<std::string> content = {});
    void loadDemoLists();
    /// Takes another user's money off the screen as soon as the store tells of another user.
    void noticeUser();

    platform::Result<void> place(const nlohmann::json& request);
    platform::Result<void> remove(const nlohmann::json& request);
    platform::Result<void> move(const nlohmann::json& request);
    platform::Result<void> reload(const nlohmann::json& request);
    platform::Result<void> setTheme(const nlohmann::json& request);
    platform::Result<void> setUser(const nlohmann::json& request);
    platform::Result<void> setAssets(const nlohmann::json& request);
    platform::Result<void> setEnvironment(const nlohmann::json& request);
    platform::Result<void> setNews(const nlohmann::json& request);
    platform::Result<void> setMode(const nlohmann::json& request);
    platform::Result<void> setClock(const nlohmann::json& request);
    platform::Result<void> setFault(const nlohmann::json& request);
    platform::Result<void> kill(const nlohmann::json& request);

    nlohmann::ordered_json widgetsJson();
    std::string displayName(const std::string& kind) const;
    nlohmann::ordered_json pictureJson(int id, const std::shared_ptr<const ShownPicture>& picture);
    nlohmann::ordered_json phoneAppJson();

    HomeScreenOptions options_;
    std::string environment_ = "prod";
    std::string fault_ = "none";
    std::vector<WidgetListing> gallery_;
    std::string users_ = "[]";
    std::string catalogue_ = "[]";

    /// Shared by those who call the listener, and had alone by who changes it.
    std::shared_mutex listenerMutex_;
    std::function<void()> listener_;

    mutable std::mutex mutex_;
    std::deque<std::string> log_;
    std::vector<Placement> placements_;
    int lastId_ = 0;
    std::optional<std::string> knownUser_;
    std::vector<std::string> dayPictures_;
    std::mutex dayMutex_;

    /// What the page is told of a picture, which is laid out for it: the state is told far more often than
    /// there is a new one.
    struct CachedPicture {
        std::shared_ptr<const ShownPicture> picture;
        std::shared_ptr<const nlohmann::ordered_json> json;
    };
    std::mutex cachedPicturesMutex_;
    std::map<int, CachedPicture> cachedPictures_;

    std::unique_ptr<platform::Runtime> runtime_;
    std::unique_ptr<companion::PhoneApp> phoneApp_;
    platform::Clock clock_;
    Ledger ledger_;
    WidgetRenderer renderer_;
    std::unique_ptr<ExtensionProcess> extension_;
    /// Asked for days only, as its clock travels.
    std::unique_ptr<ExtensionProcess> dayExtension_;
    std::unique_ptr<WidgetSchedule> schedule_;
};

}  // namespace host
