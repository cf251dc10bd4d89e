// store_writer DIR write NUMBER: chooses the light and the dark theme in turn and counts in a key of its own,
// for ever; after each write has returned it prints the count. store_writer DIR check: prints "NUMBER COUNT"
// of both writers, and fails when the stored palette is not wholly that of the stored theme.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/theme.h"
#include "extension/theme/theme_manager.h"
#include "extension/theme/theme_type.h"

namespace {

using extension::ThemeType;

int fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    return 1;
}

std::string counterOf(const std::string& writer) { return "counter " + writer; }

int write(const platform::Runtime& runtime, const std::string& writer) {
    extension::ProcessState state(runtime);
    const auto store = extension::sharedDefaults(runtime);
    if (!store) return fail(store.error().message);
    const auto before = (*store)->object(counterOf(writer));
    if (!before) return fail(before.error().message);
    for (std::int64_t count = platform::coercedInteger(*before) + 1;; ++count) {
        const auto theme = count % 2 == 0 ? ThemeType::light : ThemeType::dark;
        auto done = extension::ThemeManager::setCurrentSelectedThemeTypeWithType(
            static_cast<std::int64_t>(theme), state);
        if (done) done = (*store)->set(counterOf(writer), count);
        if (!done) return fail(done.error().message);
        std::printf("%lld\n", static_cast<long long>(count));
        std::fflush(stdout);
    }
}

int check(const platform::Runtime& runtime) {
    const auto store = extension::sharedDefaults(runtime);
    if (!store) return fail(store.error().message);
    std::vector<std::string> keys{std::string(extension::keys::themeType), counterOf("1"), counterOf("2")};
    const auto first = keys.size();
    for (const auto& color : extension::palette()) keys.emplace_back(color.name);
    const auto values = (*store)->objects(keys);
    if (!values) return fail(values.error().message);
    for (const auto& value : *values) {
        if (!value) return fail(value.error().message);
    }
    const bool isChosen = values->front()->has_value();
    const bool isLight = platform::coercedInteger(*values->front()) == static_cast<int>(ThemeType::light);
    for (std::size_t i = 0; i < extension::palette().size(); ++i) {
        const auto& color = extension::palette()[i];
        const auto stored = extension::decodedColor(*(*values)[first + i]);
        if (isChosen ? stored != (isLight ? color.light : color.dark) : stored.has_value())
            return fail("torn theme: " + std::string(color.name));
    }
    for (std::size_t writer = 1; writer <= 2; ++writer)
        std::printf("%lld ", static_cast<long long>(platform::coercedInteger(*(*values)[writer])));
    return 0;
}

}  // namespace

int main(int count, char** words) {
    if (count < 3) return fail("usage: store_writer DIR write NUMBER | check");
    const platform::Runtime runtime({.dataDirectory = words[1],
                                     .now = platform::parseInstant("2026-11-22T12:00:00Z"),
                                     .locale = {"en_IN"},
                                     .timeZone = {"Asia/Kolkata"}});
    return std::string(words[2]) == "write" && count == 4 ? write(runtime, words[3]) : check(runtime);
}
