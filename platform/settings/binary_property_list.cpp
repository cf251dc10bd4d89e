#include "platform/settings/property_list_formats.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>
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
std::uint64_t numberIn(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

/// The first problem stays. After it nothing more is read, and what was read must not be used.
class Reader {
public:
    Reader(std::string_view bytes, Budget budget) : bytes_(bytes), budget_(budget) {}

    Result<PropertyList> read() {
        if (!readTrailer()) return refused("the binary property list has a damaged trailer");
        PropertyList root = readObject(top_);
        if (problem_ == nullptr) return root;
        return refused("the binary property list is damaged: " + std::string(problem_));
    }

private:
    bool readTrailer() {
        if (bytes_.size() < binaryHeader.size() + trailerSize) return false;
        const std::string_view trailer = bytes_.substr(bytes_.size() - trailerSize);
        offsetSize_ = static_cast<unsigned char>(trailer[6]);
        referenceSize_ = static_cast<unsigned char>(trailer[7]);
        count_ = numberIn(trailer.substr(8, 8));
        top_ = numberIn(trailer.substr(16, 8));
        const std::uint64_t table = numberIn(trailer.substr(24, 8));
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
        const std::size_t end = bytes_.size() - trailerSize;
        if (count_ == 0 || count_ > maximumObjects || table < binaryHeader.size() || table > end)
            return false;
        if (count_ * offsetSize_ > end - table) return false;
        objects_ = bytes_.substr(0, table);
        offsets_ = bytes_.substr(table, count_ * offsetSize_);
        return top_ < count_;
    }

    PropertyList fail(const char* problem) {
        if (problem_ == nullptr) problem_ = problem;
        return {};
    }

    /// The `size` bytes at the cursor, and moves past them.
    std::string_view take(std::uint64_t size) {
        if (size > objects_.size() - cursor_) fail("an object reaches past the end");
        if (problem_ != nullptr) return {};
        cursor_ += size;
        return objects_.substr(cursor_ - size, size);
    }

    std::uint64_t takeNumber(std::uint64_t size) { return numberIn(take(size)); }

    std::uint64_t takeLength(unsigned kind) {
        if (kind != lengthFollows) return kind;
        const std::uint64_t marker = takeNumber(1);
        if (marker >> 4 != static_cast<unsigned>(Type::integer) || (marker & 0xF) > 3)
            fail("the length of an object is not an integer");
        return takeNumber(1U << (marker & 0x3));
    }

    PropertyList readObject(std::uint64_t object) {
        if (object >= count_) return fail("a reference to an object that is not there");
        cursor_ = numberIn(offsets_.substr(object * offsetSize_, offsetSize_));
        if (cursor_ < binaryHeader.size() || cursor_ >= objects_.size())
            return fail("an offset points outside of the objects");
        const auto marker = static_cast<unsigned char>(objects_[cursor_++]);
        const auto type = static_cast<Type>(marker >> 4);
        const unsigned kind = marker & 0xF;
        switch (type) {
            case Type::data:
            case Type::ascii:
            case Type::utf16: return readContent(type, kind);
            case Type::array:
            case Type::dictionary: return readCollection(object, type, kind);
            default: return budget_.take() ? readNumber(type, kind) : fail("too many objects");
        }
    }

    PropertyList readCollection(std::uint64_t object, Type type, unsigned kind) {
        if (open_.size() == maximumDepth) return fail("nested too deeply");
        if (std::ranges::find(open_, object) != open_.end()) return fail("an object contains itself");
        const bool isDictionary = type == Type::dictionary;
        const std::uint64_t count = takeLength(kind);
        if (count > maximumObjects || !budget_.take()) return fail("too many objects");
        const std::string_view references = take(count * referenceSize_ * (isDictionary ? 2 : 1));
        const auto element = [&](std::uint64_t index) {
            return readObject(numberIn(references.substr(index * referenceSize_, referenceSize_)));
        };
        open_.push_back(object);
        PropertyList::Array elements;
        PropertyList::Dictionary entries;
        for (std::uint64_t index = 0; index < count && problem_ == nullptr; ++index) {
            PropertyList first = element(index);
            if (!isDictionary) {
                elements.push_back(std::move(first));
            } else if (const std::string* key = first.text()) {
                entries.insert_or_assign(*key, element(count + index));
            } else {
                fail("a key that is not a text");
            }
        }
        open_.pop_back();
        if (isDictionary) return entries;
        return elements;
    }

    /// Reads what has a fixed size.
    PropertyList readNumber(Type type, unsigned kind) {
        switch (type) {
            case Type::simple:
                if (kind != falseKind && kind != trueKind) break;
                return kind == trueKind;
            case Type::integer: return readInteger(kind);
            case Type::real:
                if (kind == 3) return std::bit_cast<double>(takeNumber(8));
                if (kind != 2) return fail("a real of an unknown width");
                return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(takeNumber(4))));
            case Type::date: {
                if (kind != 3) return fail("a date of an unknown width");
                const auto seconds = std::bit_cast<double>(takeNumber(8));
                if (std::isnan(seconds)) return fail("a date that is not a number");
                return instantFromReferenceDate(seconds);
            }
            case Type::identifier: {
                if (kind > 7) return fail("an identifier of an unknown width");
                const auto number = static_cast<std::int64_t>(takeNumber(kind + 1));
                if (number < 0) return fail("an identifier beyond 64 bits");
                return PropertyList::Dictionary{{identifierKey, number}};
            }
            default: break;
        }
        return fail("an object of unknown type");
    }

    PropertyList readInteger(unsigned kind) {
        if (kind > 4) return fail("an integer of an unknown width");
        const bool isLong = kind == 4;
        const auto high = static_cast<std::int64_t>(isLong ? takeNumber(8) : 0);
        // One, two and four bytes have no sign; eight have one.
        const auto low = static_cast<std::int64_t>(takeNumber(isLong ? 8 : 1U << kind));
        // The high half of sixteen only says that the low one is unsigned, or repeats its sign.
        if (isLong && high != (low < 0 ? -1 : 0)) return fail("an integer beyond 64 bits");
        return low;
    }

    PropertyList readContent(Type type, unsigned kind) {
        const std::uint64_t length = takeLength(kind);
        if (length > objects_.size()) return fail("an object reaches past the end");
        const std::string_view content = take(type == Type::utf16 ? length * 2 : length);
        if (!budget_.take(content.size())) return fail("too much content");
        if (type == Type::utf16) return readUtf16(content);
        if (type == Type::data) return Bytes(std::string(content));
        if (std::ranges::any_of(content, [](unsigned char byte) { return byte > 0x7F; }))
            return fail("a plain text that is not ASCII");
        return std::string(content);
    }

    PropertyList readUtf16(std::string_view content) {
        std::string text;
        text.reserve(content.size());
        const auto unitAt = [&](std::size_t at) {
            return static_cast<char32_t>(numberIn(content.substr(at, 2)));
        };
        for (std::size_t at = 0; at < content.size(); at += 2) {
            char32_t unit = unitAt(at);
            if (unit >= 0xD800 && unit < 0xE000) {
                at += 2;
                const char32_t low = at < content.size() ? unitAt(at) : 0;
                if (unit >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) return fail("half a surrogate pair");
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            }
            appendUtf8(text, unit);
        }
        return text;
    }

    std::string_view bytes_;
    std::string_view objects_;
    std::string_view offsets_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t top_ = 0;
    std::size_t cursor_ = 0;
    /// The collections that are being read, outermost first.
    std::vector<std::uint64_t> open_;
    Budget budget_;
    const char* problem_ = nullptr;
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
