#include "host/gallery/state_sheet.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>
#include "companion/operations.h"
#include "host/gallery/sheet_picture.h"
#include "host/gallery/sheet_states.h"
#include "host/layout/layout.h"
#include "host/paint/painter.h"
#include "host/paint/widget_outline.h"
#include "host/process/demo_child.h"
#include "host/process/extension_process.h"
#include "host/process/program_options.h"
#include "platform/base/files.h"
#include "platform/settings/property_list.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using platform::ProcessOptions;
using platform::PropertyList;
using platform::Result;
using platform::Runtime;
using platform::RuntimeOptions;
using platform::WidgetFamily;

constexpr std::chrono::seconds waitingLimit{30};
constexpr std::array themes{false, true};

tl::unexpected<platform::Error> failure(std::string message) {
    return platform::failure("GalleryError", 1, std::move(message));
}

/// A folder that is removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::error_code ignored;
        std::string name = fs::temp_directory_path(ignored) / "brightledger-gallery-XXXXXX";
        if (::mkdtemp(name.data()) != nullptr) path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path_.empty()) fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Empty when none could be made.
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

Result<void> write(const fs::path& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) return failure("cannot write " + path.string());
    return {};
}

std::string contentOf(const fs::path& path) { return platform::readFile(path, 64U << 20).value_or(""); }

using PicturesByName = std::map<std::string, std::string>;

/// Reads everything before anything is written, since both galleries may be in one folder.
Result<PicturesByName> earlierPictures(const fs::path& folder) {
    PicturesByName pictures;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (pictureNamed(name)) pictures.emplace(name, contentOf(entry.path()));
    }
    if (error) return failure("cannot read " + folder.string() + ": " + error.message());
    if (pictures.empty()) return failure(folder.string() + " holds no gallery");
    return pictures;
}

/// The same moment, place and device on every machine, unless somebody asks for others.
ProcessOptions withDefaults(ProcessOptions options) {
    const auto choose = [&](std::optional<std::string> ProcessOptions::*option, std::string_view otherwise) {
        options.*option = platform::chosenOption(options, option).value_or(std::string(otherwise));
    };
    choose(&ProcessOptions::now, "2026-11-23T12:00:00+05:30");
    choose(&ProcessOptions::screen, platform::Screen().name);
    choose(&ProcessOptions::locale, "en_IN");
    choose(&ProcessOptions::timeZone, "Asia/Kolkata");
    return options;
}

/// The extension in one state, with a store and an information dictionary of its own.
class SheetRun {
public:
    static Result<std::unique_ptr<SheetRun>> make(const SheetOptions& options, ProcessOptions process,
                                                  const SheetState& state, const fs::path& folder,
                                                  const std::string& origin) {
        process.dataDirectory = (folder / state.name).string();
        process.infoPlist = (folder / (state.name + ".plist")).string();
        if (state.osVersion) process.osVersion = std::to_string(*state.osVersion);
        const std::string service = origin + "/scene/" + state.scene;
        TRY(writeInformation(*process.infoPlist, service));
        const RuntimeOptions resolved = TRY(platform::runtimeOptions(process, *process.infoPlist));
        auto run = std::unique_ptr<SheetRun>(new SheetRun(options, process, resolved));
        const Result<void> chosen = run->choose(state, service);
        return chosen ? Result<std::unique_ptr<SheetRun>>(std::move(run)) : tl::unexpected(chosen.error());
    }

    Result<void> setTheme(bool isDark) {
        return phoneApp_.call("ThemeManager", "setCurrentSelectedThemeTypeWithType:", {isDark ? "0" : "1"})
            .map([](const auto&) {});
    }

    ExtensionProcess& extension() { return extension_; }
    const platform::Runtime& runtime() const { return runtime_; }

private:
    SheetRun(const SheetOptions& options, const ProcessOptions& process, const RuntimeOptions& resolved)
        : runtime_(resolved),
          phoneApp_(runtime_),
          extension_({.program = options.programs / "brightledger-extension",
                      .arguments = extensionOptions(process, resolved).arguments,
                      .log = options.log}) {}

    static Result<void> writeInformation(const fs::path& file, const std::string& service) {
        PropertyList::Dictionary entries{{"ENVIRONMENT", "prod"}, {"AD_TEST_MODE", "FALSE"}};
        for (const char* name : {"ProductionAPIHost", "ProductionWebHost"}) entries[name] = service;
        return platform::xmlPropertyList(entries).and_then(
            [&](const std::string& text) { return write(file, text); });
    }

    Result<void> choose(const SheetState& state, const std::string& service) {
        // The extension fills an empty store when it is first asked, and would replace what was chosen
        // before.
        const auto first =
            extension_.ask({.kind = "PerchWidget", .request = EntryRequest::placeholder}, waitingLimit);
        if (!first) return tl::unexpected(first.error());
        std::optional<companion::Session> session;
        if (state.isSignedIn) session = {"gallery", "1", service + "/portfolioapi/summary?format=json"};
        return companion::setSession(runtime_, session).and_then([&] {
            return companion::setChosenAssets(runtime_, state.assets);
        });
    }

