#include "platform/settings/binary_property_list.h"

#include <bit>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>
#include "platform/settings/property_list_limits.h"
#include "platform/settings/property_list_text.h"
#include "platform/settings/utf8.h"

namespace platform::property_list {
namespace {

// An object starts with a byte of type (high four bits) and length or kind (low four bits).
enum class Type : unsigned {
    simple = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    ascii = 0x5,
    utf16 = 0x6,
    identifier = 0x8,
    array = 0xA,
    dictionary = 0xD,
};

constexpr unsigned falseKind = 0x8;
constexpr unsigned trueKind = 0x9;
constexpr unsigned lengthFollows = 0xF;
constexpr std::size_t trailerSize = 32;

/// A big-endian number of up to eight bytes.
std::uint64_t readNumber(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

/// An array or dictionary whose elements are being read: one level of an explicit stack instead of recursion.
struct Level {
    std::uint64_t object = 0;
    bool isDictionary = false;
    std::string_view references;
    std::size_t count = 0;
    std::size_t next = 0;
    PropertyList::Array elements;
    PropertyList::Dictionary entries;
    std::string key;
};

class Reader {
public:
    Reader(std::string_view bytes, Budget budget) : bytes_(bytes), budget_(budget) {}

    Result<PropertyList> read() {
        if (!readTrailer()) return refused("the binary property list has a damaged trailer");
        std::optional<PropertyList> finished;
        if (!enter(top_, finished)) return damaged();
        while (!levels_.empty()) {
            if (finished) take(std::move(*finished));
            finished.reset();
            Level& level = levels_.back();
            if (level.next == level.count) {
                finished = finish(level);
                levels_.pop_back();
                if (levels_.empty()) break;
            } else if (!enterNext(level, finished)) {
                return damaged();
            }
        }
        return std::move(*finished);
    }

private:
    tl::unexpected<Error> damaged() const {
        return refused("the binary property list is damaged: " + std::string(problem_));
    }

    bool readTrailer() {
        if (bytes_.size() < binaryHeader.size() + trailerSize) return false;
        const std::string_view trailer = bytes_.substr(bytes_.size() - trailerSize);
        offsetSize_ = static_cast<unsigned char>(trailer[6]);
        referenceSize_ = static_cast<unsigned char>(trailer[7]);
        count_ = readNumber(trailer.substr(8, 8));
        top_ = readNumber(trailer.substr(16, 8));
        const std::uint64_t table = readNumber(trailer.substr(24, 8));
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
        const std::size_t end = bytes_.size() - trailerSize;
        if (count_ == 0 || count_ > maximumObjects || table < binaryHeader.size() || table > end)
            return false;
        if (count_ * offsetSize_ > end - table) return false;
        objects_ = bytes_.substr(0, table);
        offsets_ = bytes_.substr(table, count_ * offsetSize_);
        return top_ < count_;
    }

    bool fail(const char* problem) {
        problem_ = problem;
        return false;
    }

    /// The `size` bytes at the cursor, and moves past them.
    bool slice(std::uint64_t size, std::string_view& out) {
        if (size > objects_.size() - cursor_) return fail("an object reaches past the end");
        out = objects_.substr(cursor_, size);
        cursor_ += size;
        return true;
    }

    bool readLength(unsigned kind, std::uint64_t& length) {
        length = kind;
        if (kind != lengthFollows) return true;
        std::string_view marker;
        std::string_view number;
        if (!slice(1, marker)) return false;
        const auto byte = static_cast<unsigned char>(marker[0]);
        if (byte >> 4 != static_cast<unsigned>(Type::integer) || (byte & 0xF) > 3)
            return fail("the length of an object is not an integer");
        if (!slice(1U << (byte & 0xF), number)) return false;
        length = readNumber(number);
        return true;
    }

    /// Reads a plain object into `value`, or pushes a level for an array or a dictionary.
    bool enter(std::uint64_t object, std::optional<PropertyList>& value) {
        if (object >= count_) return fail("a reference to an object that is not there");
        cursor_ = readNumber(offsets_.substr(object * offsetSize_, offsetSize_));
        if (cursor_ < binaryHeader.size() || cursor_ >= objects_.size())
            return fail("an offset points outside of the objects");
        const auto marker = static_cast<unsigned char>(objects_[cursor_++]);
        const auto type = static_cast<Type>(marker >> 4);
        const unsigned kind = marker & 0xF;
        if (type == Type::array || type == Type::dictionary) return push(object, type, kind);
        return readPlain(type, kind, value);
    }

    bool push(std::uint64_t object, Type type, unsigned kind) {
        if (levels_.size() == maximumDepth) return fail("nested too deeply");
        for (const Level& level : levels_) {
            if (level.object == object) return fail("an object contains itself");
        }
        Level level;
        level.object = object;
        level.isDictionary = type == Type::dictionary;
        std::uint64_t count = 0;
        if (!readLength(kind, count)) return false;
        if (count > maximumObjects) return fail("too many objects");
        if (!slice(count * referenceSize_ * (level.isDictionary ? 2 : 1), level.references)) return false;
        if (!budget_.take()) return fail("too many objects");
        level.count = count;
        levels_.push_back(std::move(level));
        return true;
    }

    std::uint64_t reference(const Level& level, std::size_t index) const {
        return readNumber(level.references.substr(index * referenceSize_, referenceSize_));
    }

    bool enterNext(Level& level, std::optional<PropertyList>& value) {
        const std::size_t index = level.next++;
        if (!level.isDictionary) return enter(reference(level, index), value);
        const std::size_t depth = levels_.size();
        const std::uint64_t element = reference(level, level.count + index);
        std::optional<PropertyList> key;
        if (!enter(reference(level, index), key)) return false;
        if (levels_.size() != depth || key->text() == nullptr) return fail("a key that is not a text");
        level.key = *key->text();
        return enter(element, value);
    }

    /// Gives the value that was just read to the level that asked for it.
    void take(PropertyList value) {
        Level& level = levels_.back();
        if (level.isDictionary) {
            level.entries.insert_or_assign(std::move(level.key), std::move(value));
        } else {
            level.elements.push_back(std::move(value));
        }
    }

    static PropertyList finish(Level& level) {
        if (level.isDictionary) return std::move(level.entries);
        return std::move(level.elements);
    }

    bool readPlain(Type type, unsigned kind, std::optional<PropertyList>& value) {
        switch (type) {
            case Type::simple:
                if (kind != falseKind && kind != trueKind) return fail("an object of unknown type");
                value = kind == trueKind;
                break;
            case Type::integer:
                if (!readInteger(kind, value)) return false;
                break;
            case Type::real:
                if (!readReal(kind, value)) return false;
                break;
            case Type::date:
                if (!readDate(kind, value)) return false;
                break;
            case Type::identifier:
                if (!readIdentifier(kind, value)) return false;
                break;
            case Type::data:
            case Type::ascii:
            case Type::utf16: return readContent(type, kind, value);
            default: return fail("an object of unknown type");
        }
        return budget_.take() || fail("too many objects");
    }

    bool readInteger(unsigned kind, std::optional<PropertyList>& value) {
        if (kind > 4) return fail("an integer of an unknown width");
        std::string_view digits;
        if (!slice(1U << kind, digits)) return false;
        if (digits.size() == 16) {
            // The high half only says that the low one is unsigned, or repeats its sign.
            const auto high = static_cast<std::int64_t>(readNumber(digits.substr(0, 8)));
            const auto low = static_cast<std::int64_t>(readNumber(digits.substr(8)));
            if (high != (low < 0 ? -1 : 0)) return fail("an integer beyond 64 bits");
            digits.remove_prefix(8);
        }
        // One, two and four bytes have no sign; eight have one.
        value = static_cast<std::int64_t>(readNumber(digits));
        return true;
    }

    bool readReal(unsigned kind, std::optional<PropertyList>& value) {
        if (kind != 2 && kind != 3) return fail("a real of an unknown width");
        std::string_view digits;
        if (!slice(1U << kind, digits)) return false;
        const std::uint64_t bits = readNumber(digits);
        value = kind == 3 ? std::bit_cast<double>(bits)
                          : static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        return true;
    }

    bool readDate(unsigned kind, std::optional<PropertyList>& value) {
        std::string_view digits;
        if (kind != 3) return fail("a date of an unknown width");
        if (!slice(8, digits)) return false;
        const auto seconds = std::bit_cast<double>(readNumber(digits));
        if (seconds != seconds) return fail("a date that is not a number");
        value = instantFromReferenceDate(seconds);
        return true;
    }

    bool readIdentifier(unsigned kind, std::optional<PropertyList>& value) {
        std::string_view digits;
        if (kind > 7) return fail("an identifier of an unknown width");
        if (!slice(kind + 1, digits)) return false;
        const auto number = static_cast<std::int64_t>(readNumber(digits));
        if (number < 0) return fail("an identifier beyond 64 bits");
        value = PropertyList::Dictionary{{identifierKey, number}};
        return true;
    }

    bool readContent(Type type, unsigned kind, std::optional<PropertyList>& value) {
        std::uint64_t length = 0;
        std::string_view content;
        if (!readLength(kind, length)) return false;
        if (length > objects_.size()) return fail("an object reaches past the end");
        if (!slice(type == Type::utf16 ? length * 2 : length, content)) return false;
        if (!budget_.take(content.size())) return fail("too much content");
        if (type == Type::data) {
            value = Bytes(std::string(content));
            return true;
        }
        return type == Type::ascii ? readAscii(content, value) : readUtf16(content, value);
    }

    bool readAscii(std::string_view content, std::optional<PropertyList>& value) {
        for (const char byte : content) {
            if (static_cast<unsigned char>(byte) > 0x7F) return fail("a plain text that is not ASCII");
        }
        value = std::string(content);
        return true;
    }

    bool readUtf16(std::string_view content, std::optional<PropertyList>& value) {
        std::string text;
        text.reserve(content.size());
        for (std::size_t at = 0; at < content.size(); at += 2) {
            auto unit = static_cast<char32_t>(readNumber(content.substr(at, 2)));
            if (unit >= 0xD800 && unit < 0xE000) {
                at += 2;
                const char32_t low =
                    at < content.size() ? static_cast<char32_t>(readNumber(content.substr(at, 2))) : 0;
                if (unit >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) return fail("half a surrogate pair");
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            }
            appendUtf8(text, unit);
        }
        value = std::move(text);
        return true;
    }

    std::string_view bytes_;
    std::string_view objects_;
    std::string_view offsets_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t top_ = 0;
    std::size_t cursor_ = 0;
    std::vector<Level> levels_;
    Budget budget_;
    const char* problem_ = "";
};

void appendNumber(std::string& out, std::uint64_t number, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) out += static_cast<char>(number >> (8 * i) & 0xFF);
}

/// How many bytes hold `number`: 1, 2, 4 or 8.
std::size_t widthOf(std::uint64_t number) {
    if (number <= 0xFF) return 1;
    if (number <= 0xFFFF) return 2;
    return number <= 0xFFFF'FFFF ? 4 : 8;
}

void appendInteger(std::string& out, std::uint64_t number) {
    const std::size_t width = widthOf(number);
    out += static_cast<char>(0x10 | std::countr_zero(width));
    appendNumber(out, number, width);
}

void appendMarker(std::string& out, Type type, std::size_t length) {
    const bool isShort = length < lengthFollows;
    out += static_cast<char>(static_cast<unsigned>(type) << 4 | (isShort ? length : lengthFollows));
    if (!isShort) appendInteger(out, length);
}

void appendText(std::string& out, const std::string& text) {
    std::u16string units;
    bool isAscii = true;
    for (std::size_t at = 0; at < text.size();) {
        const auto read = nextCodePoint(text, at);
        if (!read) ++at;
        const char32_t codePoint = read.value_or(U'\uFFFD');
        isAscii = isAscii && codePoint < 0x80;
        if (codePoint >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
        } else {
            units += static_cast<char16_t>(codePoint);
        }
    }
    appendMarker(out, isAscii ? Type::ascii : Type::utf16, units.size());
    for (const char16_t unit : units) appendNumber(out, unit, isAscii ? 1 : 2);
}

class Writer {
public:
    std::string write(const PropertyList& root) {
        const std::size_t top = add(root);
        const std::size_t referenceSize = widthOf(objects_.size());
        std::string out(binaryHeader);
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            out += object.bytes;
            for (const std::size_t reference : object.references) appendNumber(out, reference, referenceSize);
        }
        const std::size_t table = out.size();
        const std::size_t offsetSize = widthOf(table);
        for (const std::size_t offset : offsets) appendNumber(out, offset, offsetSize);
        out.append(6, '\0');
        out += static_cast<char>(offsetSize);
        out += static_cast<char>(referenceSize);
        appendNumber(out, objects_.size(), 8);
        appendNumber(out, top, 8);
        appendNumber(out, table, 8);
        return out;
    }

private:
    struct Object {
        std::string bytes;
        std::vector<std::size_t> references;
    };

