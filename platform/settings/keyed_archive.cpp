#include "platform/settings/keyed_archive.h"

#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "platform/settings/property_list_formats.h"

namespace platform {
namespace {

using property_list::Budget;
using property_list::identifierKey;
using property_list::maximumDepth;

constexpr std::int64_t archiveVersion = 100'000;
constexpr const char* archiverName = "NSKeyedArchiver";
constexpr const char* nothing = "$null";

// An archive in a store holds a few links. These bounds keep a reader's memory at a few MB; without them,
// shared objects could turn a few hundred bytes into a hundred MB.
constexpr std::size_t largestArchive = 256U << 10;
constexpr std::size_t mostObjects = 20'000;
Budget smallBudget() { return Budget(mostObjects, largestArchive); }

tl::unexpected<Error> refused(std::string message) {
    return failure("KeyedArchiveError", 1, "the keyed archive " + std::move(message));
}

/// The entry of a dictionary; null when there is none, or no dictionary.
const PropertyList* find(const PropertyList* value, std::string_view key) {
    if (value == nullptr || value->dictionary() == nullptr) return nullptr;
    const auto found = value->dictionary()->find(key);
    return found == value->dictionary()->end() ? nullptr : &found->second;
}

/// The index that an identifier refers to.
std::optional<std::size_t> identifier(const PropertyList* value) {
    const PropertyList* number = find(value, identifierKey);
    if (number == nullptr || value->dictionary()->size() != 1) return {};
    if (number->integer() == nullptr || *number->integer() < 0) return {};
    return static_cast<std::size_t>(*number->integer());
}

enum class Kind { unknown, text, data, date, array, dictionary };

Kind kindNamed(std::string_view name) {
    if (name == "NSString" || name == "NSMutableString") return Kind::text;
    if (name == "NSData" || name == "NSMutableData") return Kind::data;
    if (name == "NSDate") return Kind::date;
    if (name == "NSArray" || name == "NSMutableArray") return Kind::array;
    if (name == "NSDictionary" || name == "NSMutableDictionary") return Kind::dictionary;
    return Kind::unknown;
}

/// Judged by the class's own name, or by the names that it lists as replacements.
Kind kindOfClass(const PropertyList& description) {
    const PropertyList* name = find(&description, "$classname");
    if (name == nullptr || name->text() == nullptr) return Kind::unknown;
    Kind kind = kindNamed(*name->text());
    const PropertyList* hints = find(&description, "$classhints");
    if (hints == nullptr || hints->array() == nullptr) return kind;
    for (const PropertyList& hint : *hints->array()) {
        if (kind == Kind::unknown && hint.text() != nullptr) kind = kindNamed(*hint.text());
    }
    return kind;
}

/// The first problem stays. After it nothing more is read, and what was read must not be used.
class Unarchiver {
public:
    explicit Unarchiver(const PropertyList::Array& objects)
        : objects_(objects), isOpen_(objects.size(), false) {}

    Result<PropertyList> root(const PropertyList* reference) {
        PropertyList value = object(reference);
        if (problem_.empty()) return value;
        return refused(problem_);
    }

private:
    PropertyList fail(std::string problem) {
        if (problem_.empty()) problem_ = std::move(problem);
        return {};
    }

    PropertyList object(const PropertyList* reference) {
        const std::optional<std::size_t> index = identifier(reference);
        if (!index || *index >= objects_.size()) return fail("refers to an object that is not there");
        if (*index == 0) return fail("holds nothing where a value should be");
        if (isOpen_[*index]) return fail("holds an object that contains itself");
        if (depth_ > maximumDepth) return fail("is nested too deeply");
        isOpen_[*index] = true;
        ++depth_;
        PropertyList value = contentOf(objects_[*index]);
        --depth_;
        isOpen_[*index] = false;
        return value;
    }

    PropertyList plain(const PropertyList& value) {
        std::size_t size = 0;
        if (value.text() != nullptr) size = value.text()->size();
        if (value.data() != nullptr) size = value.data()->size();
        return budget_.take(size) ? value : fail("holds too much");
    }

    PropertyList contentOf(const PropertyList& object) {
        if (object.array() != nullptr) return fail("holds an array in place of an object");
        if (object.dictionary() == nullptr) return plain(object);
        if (!budget_.take()) return fail("holds too much");
        const std::optional<std::size_t> type = identifier(find(&object, "$class"));
        if (!type || *type >= objects_.size() || objects_[*type].dictionary() == nullptr)
            return fail("holds an object without a class");
        switch (kindOfClass(objects_[*type])) {
            case Kind::text:
                return field(object, "NS.string", [](const PropertyList& v) { return v.text() != nullptr; });
            case Kind::data:
                return field(object, "NS.data", [](const PropertyList& v) { return v.data() != nullptr; });
            case Kind::date: return date(object);
            case Kind::array: return array(object);
            case Kind::dictionary: return dictionary(object);
            case Kind::unknown: break;
        }
        return fail("holds an object of an unknown class");
    }

    /// The content that an object contains or refers to.
    PropertyList field(const PropertyList& owner, const std::string& key,
                       bool (*isFit)(const PropertyList&)) {
        const PropertyList* value = find(&owner, key);
        if (value == nullptr) return fail("holds an object without " + key);
        PropertyList content = identifier(value) ? object(value) : plain(*value);
        return isFit(content) ? content : fail("holds an object with a wrong " + key);
    }

