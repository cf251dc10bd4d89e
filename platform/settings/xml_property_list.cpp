#include "platform/settings/property_list_formats.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include "platform/base/ascii.h"
#include "platform/settings/utf8.h"

namespace platform::property_list {
namespace {

constexpr std::string_view blanks = " \t\r\n";

/// Characters that XML cannot represent in any way.
bool isForbidden(char32_t codePoint) {
    const bool isControl = codePoint < 0x20 && codePoint != '\t' && codePoint != '\n' && codePoint != '\r';
    return isControl || codePoint == 0xFFFE || codePoint == 0xFFFF;
}

bool holdsForbidden(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto codePoint = nextCodePoint(text, at);
        if (!codePoint || isForbidden(*codePoint)) return true;
    }
    return false;
}

// ---- What the parser itself would accept, or spend too much on

/// Checks the markup before the parser builds its tree.
class Inspection {
public:
    explicit Inspection(std::string_view xml) : xml_(xml) {}

    bool passes() {
        while ((at_ = xml_.find_first_of("<&=", at_)) != std::string_view::npos) {
            if (!(xml_[at_] == '<'   ? inspectMarkup()
                  : xml_[at_] == '&' ? inspectReference()
                                     : inspectEquals()))
                return false;
        }
        return true;
    }

private:
    bool skipPast(std::string_view end) {
        const std::size_t found = xml_.find(end, at_);
        if (found == std::string_view::npos) return false;
        at_ = found + end.size();
        return true;
    }

    bool startsWith(std::string_view text) const { return xml_.substr(at_, text.size()) == text; }

    bool inspectMarkup() {
        // An element costs at most four: its two tags, and those of its key.
        if (++nodes_ > 4 * maximumObjects) return false;
        if (startsWith("<!--")) return skipPast("-->");
        if (startsWith("<![CDATA[")) return skipPast("]]>");
        if (startsWith("<!DOCTYPE")) return inspectDocumentType();
        ++at_;
        return true;
    }

    bool inspectDocumentType() {
        const std::size_t first = at_;
        return skipPast(">") && xml_.substr(first, at_ - first).find('[') == std::string_view::npos;
    }

    bool inspectEquals() {
        ++at_;
        const bool mayBeAttribute = at_ < xml_.size() && (xml_[at_] == '"' || xml_[at_] == '\'');
        return !mayBeAttribute || ++nodes_ <= 4 * maximumObjects;
    }

    bool inspectReference() {
        const std::size_t end = xml_.find(';', at_);
        if (end == std::string_view::npos) return false;
        std::string_view name = xml_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        if (!name.starts_with('#'))
            return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos";
        const bool isHexadecimal = name.starts_with("#x");
        name.remove_prefix(isHexadecimal ? 2 : 1);
        const auto codePoint = parsedNumber<std::uint32_t>(name, isHexadecimal ? 16 : 10);
        return codePoint && *codePoint <= 0x10FFFF && (*codePoint < 0xD800 || *codePoint > 0xDFFF) &&
               !isForbidden(*codePoint);
    }

    std::string_view xml_;
    std::size_t at_ = 0;
    std::size_t nodes_ = 0;
};

// ---- From elements to values

bool isText(const pugi::xml_node& node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// The element's text; nothing when it holds elements.
std::optional<std::string> textOf(const pugi::xml_node& element) {
    std::string text;
    for (const pugi::xml_node& child : element) {
        if (!isText(child)) return std::nullopt;
        text += child.value();
    }
    return text;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal) text.remove_prefix(2);
    const auto magnitude = parsedNumber<std::uint64_t>(text, isHexadecimal ? 16 : 10);
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!magnitude || *magnitude > largest + (isNegative ? 1 : 0)) return std::nullopt;
    return static_cast<std::int64_t>(isNegative ? 0 - *magnitude : *magnitude);
}

std::optional<double> parseReal(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    return parsedNumber<double>(text);  // takes "inf" and "nan" too
}