    std::size_t add(const PropertyList& value) {
        if (const std::string* text = value.text()) return addText(*text);
        if (const auto* array = value.array()) return addArray(*array);
        if (const auto* dictionary = value.dictionary()) return addDictionary(*dictionary);
        objects_.push_back({plainBytes(value), {}});
        return objects_.size() - 1;
    }

    /// The same text, such as a key, is written once.
    std::size_t addText(const std::string& text) {
        const auto [known, isNew] = texts_.try_emplace(text, objects_.size());
        if (isNew) appendText(objects_.emplace_back().bytes, text);
        return known->second;
    }

    std::size_t addArray(const PropertyList::Array& array) {
        const std::size_t index = objects_.size();
        appendMarker(objects_.emplace_back().bytes, Type::array, array.size());
        std::vector<std::size_t> references;
        references.reserve(array.size());
        for (const PropertyList& element : array) references.push_back(add(element));
        objects_[index].references = std::move(references);
        return index;
    }

    std::size_t addDictionary(const PropertyList::Dictionary& dictionary) {
        const std::size_t index = objects_.size();
        std::string& bytes = objects_.emplace_back().bytes;
        const auto identifier = dictionary.find(identifierKey);
        if (dictionary.size() == 1 && identifier != dictionary.end() && identifier->second.integer()) {
            const auto number = static_cast<std::uint64_t>(*identifier->second.integer());
            bytes += static_cast<char>(0x80 | (widthOf(number) - 1));
            appendNumber(bytes, number, widthOf(number));
            return index;
        }
        appendMarker(bytes, Type::dictionary, dictionary.size());
        std::vector<std::size_t> references;
        references.reserve(2 * dictionary.size());
        for (const auto& entry : dictionary) references.push_back(addText(entry.first));
        for (const auto& entry : dictionary) references.push_back(add(entry.second));
        objects_[index].references = std::move(references);
        return index;
    }

    static std::string plainBytes(const PropertyList& value) {
        std::string bytes;
        if (const bool* boolean = value.boolean()) {
            bytes += static_cast<char>(*boolean ? trueKind : falseKind);
        } else if (const std::int64_t* integer = value.integer()) {
            appendInteger(bytes, static_cast<std::uint64_t>(*integer));
        } else if (const double* real = value.real()) {
            bytes += '\x23';
            appendNumber(bytes, std::bit_cast<std::uint64_t>(*real), 8);
        } else if (const Instant* date = value.date()) {
            bytes += '\x33';
            appendNumber(bytes, std::bit_cast<std::uint64_t>(secondsSinceReferenceDate(*date)), 8);
        } else if (const Bytes* data = value.data()) {
            appendMarker(bytes, Type::data, data->size());
            bytes += data->view();
        }
        return bytes;
    }

    std::vector<Object> objects_;
    std::unordered_map<std::string, std::size_t> texts_;
};

}  // namespace

Result<PropertyList> readBinary(std::string_view bytes, Budget budget) {
    return Reader(bytes, budget).read();
}

std::string writeBinary(const PropertyList& root) { return Writer().write(root); }

}  // namespace platform::property_list
