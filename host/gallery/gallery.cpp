#include "host/gallery/gallery.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>
#include "companion/operations.h"
#include "host/gallery/comparison.h"
#include "host/gallery/gallery_states.h"
#include "host/gallery/index_page.h"
#include "host/layout/layout.h"
#include "host/paint/painter.h"
#include "host/process/demo_child.h"
#include "host/process/extension_arguments.h"
#include "host/process/extension_process.h"
#include "platform/settings/property_list.h"

namespace host {
namespace {

namespace fs = std::filesystem;
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

/// What lives as long as the drawing does.
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

    /// Empty when there is no room for one.
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

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The picture that a file of this name shows; nothing when the name is none of a gallery's.
std::optional<GalleryPicture> pictureNamed(const std::string& fileName) {
    const std::size_t family = fileName.find('-');
    const std::size_t theme = family == std::string::npos ? family : fileName.find('-', family + 1);
    const std::size_t state = theme == std::string::npos ? theme : fileName.find('-', theme + 1);
    const std::size_t end = fileName.rfind(".png");
    if (state == std::string::npos || end == std::string::npos || end <= state) return std::nullopt;
    const auto known = platform::widgetFamily(fileName.substr(family + 1, theme - family - 1));
    if (!known) return std::nullopt;
    GalleryPicture picture{.kind = fileName.substr(0, family),
                           .family = *known,
                           .isDark = fileName.substr(theme + 1, state - theme - 1) == "dark",
                           .state = fileName.substr(state + 1, end - state - 1)};
    return picture.fileName() == fileName ? std::optional(std::move(picture)) : std::nullopt;
}

using PicturesByName = std::map<std::string, std::string>;

/// Read whole before anything is written, as both galleries may be in one folder.
Result<PicturesByName> earlierPictures(const fs::path& folder) {
    PicturesByName pictures;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (pictureNamed(name)) pictures.emplace(name, contentOf(entry.path()));
    }
    if (error) return failure("cannot read " + folder.string() + ": " + error.message());
    if (pictures.empty()) return failure("there is no gallery in " + folder.string());
    return pictures;
}

std::string optionOr(const std::optional<std::string>& option, const char* variable, const char* otherwise) {
    const char* value = std::getenv(variable);
    return option ? *option : value != nullptr && *value != '\0' ? value : otherwise;
}

/// The same surroundings on every machine, where nobody asks for others.
platform::ProcessOptions surroundings(platform::ProcessOptions options) {
    options.now = optionOr(options.now, "BRIGHTLEDGER_NOW", "2026-11-23T12:00:00+05:30");
    options.locale = optionOr(options.locale, "BRIGHTLEDGER_LOCALE", "en_IN");
    options.timeZone = optionOr(options.timeZone, "BRIGHTLEDGER_TIME_ZONE", "Asia/Kolkata");
    return options;
}

/// The extension in one state, with a store and an information dictionary of its own.
class GalleryRun {
public:
    static Result<std::unique_ptr<GalleryRun>> make(const GalleryOptions& options,
                                                    const platform::ProcessOptions& surroundings,
                                                    const GalleryState& state, const fs::path& folder,
                                                    const std::string& origin) {
        platform::ProcessOptions process = surroundings;
        process.dataDirectory = (folder / state.name).string();
        process.infoPlist = (folder / (state.name + ".plist")).string();
        if (state.osVersion) process.osVersion = std::to_string(*state.osVersion);
        const std::string service = origin + "/scene/" + state.scene;
        const Result<void> written = writeInformation(*process.infoPlist, service);
        if (!written) return tl::unexpected(written.error());
        const Result<RuntimeOptions> resolved = platform::runtimeOptions(process, *process.infoPlist);
        if (!resolved) return tl::unexpected(resolved.error());
        auto run = std::unique_ptr<GalleryRun>(new GalleryRun(options, process, *resolved));
        const Result<void> chosen = run->choose(state, service);
        return chosen ? Result<std::unique_ptr<GalleryRun>>(std::move(run)) : tl::unexpected(chosen.error());
    }

    Result<void> setTheme(bool isDark) {
        return phoneApp_.call("ThemeManager", "setCurrentSelectedThemeTypeWithType:", {isDark ? "0" : "1"})
            .map([](const auto&) {});
    }

