#include "platform/settings/keyed_archive.h"

#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "platform/settings/binary_property_list.h"
#include "platform/settings/property_list_limits.h"
#include "platform/settings/property_list_text.h"

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

const PropertyList* find(const PropertyList::Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

/// The index that an identifier refers to.
std::optional<std::size_t> identifier(const PropertyList* value) {
    if (value == nullptr || value->dictionary() == nullptr || value->dictionary()->size() != 1) return {};
    const PropertyList* number = find(*value->dictionary(), identifierKey);
    if (number == nullptr || number->integer() == nullptr || *number->integer() < 0) return {};
    return static_cast<std::size_t>(*number->integer());
}

enum class Kind { unknown, text, data, date, array, dictionary };

Kind kindOfClass(std::string_view name) {
    if (name == "NSString" || name == "NSMutableString") return Kind::text;
    if (name == "NSData" || name == "NSMutableData") return Kind::data;
    if (name == "NSDate") return Kind::date;
    if (name == "NSArray" || name == "NSMutableArray") return Kind::array;
    if (name == "NSDictionary" || name == "NSMutableDictionary") return Kind::dictionary;
    return Kind::unknown;
}

/// Judged by the class's own name, or by the names that it lists as replacements.
Kind kindOfClass(const PropertyList::Dictionary& description) {
    const PropertyList* name = find(description, "$classname");
    if (name == nullptr || name->text() == nullptr) return Kind::unknown;
    Kind kind = kindOfClass(*name->text());
    const PropertyList* hints = find(description, "$classhints");
    if (hints == nullptr || hints->array() == nullptr) return kind;
    for (const PropertyList& hint : *hints->array()) {
        if (kind == Kind::unknown && hint.text() != nullptr) kind = kindOfClass(*hint.text());
    }
    return kind;
}

class Unarchiver {
public:
    explicit Unarchiver(const PropertyList::Array& objects)
        : objects_(objects), isOpen_(objects.size(), false) {}

    Result<PropertyList> object(const PropertyList* reference) {
        const std::optional<std::size_t> index = identifier(reference);
        if (!index || *index >= objects_.size()) return refused("refers to an object that is not there");
        if (*index == 0) return refused("holds nothing where a value should be");
        if (isOpen_[*index]) return refused("holds an object that contains itself");
        if (depth_ > maximumDepth) return refused("is nested too deeply");
        isOpen_[*index] = true;
        ++depth_;
        Result<PropertyList> value = contentOf(objects_[*index]);
        --depth_;
        isOpen_[*index] = false;
        return value;
    }

private:
    using Dictionary = PropertyList::Dictionary;

    static std::size_t sizeOf(const PropertyList& value) {
        if (value.text() != nullptr) return value.text()->size();
        return value.data() != nullptr ? value.data()->size() : 0;
    }

    Result<PropertyList> plain(const PropertyList& value) {
        if (!budget_.take(sizeOf(value))) return refused("holds too much");
        return value;
    }

    Result<PropertyList> contentOf(const PropertyList& object) {
        if (object.array() != nullptr) return refused("holds an array in place of an object");
        if (object.dictionary() == nullptr) return plain(object);
        if (!budget_.take()) return refused("holds too much");
        const Dictionary& fields = *object.dictionary();
        const std::optional<std::size_t> type = identifier(find(fields, "$class"));
        if (!type || *type >= objects_.size() || objects_[*type].dictionary() == nullptr)
            return refused("holds an object without a class");
        switch (kindOfClass(*objects_[*type].dictionary())) {
            case Kind::text:
                return field(fields, "NS.string", [](const PropertyList& v) { return v.text() != nullptr; });
            case Kind::data:
                return field(fields, "NS.data", [](const PropertyList& v) { return v.data() != nullptr; });
            case Kind::date: return date(fields);
            case Kind::array: return array(fields);
            case Kind::dictionary: return dictionary(fields);
            case Kind::unknown: break;
        }
        return refused("holds an object of an unknown class");
    }

    /// The content that an object contains or refers to.
    Result<PropertyList> field(const Dictionary& fields, const char* key,
                               bool (*isFit)(const PropertyList&)) {
        const PropertyList* value = find(fields, key);
        if (value == nullptr) return refused(std::string("holds an object without ") + key);
        Result<PropertyList> content = identifier(value) ? object(value) : plain(*value);
        if (content && !isFit(*content)) return refused(std::string("holds an object with a wrong ") + key);
        return content;
    }

    Result<PropertyList> date(const Dictionary& fields) {
        const PropertyList* time = find(fields, "NS.time");
        if (time == nullptr) return refused("holds a date without NS.time");
        if (time->integer() != nullptr)
            return property_list::instantFromReferenceDate(static_cast<double>(*time->integer()));
        if (time->real() == nullptr || std::isnan(*time->real()))
            return refused("holds a date that is not a number");
        return property_list::instantFromReferenceDate(*time->real());
    }

    /// What `name` lists: one array, or in older archives a numbered field for each.
    static Result<std::vector<const PropertyList*>> references(const Dictionary& fields,
                                                               const std::string& name,
                                                               const std::string& olderName) {
        std::vector<const PropertyList*> found;
        if (const PropertyList* list = find(fields, name)) {
            if (list->array() == nullptr) return refused("holds a collection with a wrong " + name);
            for (const PropertyList& reference : *list->array()) found.push_back(&reference);
            return found;
        }
        while (const PropertyList* reference = find(fields, olderName + "." + std::to_string(found.size())))
            found.push_back(reference);
        return found;
    }

    Result<PropertyList> array(const Dictionary& fields) {
        const auto listed = references(fields, "NS.objects", "NS.object");
        if (!listed) return tl::unexpected(listed.error());
        PropertyList::Array elements;
        for (const PropertyList* reference : *listed) {
            Result<PropertyList> element = object(reference);
            if (!element) return element;
            elements.push_back(std::move(*element));
        }
        return elements;
    }

    Result<PropertyList> dictionary(const Dictionary& fields) {
        const auto keys = references(fields, "NS.keys", "NS.key");
        if (!keys) return tl::unexpected(keys.error());
        const auto values = references(fields, "NS.objects", "NS.object");
        if (!values) return tl::unexpected(values.error());
        if (keys->size() != values->size())
            return refused("holds a dictionary whose keys and values differ in number");
        Dictionary entries;
        for (std::size_t i = 0; i < keys->size(); ++i) {
            Result<PropertyList> key = object((*keys)[i]);
            if (!key) return key;
            if (key->text() == nullptr) return refused("holds a dictionary with a key that is not a text");
            Result<PropertyList> value = object((*values)[i]);
            if (!value) return value;
            entries.insert_or_assign(*key->text(), std::move(*value));
        }
        return entries;
    }

    const PropertyList::Array& objects_;
    std::vector<bool> isOpen_;
    std::size_t depth_ = 0;
    Budget budget_ = smallBudget();
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
    const PropertyList::Dictionary& fields = *list->dictionary();
    const PropertyList* archiver = find(fields, "$archiver");
    const PropertyList* version = find(fields, "$version");
    if (archiver == nullptr || *archiver != PropertyList(archiverName) || version == nullptr ||
        *version != PropertyList(archiveVersion))
        return refused("was not written by a keyed archiver of a known version");
    const PropertyList* objects = find(fields, "$objects");
    if (objects == nullptr || objects->array() == nullptr || objects->array()->empty() ||
        objects->array()->front() != PropertyList(nothing))
        return refused("has no objects");
    const PropertyList* top = find(fields, "$top");
    const PropertyList* root =
        top == nullptr || top->dictionary() == nullptr ? nullptr : find(*top->dictionary(), "root");
    if (root == nullptr) return refused("has no root");
    return Unarchiver(*objects->array()).object(root);
}

std::string archivedObject(const PropertyList& root) { return Archiver().archive(root); }

}  // namespace platform