std::optional<Bytes> parseData(std::string_view text) {
    std::string digits;
    digits.reserve(text.size());
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char digit) { return blanks.find(digit) == std::string_view::npos; });
    std::optional<std::string> bytes = base64Decoded(digits);
    if (!bytes) return std::nullopt;
    return Bytes(std::move(*bytes));
}

class Reader {
public:
    explicit Reader(Budget budget) : budget_(budget) {}

    Result<PropertyList> read(const pugi::xml_node& element, std::size_t depth = 0) {
        if (!budget_.take()) return refused("the XML property list holds too many objects");
        const std::string_view name = element.name();
        if (name == "dict" || name == "array") {
            if (depth == maximumDepth) return refused("the XML property list is nested too deeply");
            if (name == "dict") return readDictionary(element, depth + 1);
            return readArray(element, depth + 1);
        }
        std::optional<std::string> text = textOf(element);
        std::optional<PropertyList> value;
        if (text) value = readPlain(name, std::move(*text));
        if (!value) return refused("the XML property list holds an invalid <" + std::string(name) + ">");
        return std::move(*value);
    }

private:
    static std::optional<PropertyList> readPlain(std::string_view name, std::string text) {
        if (name == "string") return PropertyList(std::move(text));
        if (name == "true" || name == "false") return PropertyList(name == "true");
        const std::string_view content = trimmed(text);
        if (name == "integer") return parseInteger(content);
        if (name == "real") return parseReal(content);
        if (name == "date") return parseDateText(content);
        if (name == "data") return parseData(content);
        return std::nullopt;
    }

    /// Whether a node is only blanks between elements.
    static bool isSkipped(const pugi::xml_node& node) {
        return isText(node) && trimmed(node.value()).empty();
    }

    Result<PropertyList> readArray(const pugi::xml_node& element, std::size_t depth) {
        PropertyList::Array array;
        for (const pugi::xml_node& child : element) {
            if (isSkipped(child)) continue;
            PropertyList value = TRY(read(child, depth));
            array.push_back(std::move(value));
        }
        return array;
    }

    Result<PropertyList> readDictionary(const pugi::xml_node& element, std::size_t depth) {
        PropertyList::Dictionary dictionary;
        std::optional<std::string> key;
        for (const pugi::xml_node& child : element) {
            if (isSkipped(child)) continue;
            if (!key) {
                if (std::strcmp(child.name(), "key") == 0) key = textOf(child);
                if (!key) return refused("the XML property list holds a value without a key");
                continue;
            }
            PropertyList value = TRY(read(child, depth));
            dictionary.insert_or_assign(std::move(*key), std::move(value));
            key.reset();
        }
        if (key) return refused("the XML property list holds a key without a value");
        return dictionary;
    }

    Budget budget_;
};

/// The only element in `parent`; empty when there is not exactly one.
pugi::xml_node onlyElement(const pugi::xml_node& parent) {
    pugi::xml_node only;
    for (const pugi::xml_node& child : parent) {
        if (child.type() == pugi::node_doctype || child.type() == pugi::node_declaration) continue;
        if (child.type() != pugi::node_element || only) return {};
        only = child;
    }
    return only;
}

// ---- From values to elements

void appendEscaped(std::string& xml, std::string_view text) {
    for (const char character : text) {
        switch (character) {
            case '&': xml += "&amp;"; break;
            case '<': xml += "&lt;"; break;
            case '>': xml += "&gt;"; break;
            // An unescaped one would be read as a line feed.
            case '\r': xml += "&#13;"; break;
            default: xml += character;
        }
    }
}

/// A key in a form that fits into one line of a message.
std::string shown(std::string_view key) {
    std::string text;
    for (const char character : key) {
        const auto byte = static_cast<unsigned char>(character);
        constexpr std::string_view digits = "0123456789ABCDEF";
        if (byte < 0x20 || byte == 0x7F) {
            text.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
        } else {
            text += character;
        }
    }
    return text;
}

