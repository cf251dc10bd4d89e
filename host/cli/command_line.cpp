#include "host/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>
#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/paint/picture_formats.h"
#include "host/web/run.h"
#include "platform/base/program_start.h"
#include "platform/runtime/process_options.h"

namespace host {
namespace {

using platform::ProcessOptions;
using platform::Result;

constexpr const char* commonOptionsHelp =
    "Every command also takes these options, before or after its own; an option overrides its variable:\n"
    "  --data-dir DIR       BRIGHTLEDGER_DATA_DIR    where the shared settings store lives\n"
    "  --info-plist FILE    BRIGHTLEDGER_INFO_PLIST  the bundle's information dictionary\n"
    "  --now INSTANT        BRIGHTLEDGER_NOW         stops the extension's clock (ISO 8601 with offset or "
    "Z)\n"
    "  --os-version N       BRIGHTLEDGER_OS_VERSION  the system's major version, as the extension sees it\n"
    "  --screen WxH         BRIGHTLEDGER_SCREEN      the device's screen in points (390x844)\n"
    "  --locale ID          BRIGHTLEDGER_LOCALE      device locale, such as en_IN\n"
    "  --time-zone ID       BRIGHTLEDGER_TIME_ZONE   device time zone, such as Asia/Kolkata\n"
    "  --verbose                                     debug log on standard error";

constexpr const char* kindHelp = "a widget's kind; \"brightledger gallery\" lists them";
constexpr const char* familyHelp = "systemSmall, systemMedium or systemLarge";
constexpr const char* statisticsHelp = "print memory and times on standard error";
constexpr const char* scaleHelp = "pixels per point: 1, 2 or 3 (default)";
constexpr const char* treeHelp = "a view tree as JSON; - is standard input";

/// What a subcommand does once its words are read.
using Command = std::function<Result<void>()>;

constexpr long longestRun = 366L * 24 * 60 * 60;

/// The commands of the program. Reading the words fills the members and chooses `chosen`.
class CommandLine {
public:
    explicit CommandLine(ProcessOptions process) : process_(std::move(process)) {
        app_.footer(commonOptionsHelp);
        app_.require_subcommand(1);
        addHomeScreen();
        addEntries();
        addDrawing();
        addStore();
        addPhoneApp();
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    int run(std::vector<std::string> words) {
        // These commands take their words as they are, but the parser would end the command at two dashes.
        if (!words.empty() && (words.front() == "call" || words.front() == "store")) {
            const auto dashes = std::find(words.begin(), words.end(), "--");
            if (dashes != words.end()) words.erase(dashes);
        }
        const auto isNamed = [&](const CLI::App* command) { return command->get_name() == words.front(); };
        if (!words.empty() && !words.front().starts_with('-') && app_.get_subcommands(isNamed).empty()) {
            return complain(
                {"UsageError", 2, "unknown command \"" + words.front() + "\"; see brightledger --help"});
        }
        // The parser takes its words from the end.
        std::reverse(words.begin(), words.end());
        try {
            app_.parse(std::move(words));
        } catch (const CLI::CallForHelp& help) {
            return app_.exit(help);
        } catch (const CLI::ParseError& wrong) {
            return complain({"UsageError", 2, wrong.what()});
        }
        const Result<void> done = runChosen();
        return done ? 0 : complain(done.error());
    }

private:
    /// Memory or threads that the system refuses are what the standard library throws for.
    Result<void> runChosen() {
        try {
            return chosen_();
        } catch (const std::bad_alloc&) {
            return platform::failure("SystemError", 1, "there is not enough memory");
        } catch (const std::system_error& refused) {
            return platform::failure("SystemError", 1, refused.what());
        }
    }
    CLI::App* add(CLI::App& parent, const char* name, const char* description, Command command) {
        CLI::App* subcommand = parent.add_subcommand(name, description);
        subcommand->callback([this, own = std::move(command)] { chosen_ = own; });
        return subcommand;
    }
    CLI::App* add(const char* name, const char* description, Command command) {
        return add(app_, name, description, std::move(command));
    }

    void addHomeScreen() {
        CLI::App* run = add("run", "serve the home screen on 127.0.0.1", [this] {
            run_.process = process_;
            run_.isDemo = service_ == "demo";
            if (seconds_) run_.duration = std::chrono::seconds(*seconds_);
            return runHomeScreen(run_);
        });
        run->add_option("--port", run_.port, "port of the page; 0 takes any free one");
        run->add_option("--service", service_, "demo (the default) or configured")
            ->check(CLI::IsMember({"demo", "configured"}));
        run->add_option("--for", seconds_, "stop after this many seconds")->check(CLI::Range(0L, longestRun));

        CLI::App* demo = add("demo", "start only the demo service and print its origin",
                             [this] { return becomeDemo(demoPort_); });
        demo->add_option("--port", demoPort_, "0 takes any free one")->check(CLI::Range(0, 65535));

        CLI::App* user = add("user", "sign a user of the demo service in, or out with \"none\"",
                             [this] { return signInUser(process_, userName_); });
        user->add_option("NAME", userName_, "a user's name, or none")->required();

        CLI::App* why = add("why", "show why the running home screen reloaded a widget, or did not",
                            [this] { return explainReloads(process_, question_.kind); });
        why->add_option("KIND", question_.kind)->required();

        CLI::App* gallery = add("gallery", "list the widgets", [this] {
            return galleryFolder_ ? drawGallery(process_, *galleryFolder_, earlierGallery_)
                                  : printGallery(process_);
        });
        CLI::Option* folder = gallery->add_option("-o", galleryFolder_,
                                                  "draw every widget, family, theme and state into a folder");
        gallery
            ->add_option("--compare", earlierGallery_,
                         "mark what differs from this gallery, and exit 1 if anything does")
            ->needs(folder);
    }

    void addQuestion(CLI::App& command) {
        command.add_option("KIND", question_.kind, kindHelp)->required();
        command.add_option("--family", question_.family, familyHelp)->required();
    }

    void addEntries() {
        for (const auto& [name, request] : entryRequests) {
            CLI::App* command = add(name, "ask a widget and print its answer", [this, asked = request] {
                question_.request = asked;
                return printEntries(process_, question_);
            });
            addQuestion(*command);
            command->add_flag("--stats", question_.isMeasured, statisticsHelp);
        }
        CLI::App* view = add("view", "print the view tree of the timeline's first entry",
                             [this] { return printView(process_, question_); });
        addQuestion(*view);
    }

    void addDrawing() {
        CLI::App* draw =
            add("draw", "draw a widget's first entry, or any view tree", [this] { return drawChosen(); });
        auto* kind = draw->add_option("KIND", question_.kind, kindHelp);
        auto* family = draw->add_option("--family", question_.family, familyHelp);
        auto* request = draw->add_option("--request", request_, "timeline (default), snapshot or placeholder")
                            ->check(CLI::IsMember({"timeline", "snapshot", "placeholder"}));
        auto* stats = draw->add_flag("--stats", question_.isMeasured, statisticsHelp);
        auto* tree = draw->add_option("--tree", tree_.file, treeHelp);
        auto* size = draw->add_option("--size", tree_.size, "size of the tree's widget in points, WxH");
        draw->add_option("--scale", drawing_.scale, scaleHelp);
        draw->add_option("-o", drawing_.output, "a file that ends in " + pictureEndings());
        for (CLI::Option* ofWidget : {kind, family, request, stats}) ofWidget->excludes(tree);
        kind->needs(family);
        tree->needs(size);
        size->needs(tree);

        CLI::App* layout = add("layout", "lay out a view tree and print it with every frame",
                               [this] { return layoutTree(process_, tree_, drawing_.scale); });
        layout->add_option("FILE", tree_.file, treeHelp)->required();
        layout->add_option("--size", tree_.size, "size of the widget in points, WxH")->required();
        layout->add_option("--scale", drawing_.scale, scaleHelp);
    }

    Result<void> drawChosen() {
        if (!tree_.file.empty()) return drawTree(process_, tree_, drawing_);
        if (question_.kind.empty()) {
            return platform::failure("UsageError", 2,
                                     "draw needs a KIND with --family, or --tree with --size");
        }
        for (const auto& [name, request] : entryRequests) {
            if (name == request_) question_.request = request;
        }
        return drawWidget(process_, question_, drawing_);
    }

    void addStore() {
        CLI::App* store = app_.add_subcommand("store", "read and change the shared settings store");
        store->require_subcommand(1);
        CLI::App* exporting = add(*store, "export", "print the whole store as an XML property list",
                                  [this] { return exportStore(process_, storeFile_); });
        exporting->add_option("FILE", storeFile_);
        CLI::App* importing = add(*store, "import", "set every key of a property list",
                                  [this] { return importStore(process_, *storeFile_); });
        importing->add_option("FILE", storeFile_)->required();
        addWords(*store, "get", "KEY: print a value as JSON", 1,
                 [this] { return getKey(process_, words_[0]); });
        addWords(*store, "set", "KEY TYPE VALUE: TYPE is string, integer, real, boolean, data, date or plist",
                 3, [this] { return setKey(process_, words_[0], words_[1], words_[2]); });
        addWords(*store, "remove", "KEY: remove a value", 1,
                 [this] { return removeKey(process_, words_[0]); });
        add(*store, "repair", "set a damaged store aside and say where it is now",
            [this] { return repair(process_); });
    }

    void addPhoneApp() {
        addWords(app_, "call",
                 "CLASS SELECTOR ARGUMENT...: call what the extension publishes to the phone app; "
                 "without arguments: list it; -: read one call per line",
                 std::nullopt, [this] { return callOperation(process_, words_); });
    }

    /// A command that takes its words as they are, even when they look like options. `description` begins
    /// with the names of its parameters and a colon.
    void addWords(CLI::App& parent, const char* name, const char* description,
                  std::optional<std::size_t> count, Command command) {
        CLI::App* subcommand = parent.add_subcommand(name, description);
        subcommand->prefix_command();
        const std::string text = description;
        subcommand->callback([this, subcommand, name, count, parameters = text.substr(0, text.find(':')),
                              own = std::move(command)] {
            words_ = subcommand->remaining();
            if (count && words_.size() != *count) {
                throw CLI::ValidationError(name, "takes " + parameters);
            }
            chosen_ = own;
        });
    }

    CLI::App app_{"The widget host: asks the extension, lays out, draws and serves its widgets",
                  "brightledger"};
    Command chosen_;
    const ProcessOptions process_;

    RunOptions run_;
    std::string service_ = "demo";
    std::optional<long> seconds_;
    int demoPort_ = 0;
    std::string userName_;
    std::optional<std::string> galleryFolder_;
    std::optional<std::string> earlierGallery_;
    WidgetQuestion question_;
    std::string request_ = "timeline";
    DrawingOptions drawing_;
    TreeFile tree_;
    std::optional<std::string> storeFile_;
    std::vector<std::string> words_;
};

}  // namespace

int runCommandLine(int count, char** words) {
    platform::fillStandardStreams();
    // When the reader of a pipe has gone, writing fails with an error instead of a signal.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments(words + 1, words + count);
    Result<ProcessOptions> process = platform::takeProcessOptions(arguments);
    if (!process) return complain(process.error());
    return CommandLine(std::move(*process)).run(std::move(arguments));
}

}  // namespace host