    ExtensionProcess& extension() { return extension_; }
    int osVersion() const { return runtime_.osVersion(); }

private:
    GalleryRun(const GalleryOptions& options, const platform::ProcessOptions& process,
               const RuntimeOptions& resolved)
        : runtime_(resolved),
          phoneApp_(runtime_),
          extension_({.program = options.programs / "brightledger-extension",
                      .arguments = extensionArguments(process, resolved),
                      .log = options.log}) {}

    static Result<void> writeInformation(const fs::path& file, const std::string& service) {
        PropertyList::Dictionary entries{{"ENVIRONMENT", "prod"}, {"AD_TEST_MODE", "FALSE"}};
        for (const char* name : {"ProductionAPIHost", "ProductionWebHost"}) entries[name] = service;
        return platform::xmlPropertyList(entries).and_then(
            [&](const std::string& text) { return write(file, text); });
    }

    Result<void> choose(const GalleryState& state, const std::string& service) {
        // The extension fills an empty store with its first question, whatever is chosen by then.
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

/// The gallery in the making.
class Gallery {
public:
    Gallery(const GalleryOptions& options, std::unique_ptr<Painter> painter,
            std::optional<PicturesByName> earlier)
        : options_(options), painter_(std::move(painter)), earlier_(std::move(earlier)) {}

    Result<void> draw(const fs::path& folder, const std::string& origin) {
        const platform::ProcessOptions process = surroundings(options_.process);
        subtitle_ = *process.now + ", " + *process.locale + ", " + *process.timeZone;
        // The next state's questions are answered while this one's pictures are drawn.
        const auto asked = [&](const GalleryState& state) {
            return std::async(std::launch::async, [&] {
                auto run = GalleryRun::make(options_, process, state, folder, origin);
                return run ? ask(**run, state) : tl::unexpected(std::move(run.error()));
            });
        };
        auto next = asked(states_.front());
        for (auto state = states_.begin(); state != states_.end(); ++state) {
            const Result<std::vector<GalleryShot>> poses = next.get();
            if (!poses) return tl::unexpected(poses.error());
            if (state + 1 != states_.end()) next = asked(*(state + 1));
            for (const GalleryShot& shot : *poses) {
                if (const Result<void> drawn = draw(shot); !drawn) return drawn;
            }
        }
        return {};
    }

    Result<GalleryOutcome> finish() {
        return keepEarlierPictures()
            .and_then([&] { return write(options_.folder / "index.html", indexPage(page())); })
            .map([&] { return outcome_; });
    }

private:
    /// What the extension answered for one picture.
    struct GalleryShot {
        GalleryPicture picture;
        platform::View view;
        LayoutOptions layout;
    };

    Result<std::vector<GalleryShot>> ask(GalleryRun& run, const GalleryState& state) {
        if (widgets_.empty()) {
            auto widgets = run.extension().gallery(waitingLimit);
            if (!widgets) return tl::unexpected(widgets.error());
            widgets_ = std::move(*widgets);
        }
        std::vector<GalleryShot> poses;
        for (const bool isDark : themes) {
            if (const Result<void> set = run.setTheme(isDark); !set) return tl::unexpected(set.error());
            for (const WidgetListing& widget : widgets_) {
                if (std::ranges::find(state.kinds, widget.kind) == state.kinds.end()) continue;
                for (const WidgetFamily family : widget.families) {
                    auto shot = ask(run, state.request, {widget.kind, family, isDark, state.name});
                    if (!shot) return tl::unexpected(shot.error());
                    poses.push_back(std::move(*shot));
                }
            }
        }
        return poses;
    }

    static Result<GalleryShot> ask(GalleryRun& run, EntryRequest request, GalleryPicture picture) {
        const auto answer = run.extension().ask(
            {.kind = picture.kind, .family = picture.family, .request = request, .wantsViews = true},
            waitingLimit);
        if (!answer) return tl::unexpected(answer.error());
        if (answer->entries.empty()) return failure(picture.kind + " answered without an entry");
        LayoutOptions layout{.size = platform::widgetSize(picture.family),
                             .osVersion = run.osVersion(),
                             .kind = picture.kind,
                             .family = std::string(description(picture.family)),
                             .isRedacted = request == EntryRequest::placeholder};
        return GalleryShot{std::move(picture), answer->entries.front().view.value_or(platform::View()),
                           std::move(layout)};
    }

    Result<void> draw(const GalleryShot& shot) {
        const DisplayList list = makeDisplayList(shot.view, shot.layout, painter_->measurer(options_.scale));
        return painter_->png(list, options_.scale).and_then([&](const std::string& png) {
            note(shot.picture.fileName(), png);
            return write(options_.folder / shot.picture.fileName(), png);
        });
    }

    void note(const std::string& name, std::string_view png) {
        ++outcome_.pictures;
        PictureNews& news = drawn_[name];
        if (!earlier_) return;
        const auto before = earlier_->find(name);
        if (before == earlier_->end()) {
            news = PictureNews::added;
            ++outcome_.added;
        } else if (!looksLike(png, before->second)) {
            news = PictureNews::changed;
            ++outcome_.changed;
        }
    }

    /// Beside the new ones in "before/"; what is drawn no longer leaves the folder itself.
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
            if (drawn != drawn_.end() && drawn->second != PictureNews::changed) continue;
            if (const Result<void> kept = write(folder / name, png); !kept) return kept;
            if (drawn != drawn_.end()) continue;
            ++outcome_.missing;
            missing_.push_back({*pictureNamed(name), PictureNews::missing});
            fs::remove(options_.folder / name, ignored);
        }
        return {};
    }