class Writer {
public:
    Result<std::string> write(const PropertyList& root) {
        xml_ =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist>\n"
            "<plist version=\"1.0\">\n";
        if (!append(root, 0)) return refused(std::move(problem_));
        xml_ += "</plist>\n";
        return std::move(xml_);
    }

private:
    std::string path() const {
        std::string path;
        for (const std::string& step : path_) path += (path.empty() ? "" : ".") + shown(step);
        return path;
    }

    bool fail(std::string_view problem, std::string_view what = "value under") {
        problem_ = path_.empty() ? std::string(problem)
                                 : "the " + std::string(what) + " \"" + path() + "\" " + std::string(problem);
        return false;
    }

    void indent(std::size_t depth) { xml_.append(depth, '\t'); }

    bool appendText(std::string_view element, std::string_view text) {
        if (holdsForbidden(text))
            return fail("holds a character that XML cannot hold", element == "key" ? "key" : "value under");
        xml_.append("<").append(element).append(">");
        appendEscaped(xml_, text);
        xml_.append("</").append(element).append(">\n");
        return true;
    }

    bool append(const PropertyList& value, std::size_t depth) {
        indent(depth);
        if (const std::string* text = value.text()) return appendText("string", *text);
        if (const bool* boolean = value.boolean()) {
            xml_ += *boolean ? "<true/>\n" : "<false/>\n";
        } else if (const std::int64_t* integer = value.integer()) {
            xml_ += "<integer>" + std::to_string(*integer) + "</integer>\n";
        } else if (const double* real = value.real()) {
            xml_ += "<real>" + realText(*real) + "</real>\n";
        } else if (const Bytes* data = value.data()) {
            xml_ += "<data>" + base64Encoded(data->view()) + "</data>\n";
        } else if (const Instant* date = value.date()) {
            xml_ += "<date>" + dateText(*date) + "</date>\n";
        } else if (depth == maximumDepth) {
            return fail("is nested too deeply");
        } else {
            return value.array() ? appendArray(*value.array(), depth)
                                 : appendDictionary(*value.dictionary(), depth);
        }
        return true;
    }

    bool appendArray(const PropertyList::Array& array, std::size_t depth) {
        xml_ += "<array>\n";
        for (const PropertyList& element : array) {
            if (!append(element, depth + 1)) return false;
        }
        indent(depth);
        xml_ += "</array>\n";
        return true;
    }

    bool appendDictionary(const PropertyList::Dictionary& dictionary, std::size_t depth) {
        xml_ += "<dict>\n";
        for (const auto& [key, value] : dictionary) {
            path_.push_back(key);
            indent(depth + 1);
            if (!appendText("key", key) || !append(value, depth + 1)) return false;
            path_.pop_back();
        }
        indent(depth);
        xml_ += "</dict>\n";
        return true;
    }

    std::string xml_;
    std::vector<std::string> path_;
    std::string problem_;
};

}  // namespace

Result<PropertyList> readXml(std::string_view bytes, Budget budget) {
    if (holdsForbidden(bytes)) return refused("the XML property list is not UTF-8 text");
    if (!Inspection(bytes).passes()) return refused("the XML property list holds markup that we do not read");
    // Blanks count when an element holds nothing else.
    constexpr unsigned options = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol |
                                 pugi::parse_ws_pcdata_single | pugi::parse_doctype | pugi::parse_declaration;
    pugi::xml_document document;
    const pugi::xml_parse_result parsed =
        document.load_buffer(bytes.data(), bytes.size(), options, pugi::encoding_utf8);
    if (!parsed) return refused(std::string("the XML property list is damaged: ") + parsed.description());
    pugi::xml_node root = onlyElement(document);
    if (std::strcmp(root.name(), "plist") == 0) root = onlyElement(root);
    if (!root) return refused("the XML holds no property list");
    return Reader(budget).read(root);
}

}  // namespace platform::property_list

namespace platform {

Result<std::string> xmlPropertyList(const PropertyList& value) {
    return property_list::Writer().write(value);
}

}  // namespace platform