    PropertyList date(const PropertyList& owner) {
        const PropertyList* time = find(&owner, "NS.time");
        if (time == nullptr) return fail("holds a date without NS.time");
        if (time->integer() != nullptr)
            return property_list::instantFromReferenceDate(static_cast<double>(*time->integer()));
        if (time->real() == nullptr || std::isnan(*time->real()))
            return fail("holds a date that is not a number");
        return property_list::instantFromReferenceDate(*time->real());
    }

    /// What `name` lists: one array, or in older archives a numbered field for each.
    std::vector<const PropertyList*> references(const PropertyList& owner, const std::string& name,
                                                const std::string& olderName) {
        std::vector<const PropertyList*> found;
        if (const PropertyList* list = find(&owner, name)) {
            if (list->array() == nullptr) return fail("holds a collection with a wrong " + name), found;
            for (const PropertyList& reference : *list->array()) found.push_back(&reference);
            return found;
        }
        while (const PropertyList* reference = find(&owner, olderName + "." + std::to_string(found.size())))
            found.push_back(reference);
        return found;
    }

    PropertyList array(const PropertyList& owner) {
        PropertyList::Array elements;
        for (const PropertyList* reference : references(owner, "NS.objects", "NS.object")) {
            elements.push_back(object(reference));
            if (!problem_.empty()) break;
        }
        return elements;
    }

    PropertyList dictionary(const PropertyList& owner) {
        const auto keys = references(owner, "NS.keys", "NS.key");
        const auto values = references(owner, "NS.objects", "NS.object");
        if (keys.size() != values.size())
            return fail("holds a dictionary whose keys and values differ in number");
        PropertyList::Dictionary entries;
        for (std::size_t i = 0; i < keys.size() && problem_.empty(); ++i) {
            const PropertyList key = object(keys[i]);
            if (key.text() == nullptr) return fail("holds a dictionary with a key that is not a text");
            entries.insert_or_assign(*key.text(), object(values[i]));
        }
        return entries;
    }

    const PropertyList::Array& objects_;
    std::vector<bool> isOpen_;
    std::size_t depth_ = 0;
    Budget budget_ = smallBudget();
    std::string problem_;
};

class Archiver {
public:
    std::string archive(const PropertyList& root) {
        const PropertyList top = add(root);
        return property_list::writeBinary(PropertyList::Dictionary{
            {"$archiver", archiverName},
            {"$version", archiveVersion},
            {"$top", PropertyList::Dictionary{{"root", top}}},
            {"$objects", std::move(objects_)},
        });
    }

private:
    static PropertyList identifierOf(std::size_t index) {
        return PropertyList::Dictionary{{identifierKey, static_cast<std::int64_t>(index)}};
    }

    PropertyList append(PropertyList object) {
        objects_.push_back(std::move(object));
        return identifierOf(objects_.size() - 1);
    }

    PropertyList add(const PropertyList& value) {
        if (const auto* dictionary = value.dictionary()) return addDictionary(*dictionary);
        if (const auto* array = value.array()) return addArray(*array);
        if (const Instant* date = value.date()) {
            return append(PropertyList::Dictionary{
                {"NS.time", property_list::secondsSinceReferenceDate(*date)}, {"$class", classOf("NSDate")}});
        }
        return append(value);
    }

    PropertyList addArray(const PropertyList::Array& array) {
        PropertyList::Array values;
        values.reserve(array.size());
        for (const PropertyList& element : array) values.push_back(add(element));
        return append(
            PropertyList::Dictionary{{"NS.objects", std::move(values)}, {"$class", classOf("NSArray")}});
    }

    PropertyList addDictionary(const PropertyList::Dictionary& dictionary) {
        PropertyList::Array keys;
        PropertyList::Array values;
        for (const auto& [key, value] : dictionary) {
            keys.push_back(append(key));
            values.push_back(add(value));
        }
        return append(PropertyList::Dictionary{{"NS.keys", std::move(keys)},
                                               {"NS.objects", std::move(values)},
                                               {"$class", classOf("NSDictionary")}});
    }

    PropertyList classOf(const std::string& name) {
        const auto known = classes_.find(name);
        if (known != classes_.end()) return identifierOf(known->second);
        classes_.emplace(name, objects_.size());
        return append(PropertyList::Dictionary{{"$classname", name},
                                               {"$classes", PropertyList::Array{name, "NSObject"}}});
    }

    PropertyList::Array objects_{nothing};
    std::map<std::string, std::size_t> classes_;
};

}  // namespace

Result<PropertyList> unarchivedObject(std::string_view archive) {
    if (archive.size() > largestArchive) return refused("is longer than 256 KiB");
    const Result<PropertyList> list = property_list::parse(archive, smallBudget());
    if (!list) return refused("is not a property list: " + list.error().message);
    if (list->dictionary() == nullptr) return refused("is not a dictionary");
    const auto holds = [&list](const char* key, const PropertyList& expected) {
        const PropertyList* value = find(&*list, key);
        return value != nullptr && *value == expected;
    };
    if (!holds("$archiver", archiverName) || !holds("$version", archiveVersion))
        return refused("was not written by a keyed archiver of a known version");
    const PropertyList* objects = find(&*list, "$objects");
    if (objects == nullptr || objects->array() == nullptr || objects->array()->empty() ||
        objects->array()->front() != PropertyList(nothing))
        return refused("has no objects");
    const PropertyList* root = find(find(&*list, "$top"), "root");
    if (root == nullptr) return refused("has no root");
    return Unarchiver(*objects->array()).root(root);
}

std::string archivedObject(const PropertyList& root) { return Archiver().archive(root); }

}  // namespace platform