    const Runtime runtime_;
    companion::PhoneApp phoneApp_;
    ExtensionProcess extension_;
};

/// Draws the sheet, state by state.
class SheetDrawing {
public:
    SheetDrawing(const SheetOptions& options, std::unique_ptr<Painter> painter,
                 std::optional<PicturesByName> earlier)
        : options_(options), painter_(std::move(painter)), earlier_(std::move(earlier)) {}

    Result<void> draw(const fs::path& folder, const std::string& origin) {
        const ProcessOptions process = withDefaults(options_.process);
        // A name that is not known is refused when the first state is set up.
        screen_ = platform::screenNamed(*process.screen).value_or(platform::Screen());
        subtitle_ = *process.now + ", " + *process.locale + ", " + *process.timeZone;
        // The next state's questions are answered while this one's pictures are drawn.
        const auto asked = [&](const SheetState& state) {
            return std::async(std::launch::async, [&] {
                auto run = SheetRun::make(options_, process, state, folder, origin);
                return run ? ask(**run, state) : tl::unexpected(std::move(run.error()));
            });
        };
        auto next = asked(states_.front());
        for (auto state = states_.begin(); state != states_.end(); ++state) {
            const std::vector<SheetShot> shots = TRY(next.get());
            if (state + 1 != states_.end()) next = asked(*(state + 1));
            for (const SheetShot& shot : shots) {
                TRY(draw(shot));
            }
        }
        return {};
    }

    Result<SheetOutcome> finish() {
        return keepEarlierPictures().and_then([&] { return writePage(); }).map([&] { return outcome_; });
    }

private:
    /// What the extension answered for one picture.
    struct SheetShot {
        SheetPicture picture;
        EntryAnswer answer;
        LayoutOptions layout;
    };

    Result<std::vector<SheetShot>> ask(SheetRun& run, const SheetState& state) {
        if (widgets_.empty()) {
            auto widgets = TRY(run.extension().gallery(waitingLimit));
            widgets_ = std::move(widgets);
        }
        std::vector<SheetShot> shots;
        for (const bool isDark : themes) {
            TRY(run.setTheme(isDark));
            for (const WidgetListing& widget : widgets_) {
                if (std::ranges::find(state.kinds, widget.kind) == state.kinds.end()) continue;
                for (const WidgetFamily family : widget.families) {
                    auto shot = TRY(ask(run, state.request, {widget.kind, family, isDark, state.name}));
                    shot.layout.contentMarginsDisabled = widget.contentMarginsDisabled;
                    shots.push_back(std::move(shot));
                }
            }
        }
        return shots;
    }

    Result<SheetShot> ask(SheetRun& run, EntryRequest request, SheetPicture picture) const {
        auto answer = TRY(run.extension().ask({.kind = picture.kind,
                                               .family = picture.family,
                                               .request = request,
                                               .wantsEntries = options_.drawn != nullptr,
                                               .wantsViews = true},
                                              waitingLimit));
        if (answer.entries.empty()) return failure(picture.kind + " answered without an entry");
        LayoutOptions layout{.size = run.runtime().screen().widgetSize(picture.family),
                             .osVersion = run.runtime().osVersion(),
                             .kind = picture.kind,
                             .family = std::string(description(picture.family)),
                             .isRedacted = request == EntryRequest::placeholder};
        return SheetShot{std::move(picture), std::move(answer), std::move(layout)};
    }

    Result<void> draw(const SheetShot& shot) {
        const platform::View view = shot.answer.entries.front().view.value_or(platform::View());
        const DisplayList list = makeDisplayList(view, shot.layout, painter_->measurer(options_.scale));
        if (options_.drawn) options_.drawn(shot.picture, shot.answer, list);
        return painter_->png(list, options_.scale).and_then([&](const std::string& png) {
            note(shot.picture.fileName(), png);
            return write(options_.folder / shot.picture.fileName(), png);
        });
    }

    void note(const std::string& name, std::string_view png) {
        ++outcome_.pictures;
        std::string_view& news = drawn_[name];
        if (!earlier_) return;
        const auto before = earlier_->find(name);
        if (before == earlier_->end()) {
            news = "new";
            ++outcome_.added;
        } else if (!looksLike(png, before->second)) {
            news = changed;
            ++outcome_.changed;
        }
    }

    /// Puts the earlier pictures of what changed or is missing into "before/", and takes those that are no
    /// longer drawn out of the folder itself.
    Result<void> keepEarlierPictures() {
        if (!earlier_) return {};
        const fs::path folder = options_.folder / "before";
        std::error_code ignored;
        fs::create_directory(folder, ignored);
        for (const auto& entry : fs::directory_iterator(folder, ignored)) {
            if (pictureNamed(entry.path().filename().string())) fs::remove(entry.path(), ignored);
        }
        for (const auto& [name, png] : *earlier_) {
            const auto drawn = drawn_.find(name);
            if (drawn != drawn_.end() && drawn->second != changed) continue;
            TRY(write(folder / name, png));
            if (drawn != drawn_.end()) continue;
            ++outcome_.missing;
            missing_.push_back(*pictureNamed(name));
            fs::remove(options_.folder / name, ignored);
        }
        return {};
    }

