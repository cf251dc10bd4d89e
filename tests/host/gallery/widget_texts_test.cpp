#include <gtest/gtest.h>
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <utility>
#include <vector>
#include "host/gallery/state_sheet.h"
#include "host/layout/display_list.h"
#include "platform/base/clock.h"
#include "tests/support/expected_text.h"
#include "tests/support/temporary_directory.h"

namespace host {
namespace {

using nlohmann::ordered_json;
using tests::linesOf;
using tests::parts;

void appendMember(std::string& text, const std::string& indent, const std::string& name,
                  const ordered_json& value) {
    constexpr std::size_t longest = 500;
    text += indent + name;
    if (value.is_array() && !value.empty()) {
        text += "\n";
        for (const auto& each : value) {
            for (const auto& [member, part] : each.items()) appendMember(text, indent + "  ", member, part);
        }
        return;
    }
    const std::string json = value.dump();
    text += " " + (json.size() > longest ? std::to_string(json.size()) + " characters" : json) + "\n";
}

/// One member of the entry on each line, then when the widget is to be asked again.
std::string answerText(const EntryAnswer& answer) {
    std::string text;
    for (const AnsweredEntry& entry : answer.entries) {
        const ordered_json members = ordered_json::parse(entry.json);
        for (const auto& [name, value] : members.items()) appendMember(text, "", name, value);
    }
    if (!answer.policy) return text;
    return text + "reload " +
           (answer.policy->kind == platform::TimelineReloadPolicy::Kind::atEnd
                ? "at the end"
                : "after " + platform::formatInstant(answer.policy->date)) +
           "\n";
}

/// Without what differs from run to run: ports and random identifiers.
std::string masked(const std::string& text) {
    static const std::regex port("127\\.0\\.0\\.1:[0-9]+");
    static const std::regex identifier("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}");
    return std::regex_replace(std::regex_replace(text, port, "SERVICE"), identifier, "ID");
}

/// Two texts in one: words that differ become "light|dark".
std::string merged(const std::string& light, const std::string& dark, char separator = '\n') {
    if (light == dark) return light;
    const auto lightParts = parts(light, separator);
    const auto darkParts = parts(dark, separator);
    if (lightParts.size() == 1 || lightParts.size() != darkParts.size()) return light + "|" + dark;
    std::string text = merged(lightParts[0], darkParts[0], ' ');
    for (std::size_t place = 1; place < lightParts.size(); ++place)
        text += separator + merged(lightParts[place], darkParts[place], ' ');
    return text;
}

struct Section {
    std::string title;
    std::string text;
};

/// By widget: the entry of each state, and its display list in each family.
std::map<std::string, std::vector<Section>> sectionsOn(int osVersion) {
    std::map<std::string, std::vector<Section>> light, dark;
    const tests::TemporaryDirectory directory;
    SheetOptions options{.folder = directory.path(),
                         .programs = BRIGHTLEDGER_PROGRAM_DIR,
                         .resources = BRIGHTLEDGER_PROGRAM_DIR "/resources",
                         .scale = 3};
    options.process = {.now = "2026-11-23T12:00:00+05:30",
                       .osVersion = std::to_string(osVersion),
                       .locale = "en_IN",
                       .timeZone = "Asia/Kolkata"};
    options.drawn = [&](const SheetPicture& picture, const EntryAnswer& answer, const DisplayList& list) {
        auto& sections = (picture.isDark ? dark : light)[picture.kind];
        const Section entry{picture.state, masked(answerText(answer))};
        // The entry is the same in every family.
        const auto isSame = [&](const Section& other) {
            return other.title == entry.title && other.text == entry.text;
        };
        if (std::ranges::none_of(sections, isSame)) sections.push_back(entry);
        sections.push_back({picture.state + ", " + list.family, masked(displayListText(list))});
    };
    const auto outcome = drawStateSheet(options);
    EXPECT_TRUE(outcome) << outcome.error().message;
    for (auto& [kind, sections] : light) {
        EXPECT_EQ(sections.size(), dark[kind].size());
        for (std::size_t place = 0; place < std::min(sections.size(), dark[kind].size()); ++place)
            sections[place].text = merged(sections[place].text, dark[kind][place].text);
    }
    return light;
}

/// The lines of each text that the other does not have.
std::string difference(const std::string& before, const std::string& now) {
    std::vector<std::string> gone = linesOf(before);
    std::string added;
    for (const std::string& line : linesOf(now)) {
        const auto same = std::ranges::find(gone, line);
        if (same == gone.end())
            added += "+ " + line + "\n";
        else
            gone.erase(same);
    }
    std::string text;
    for (const std::string& line : gone) text += "- " + line + "\n";
    return text + added;
}

// One file for each widget. A word that differs between the themes is written "light|dark". What older
// versions of the system show differently stands below each section.
TEST(WidgetTexts, AreAsExpectedInEveryStateFamilyThemeAndVersion) {
    const auto widgets = sectionsOn(18);
    const std::map<int, std::map<std::string, std::vector<Section>>> older{{17, sectionsOn(17)},
                                                                           {16, sectionsOn(16)}};
    for (const auto& [kind, sections] : widgets) {
        std::string text;
        for (std::size_t place = 0; place < sections.size(); ++place) {
            text += "# " + sections[place].title + "\n" + sections[place].text;
            for (const auto& [version, theirs] : older) {
                const std::string changes = difference(sections[place].text, theirs.at(kind).at(place).text);
                if (!changes.empty()) text += "on version " + std::to_string(version) + "\n" + changes;
            }
            text += "\n";
        }
        EXPECT_TRUE(tests::isAsExpected("widgets/" + kind + ".txt", text));
    }
}

}  // namespace
}  // namespace host
