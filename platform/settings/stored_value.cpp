#include "platform/settings/stored_value.h"

#include <bit>
#include <chrono>
#include <cstdint>
#include <numeric>

namespace platform {
namespace {

// Each value is a letter for its type and then its content: eight bytes for a number or a date, a length
// and as many bytes for a text or data, a count and as many values (each after its key, in a
// dictionary) for a collection. Numbers have their lowest byte first. Stores on disk hold these letters.
constexpr char textTag = 's';
constexpr char integerTag = 'i';
constexpr char realTag = 'r';
constexpr char trueTag = 'T';
constexpr char falseTag = 'F';
constexpr char dataTag = 'd';
constexpr char dateTag = 'w';
constexpr char arrayTag = '[';
constexpr char dictionaryTag = '{';

void appendNumber(std::string& out, std::uint64_t number) {
    for (int i = 0; i < 8; ++i) out += static_cast<char>(number >> (8 * i) & 0xFF);
}

void appendContent(std::string& out, std::string_view content) {
    appendNumber(out, content.size());
    out += content;
}

std::int64_t nanosecondsOf(Instant instant) {
    return std::chrono::nanoseconds(instant.time_since_epoch()).count();
}

bool append(std::string& out, const PropertyList& value, int depthLeft);

bool appendCollection(std::string& out, const PropertyList& value, int depthLeft) {
    if (depthLeft == 0) return false;
    if (const auto* array = value.array()) {
        out += arrayTag;
        appendNumber(out, array->size());
        for (const PropertyList& element : *array) {
            if (!append(out, element, depthLeft - 1)) return false;
        }
        return true;
    }
    out += dictionaryTag;
    appendNumber(out, value.dictionary()->size());
    for (const auto& [key, element] : *value.dictionary()) {
        appendContent(out, key);
        if (!append(out, element, depthLeft - 1)) return false;
    }
    return true;
}

bool append(std::string& out, const PropertyList& value, int depthLeft) {
    if (const std::string* text = value.text()) {
        out += textTag;
        appendContent(out, *text);
    } else if (const std::int64_t* integer = value.integer()) {
        out += integerTag;
        appendNumber(out, static_cast<std::uint64_t>(*integer));
    } else if (const double* real = value.real()) {
        out += realTag;
        appendNumber(out, std::bit_cast<std::uint64_t>(*real));
    } else if (const bool* boolean = value.boolean()) {
        out += *boolean ? trueTag : falseTag;
    } else if (const Bytes* data = value.data()) {
        out += dataTag;
        appendContent(out, data->view());
    } else if (const Instant* date = value.date()) {
        out += dateTag;
        appendNumber(out, static_cast<std::uint64_t>(nanosecondsOf(*date)));
    } else {
        return appendCollection(out, value, depthLeft);
    }
    return true;
}

class Decoder {
public:
    explicit Decoder(std::string_view bytes) : rest_(bytes) {}

    std::optional<PropertyList> decode() {
        PropertyList decoded = value(maximumStoredDepth);
        if (isDamaged_ || !rest_.empty()) return std::nullopt;
        return decoded;
    }

private:
    PropertyList value(int depthLeft) {
        const std::string_view tag = take(1);
        switch (tag.empty() ? '\0' : tag[0]) {
            case trueTag: return true;
            case falseTag: return false;
            case textTag: return std::string(content());
            case dataTag: return Bytes(std::string(content()));
            case integerTag: return static_cast<std::int64_t>(number());
            case realTag: return std::bit_cast<double>(number());
            case dateTag: return Instant(std::chrono::nanoseconds(static_cast<std::int64_t>(number())));
            case arrayTag:
                if (depthLeft > 0) return array(depthLeft - 1);
                break;
            case dictionaryTag:
                if (depthLeft > 0) return dictionary(depthLeft - 1);
                break;
            default: break;
        }
        isDamaged_ = true;
        return {};
    }

    std::string_view take(std::uint64_t size) {
        isDamaged_ = isDamaged_ || size > rest_.size();
        if (isDamaged_) return {};
        const std::string_view bytes = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return bytes;
    }

    std::uint64_t number() {
        const std::string_view bytes = take(8);
        return std::accumulate(bytes.rbegin(), bytes.rend(), std::uint64_t{0},
                               [](std::uint64_t value, unsigned char byte) { return value << 8 | byte; });
    }

    std::string_view content() { return take(number()); }

    PropertyList array(int depthLeft) {
        PropertyList::Array elements;
        for (std::uint64_t left = number(); left > 0 && !isDamaged_; --left)
            elements.push_back(value(depthLeft));
        return elements;
    }

    PropertyList dictionary(int depthLeft) {
        PropertyList::Dictionary entries;
        for (std::uint64_t left = number(); left > 0 && !isDamaged_; --left) {
            const std::string key(content());
            // A key that comes twice was not written by us.
            if (!entries.try_emplace(key, value(depthLeft)).second) isDamaged_ = true;
        }
        return entries;
    }

    std::string_view rest_;
    /// Stays; what was read must not be used then.
    bool isDamaged_ = false;
};

}  // namespace

std::optional<std::string> encodeStoredValue(const PropertyList& value) {
    std::string bytes;
    if (!append(bytes, value, maximumStoredDepth)) return std::nullopt;
    return bytes;
}

std::optional<PropertyList> decodeStoredValue(std::string_view bytes) { return Decoder(bytes).decode(); }

}  // namespace platform