    GalleryPage page() const {
        GalleryPage page{.subtitle = subtitle_, .verdict = verdict(), .sections = {}};
        for (const WidgetListing& widget : widgets_) page.sections.push_back(section(widget));
        if (!missing_.empty())
            page.sections.push_back({"Missing", "Drawn before, and no longer.", missingRows()});
        return page;
    }

    std::string verdict() const {
        if (!earlier_) return "";
        if (outcome_.isLikeBefore()) return "All pictures look as before.";
        return std::to_string(outcome_.changed) + " changed, " + std::to_string(outcome_.added) + " new, " +
               std::to_string(outcome_.missing) + " no longer drawn, of " +
               std::to_string(outcome_.pictures) + " pictures.";
    }

    GallerySection section(const WidgetListing& widget) const {
        GallerySection section{widget.displayName, widget.description, {}};
        for (const GalleryState& state : states_) {
            GalleryRow row{state.title, {}};
            for (const WidgetFamily family : widget.families) {
                for (const bool isDark : themes) {
                    GalleryPicture picture{widget.kind, family, isDark, state.name};
                    const auto drawn = drawn_.find(picture.fileName());
                    if (drawn != drawn_.end()) row.pictures.push_back({std::move(picture), drawn->second});
                }
            }
            if (!row.pictures.empty()) section.rows.push_back(std::move(row));
        }
        return section;
    }

    std::vector<GalleryRow> missingRows() const {
        std::map<std::string, GalleryRow> rows;
        for (const ComparedPicture& shown : missing_) {
            GalleryRow& row = rows[shown.picture.kind + ": " + shown.picture.state];
            row.pictures.push_back(shown);
        }
        std::vector<GalleryRow> list;
        for (auto& [title, row] : rows) list.push_back({title, std::move(row.pictures)});
        return list;
    }

    const GalleryOptions& options_;
    const std::vector<GalleryState> states_ = galleryStates();
    const std::unique_ptr<Painter> painter_;
    const std::optional<PicturesByName> earlier_;
    std::string subtitle_;
    /// Known with the first state's answer; until all are there, of the asking side alone.
    std::vector<WidgetListing> widgets_;
    std::map<std::string, PictureNews> drawn_;
    std::vector<ComparedPicture> missing_;
    GalleryOutcome outcome_;
};

}  // namespace

Result<GalleryOutcome> drawGallery(const GalleryOptions& options) {
    std::optional<PicturesByName> earlier;
    if (options.comparedWith) {
        auto read = earlierPictures(*options.comparedWith);
        if (!read) return tl::unexpected(read.error());
        earlier = std::move(*read);
    }
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (error) return failure("cannot make " + options.folder.string() + ": " + error.message());
    const TemporaryFolder temporary;
    if (temporary.path().empty()) return failure("no temporary folder to be had");
    const auto demo = DemoChild::start(options.programs / "brightledger-demo");
    if (!demo) return tl::unexpected(demo.error());
    auto painter = Painter::make(options.resources);
    if (!painter) return tl::unexpected(painter.error());

    Gallery gallery(options, std::move(*painter), std::move(earlier));
    return gallery.draw(temporary.path(), (*demo)->origin()).and_then([&] { return gallery.finish(); });
}

}  // namespace host
