#include "platform/settings/stored_value.h"

#include <bit>
#include <chrono>
#include <cstdint>
#include <utility>

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

    bool isAtEnd() const { return rest_.empty(); }

    std::optional<PropertyList> value(int depthLeft) {
        if (rest_.empty()) return std::nullopt;
        const char tag = rest_.front();
        rest_.remove_prefix(1);
        switch (tag) {
            case trueTag: return true;
            case falseTag: return false;
            case textTag:
                if (auto text = content()) return std::string(*text);
                break;
            case dataTag:
                if (auto data = content()) return Bytes(std::string(*data));
                break;
            case integerTag:
                if (auto bits = number()) return static_cast<std::int64_t>(*bits);
                break;
            case realTag:
                if (auto bits = number()) return std::bit_cast<double>(*bits);
                break;
            case dateTag:
                if (auto bits = number())
                    return Instant(std::chrono::nanoseconds(static_cast<std::int64_t>(*bits)));
                break;
            case arrayTag: return depthLeft == 0 ? std::nullopt : array(depthLeft - 1);
            case dictionaryTag: return depthLeft == 0 ? std::nullopt : dictionary(depthLeft - 1);
            default: break;
        }
        return std::nullopt;
    }

private:
    std::optional<std::uint64_t> number() {
        if (rest_.size() < 8) return std::nullopt;
        std::uint64_t value = 0;
        for (int i = 7; i >= 0; --i)
            value = value << 8 | static_cast<unsigned char>(rest_[static_cast<std::size_t>(i)]);
        rest_.remove_prefix(8);
        return value;
    }

    std::optional<std::string_view> content() {
        const auto size = number();
        if (!size || *size > rest_.size()) return std::nullopt;
        const std::string_view bytes = rest_.substr(0, *size);
        rest_.remove_prefix(*size);
        return bytes;
    }

    std::optional<PropertyList> array(int depthLeft) {
        const auto count = number();
        if (!count || *count > rest_.size()) return std::nullopt;
        PropertyList::Array elements;
        for (std::uint64_t i = 0; i < *count; ++i) {
            std::optional<PropertyList> element = value(depthLeft);
            if (!element) return std::nullopt;
            elements.push_back(std::move(*element));
        }
        return elements;
    }

    std::optional<PropertyList> dictionary(int depthLeft) {
        const auto count = number();
        if (!count || *count > rest_.size()) return std::nullopt;
        PropertyList::Dictionary entries;
        for (std::uint64_t i = 0; i < *count; ++i) {
            const auto key = content();
            std::optional<PropertyList> element = key ? value(depthLeft) : std::nullopt;
            if (!element || !entries.try_emplace(std::string(*key), std::move(*element)).second)
                return std::nullopt;
        }
        return entries;
    }

    std::string_view rest_;
};

}  // namespace

std::optional<std::string> encodeStoredValue(const PropertyList& value) {
    std::string bytes;
    if (!append(bytes, value, maximumStoredDepth)) return std::nullopt;
    return bytes;
}

std::optional<PropertyList> decodeStoredValue(std::string_view bytes) {
    Decoder decoder(bytes);
    std::optional<PropertyList> value = decoder.value(maximumStoredDepth);
    if (!decoder.isAtEnd()) return std::nullopt;
    return value;
}

}  // namespace platform
