#include "host/gallery/state_sheet.h"

#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include "host/gallery/sheet_picture.h"
#include "host/paint/painter.h"
#include "host/paint/picture_decoder.h"
#include "tests/support/files.h"
#include "tests/support/temporary_directory.h"

namespace host {
namespace {

using nlohmann::ordered_json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

using tests::contentOf;

const fs::path programs = BRIGHTLEDGER_PROGRAM_DIR;

SheetOptions optionsFor(const fs::path& folder) {
    return {.folder = folder, .programs = programs, .resources = programs / "resources", .scale = 1};
}

/// The gallery that all tests read and that no test changes.
const fs::path& gallery() {
    static const tests::TemporaryDirectory directory;
    static const platform::Result<SheetOutcome> outcome = drawStateSheet(optionsFor(directory.path()));
    EXPECT_TRUE(outcome) << outcome.error().message;
    return directory.path();
}

std::set<std::string> pictures(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".png") names.insert(entry.path().filename());
    }
    return names;
}

/// What the page's script reads.
ordered_json dataOf(const std::string& page) {
    static const std::string before = "<script type=\"application/json\" id=\"data\">";
    const std::size_t begin = page.find(before) + before.size();
    return ordered_json::parse(page.substr(begin, page.find("</script>", begin) - begin));
}

/// The files that the page shows, with what a comparison says about each.
std::map<std::string, std::string> shownIn(const fs::path& folder) {
    std::map<std::string, std::string> news;
    const ordered_json data = dataOf(contentOf(folder / "index.html"));
    for (const auto& section : data["sections"]) {
        for (const auto& row : section["rows"]) {
            for (const auto& picture : row["pictures"]) news[picture["file"]] = picture["news"];
        }
    }
    return news;
}

TEST(StateSheet, ShowsEveryPictureInItsFamilysSizeOnThePage) {
    std::map<std::string, std::string> expected;
    for (const std::string& name : pictures(gallery())) {
        expected[name] = "";
        const auto picture = decodePicture(contentOf(gallery() / name), 1000, 1000);
        ASSERT_TRUE(picture) << name;
        EXPECT_EQ(picture->width, name.find("systemSmall") != std::string::npos ? 158 : 338) << name;
        EXPECT_EQ(picture->height, name.find("systemLarge") != std::string::npos ? 354 : 158) << name;
    }
    EXPECT_EQ(shownIn(gallery()), expected);
    EXPECT_TRUE(expected.contains("PortfolioWidget-systemMedium-dark-no-portfolio.png"));
}

TEST(StateSheet, NoTextEndsTheElementThatHoldsThePagesData) {
    const std::string text = "</script><b>\"&'<!--";
    const std::string page =
        sheetPage(contentOf(programs / "resources/gallery/index.html"), {{"subtitle", text}}, {});
    EXPECT_THAT(page, Not(HasSubstr(text)));
    EXPECT_EQ(dataOf(page)["subtitle"], text);
}

TEST(StateSheet, GivesThePageTheOutlineOfEverySize) {
    const ordered_json families = dataOf(contentOf(gallery() / "index.html"))["families"];
    ASSERT_EQ(families.size(), 3U);
    EXPECT_EQ(families["systemMedium"]["width"], 338);
    // The corner's curve begins 1.53 radii of 22 points before it; every side lies on the frame.
    EXPECT_THAT(families["systemMedium"]["outline"].get<std::string>(),
                AllOf(StartsWith("M33.6289 0L304.371 0L"), HasSubstr("L338 124.371L"), EndsWith("Z")));
}

TEST(StateSheet, LooksTheSameWhenDrawnAgain) {
    const tests::TemporaryDirectory again;
    SheetOptions options = optionsFor(again.path());
    options.comparedWith = gallery();
    const auto outcome = drawStateSheet(options);
    ASSERT_TRUE(outcome) << outcome.error().message;
    EXPECT_TRUE(outcome->isLikeBefore());
    EXPECT_EQ(outcome->pictures, pictures(gallery()).size());
    EXPECT_TRUE(fs::is_empty(again.path() / "before"));
}

TEST(StateSheet, MarksChangedNewAndMissingPicturesEvenInItsOwnFolder) {
    const tests::TemporaryDirectory directory;
    const fs::path& folder = directory.path();
    fs::copy(gallery(), folder);
    const std::string changed = "PerchWidget-systemMedium-light-gain.png";
    const std::string added = "NewsWidget-systemLarge-dark-full.png";
    const std::string missing = "NewsWidget-systemLarge-dark-of-yesterday.png";
    const std::string other = contentOf(gallery() / "PerchWidget-systemMedium-light-loss.png");
    tests::written(folder / changed, other);
    fs::rename(folder / added, folder / missing);

    SheetOptions options = optionsFor(folder);
    options.comparedWith = folder;
    const auto outcome = drawStateSheet(options);
    ASSERT_TRUE(outcome) << outcome.error().message;
    EXPECT_EQ(outcome->changed, 1U);
    EXPECT_EQ(outcome->added, 1U);
    EXPECT_EQ(outcome->missing, 1U);
    EXPECT_EQ(contentOf(folder / changed), contentOf(gallery() / changed));
    EXPECT_EQ(contentOf(folder / "before" / changed), other);
    EXPECT_EQ(pictures(folder / "before"), (std::set<std::string>{changed, missing}));
    EXPECT_FALSE(fs::exists(folder / missing));
    auto shown = shownIn(folder);
    EXPECT_EQ(shown[changed], "changed");
    EXPECT_EQ(shown[added], "new");
    EXPECT_EQ(shown[missing], "no longer drawn");
}

TEST(StateSheet, SaysWhatItCannotDo) {
    const tests::TemporaryDirectory directory;
    tests::written(directory.path() / "file", "");
    const struct {
        std::string name;
        SheetOptions options;
        std::string message;
    } cases[] = {
        {"no earlier gallery",
         {.folder = directory.path() / "new", .comparedWith = directory.path()},
         "holds no gallery"},
        {"no such folder",
         {.folder = directory.path() / "new", .comparedWith = directory.path() / "nowhere"},
         "cannot read"},
        {"a file in the way", {.folder = directory.path() / "file" / "new"}, "cannot make"},
        {"no programs", {.folder = directory.path() / "new", .programs = directory.path()}, "demo service"},
    };
    for (const auto& [name, options, message] : cases) {
        const auto outcome = drawStateSheet(options);
        ASSERT_FALSE(outcome) << name;
        EXPECT_THAT(outcome.error().message, HasSubstr(message)) << name;
    }
}

TEST(Comparison, IgnoresOneStepOfAChannel) {
    const auto painter = Painter::make(programs / "resources");
    ASSERT_TRUE(painter) << painter.error().message;
    const auto grey = [&](int level, double width) {
        DisplayList list;
        list.size = {width, 10.0};
        list.background = platform::Color::rgb(level / 255.0, level / 255.0, level / 255.0, 1.0);
        return (*painter)->png(list, 1).value();
    };
    EXPECT_TRUE(looksLike(grey(100, 10), grey(101, 10)));
    EXPECT_TRUE(looksLike(grey(101, 10), grey(100, 10)));
    EXPECT_FALSE(looksLike(grey(100, 10), grey(102, 10)));
    EXPECT_FALSE(looksLike(grey(100, 10), grey(100, 11)));
    EXPECT_FALSE(looksLike(grey(100, 10), "not a picture"));
    EXPECT_TRUE(looksLike("not a picture", "not a picture"));
}

}  // namespace
}  // namespace host