    Result<void> writePage() const {
        const fs::path file = options_.resources / "gallery/index.html";
        std::string page = contentOf(file);
        if (page.empty()) return failure("cannot read " + file.string());
        ordered_json sections = ordered_json::array();
        for (const WidgetListing& widget : widgets_) sections.push_back(section(widget));
        if (!missing_.empty()) {
            sections.push_back({{"title", "Missing"},
                                {"description", "Drawn before, and no longer."},
                                {"rows", missingRows()}});
        }
        return write(
            options_.folder / "index.html",
            sheetPage(std::move(page),
                      {{"subtitle", subtitle_}, {"verdict", verdict()}, {"sections", std::move(sections)}},
                      screen_));
    }

    std::string verdict() const {
        if (!earlier_) return "";
        if (outcome_.isLikeBefore()) return "All pictures look as before.";
        return outcome_.differences() + ", of " + std::to_string(outcome_.pictures) + " pictures.";
    }

    static ordered_json pictureJson(const SheetPicture& picture, std::string_view news) {
        return {{"kind", picture.kind},
                {"family", description(picture.family)},
                {"theme", picture.themeName()},
                {"file", picture.fileName()},
                {"news", news}};
    }

    ordered_json section(const WidgetListing& widget) const {
        ordered_json rows = ordered_json::array();
        for (const SheetState& state : states_) {
            ordered_json pictures;
            for (const WidgetFamily family : widget.families) {
                for (const bool isDark : themes) {
                    const SheetPicture picture{widget.kind, family, isDark, state.name};
                    const auto drawn = drawn_.find(picture.fileName());
                    if (drawn != drawn_.end()) pictures.push_back(pictureJson(picture, drawn->second));
                }
            }
            if (!pictures.empty())
                rows.push_back({{"title", state.title}, {"pictures", std::move(pictures)}});
        }
        return {
            {"title", widget.displayName}, {"description", widget.description}, {"rows", std::move(rows)}};
    }

    ordered_json missingRows() const {
        std::map<std::string, ordered_json> pictures;
        for (const SheetPicture& picture : missing_)
            pictures[picture.kind + ": " + picture.state].push_back(pictureJson(picture, "no longer drawn"));
        ordered_json rows;
        for (const auto& [title, shown] : pictures) rows.push_back({{"title", title}, {"pictures", shown}});
        return rows;
    }

    static constexpr std::string_view changed = "changed";

    const SheetOptions& options_;
    const std::vector<SheetState> states_ = sheetStates();
    const std::unique_ptr<Painter> painter_;
    const std::optional<PicturesByName> earlier_;
    platform::Screen screen_;
    std::string subtitle_;
    /// Set by the first state's answer; until the last answer only the asking thread may read it.
    std::vector<WidgetListing> widgets_;
    /// By file name: what a comparison says about the picture, empty when it looks as before.
    std::map<std::string, std::string_view> drawn_;
    std::vector<SheetPicture> missing_;
    SheetOutcome outcome_;
};

}  // namespace

std::string sheetPage(std::string page, nlohmann::ordered_json data, const platform::Screen& screen) {
    for (const platform::WidgetFamily family : platform::allWidgetFamilies) {
        const platform::Size size = screen.widgetSize(family);
        data["families"][std::string(description(family))] = {
            {"width", size.width}, {"height", size.height}, {"outline", widgetOutline(size)}};
    }
    std::string text = data.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    // Only texts hold this character, and the page's parser would take some of them for an element.
    for (std::size_t place = 0; (place = text.find('<', place)) != std::string::npos;)
        text.replace(place, 1, "\\u003c");
    constexpr std::string_view mark = "{{data}}";
    return page.replace(page.find(mark), mark.size(), text);
}

std::string SheetOutcome::differences() const {
    return std::to_string(changed) + " changed, " + std::to_string(added) + " new, " +
           std::to_string(missing) + " no longer drawn";
}

Result<SheetOutcome> drawStateSheet(const SheetOptions& options) {
    std::optional<PicturesByName> earlier;
    if (options.comparedWith) {
        auto read = TRY(earlierPictures(*options.comparedWith));
        earlier = std::move(read);
    }
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (error) return failure("cannot make " + options.folder.string() + ": " + error.message());
    const TemporaryFolder temporary;
    if (temporary.path().empty()) return failure("cannot make a temporary folder");
    const auto demo = TRY(DemoChild::start(options.programs / "brightledger-demo"));
    auto painter = TRY(Painter::make(options.resources));

    SheetDrawing sheet(options, std::move(painter), std::move(earlier));
    return sheet.draw(temporary.path(), demo->origin()).and_then([&] { return sheet.finish(); });
}

}  // namespace host
