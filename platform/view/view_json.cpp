#include "platform/view/view_json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <type_traits>
#include "platform/json/json_document.h"

namespace platform {
namespace {

using Json = nlohmann::ordered_json;

constexpr int maximumDepth = 64;
constexpr int maximumNodes = 100'000;

/// An enumeration's cases in the order of their declaration, with their names.
template <typename Enumeration>
struct CaseNames;

template <>
struct CaseNames<HorizontalAlignment> {
    static constexpr std::array<std::string_view, 3> names{"leading", "center", "trailing"};
};
template <>
struct CaseNames<VerticalAlignment> {
    static constexpr std::array<std::string_view, 5> names{"top", "center", "bottom", "firstTextBaseline",
                                                           "lastTextBaseline"};
};
template <>
struct CaseNames<RoundedCornerStyle> {
    static constexpr std::array<std::string_view, 2> names{"circular", "continuous"};
};
template <>
struct CaseNames<ContentMode> {
    static constexpr std::array<std::string_view, 2> names{"fit", "fill"};
};
template <>
struct CaseNames<FontWeight> {
    static constexpr std::array<std::string_view, 3> names{"regular", "medium", "bold"};
};

template <typename Enumeration>
std::string_view caseName(Enumeration value) {
    return CaseNames<Enumeration>::names.at(static_cast<std::size_t>(value));
}

template <typename Enumeration>
std::optional<Enumeration> caseNamed(std::string_view name) {
    const auto& names = CaseNames<Enumeration>::names;
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) return std::nullopt;
    return static_cast<Enumeration>(found - names.begin());
}

struct NamedAlignment {
    std::string_view name;
    Alignment alignment;
};

using enum HorizontalAlignment;
constexpr std::array<NamedAlignment, 15> namedAlignments{{
    {"topLeading", {leading, VerticalAlignment::top}},
    {"top", {center, VerticalAlignment::top}},
    {"topTrailing", {trailing, VerticalAlignment::top}},
    {"leading", {leading, VerticalAlignment::center}},
    {"center", {center, VerticalAlignment::center}},
    {"trailing", {trailing, VerticalAlignment::center}},
    {"bottomLeading", {leading, VerticalAlignment::bottom}},
    {"bottom", {center, VerticalAlignment::bottom}},
    {"bottomTrailing", {trailing, VerticalAlignment::bottom}},
    {"leadingFirstTextBaseline", {leading, VerticalAlignment::firstTextBaseline}},
    {"centerFirstTextBaseline", {center, VerticalAlignment::firstTextBaseline}},
    {"trailingFirstTextBaseline", {trailing, VerticalAlignment::firstTextBaseline}},
    {"leadingLastTextBaseline", {leading, VerticalAlignment::lastTextBaseline}},
    {"centerLastTextBaseline", {center, VerticalAlignment::lastTextBaseline}},
    {"trailingLastTextBaseline", {trailing, VerticalAlignment::lastTextBaseline}},
}};

std::string_view alignmentName(const Alignment& alignment) {
    return std::ranges::find(namedAlignments, alignment, &NamedAlignment::alignment)->name;
}

int colorStep(double component) {
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255.0));
}

template <typename Kind>
concept HasFields = requires(Kind kind, int field) {
    &Kind::template fields<Kind, int>;
};

template <typename Kind>
constexpr Children childrenOf() {
    if constexpr (requires { Kind::holds; }) return Kind::holds;
    return Children::content;
}

/// Writes the members of one object.
class Writer {
public:
    Writer(Json& json, std::vector<Bytes>* attachments) : json_(json), attachments_(attachments) {}

    template <typename Value>
    Writer& operator()(const char* name, const Value& value, const NumberLimits& = {}) {
        json_[name] = written(value);
        return *this;
    }
    template <typename Value>
    Writer& operator()(const char* name, const std::optional<Value>& value, const NumberLimits& = {}) {
        return value ? (*this)(name, *value) : *this;
    }
    template <typename Value>
    Writer& unlessZero(const char* name, const Value& value) {
        return value == Value{} ? *this : (*this)(name, value);
    }
    Writer& picture(const std::string& name, const std::optional<Bytes>& bytes) {
        if (bytes && attachments_ != nullptr) {
            json_["attachment"] = attachments_->size();
            attachments_->push_back(*bytes);
        } else if (bytes) {
            json_["bytes"] = base64Encoded(bytes->view());
        }
        return (*this)(bytes ? "fallback" : "name", name);
    }
    template <typename Kind>
    void members(const Kind& kind) {
        if constexpr (HasFields<Kind>) Kind::fields(kind, *this);
    }

    template <typename Value>
    static Json written(const Value& value) {
        if constexpr (HasFields<Value>) {
            Json json;
            Writer(json, nullptr).members(value);
            return json;
        } else if constexpr (std::is_enum_v<Value>) {
            return caseName(value);
        } else {
            return value;
        }
    }
    static Json written(double value) { return value == infinity ? Json("infinity") : numberJson(value); }
    static Json written(const Color& color) { return colorJson(color); }
    static Json written(const Alignment& alignment) { return alignmentName(alignment); }
    static Json written(const std::vector<TextRun>& runs) {
        Json list = Json::array();
        for (const TextRun& run : runs) list.push_back(written(run));
        return list;
    }

private:
    Json& json_;
    std::vector<Bytes>* attachments_;
};

Json written(const View& view, std::vector<Bytes>* attachments) {
    Json json;
    std::visit(
        [&](const auto& kind) {
            using Kind = std::decay_t<decltype(kind)>;
            json["type"] = Kind::type;
            Writer(json, attachments).members(kind);
            if constexpr (childrenOf<Kind>() == Children::any) {
                Json& children = json["children"] = Json::array();
                for (const View& child : view.children()) children.push_back(written(child, attachments));
            }
            if constexpr (childrenOf<Kind>() == Children::contentAndLayer)
                json["layer"] = written(view.layer(), attachments);
            if constexpr (childrenOf<Kind>() == Children::content ||
                          childrenOf<Kind>() == Children::contentAndLayer)
                json["content"] = written(view.content(), attachments);
        },
        view.kind());
    return json;
}

/// Reads a tree. Keeps the first problem, with its place; what is read after it does not matter.
class Reader {
public:
    explicit Reader(std::span<const Bytes> attachments) : attachments_(attachments) {}

    const std::string& problem() const { return problem_; }

    View view(const Json& json) {
        if (++nodes_ > maximumNodes) return wrong("more than 100,000 nodes");
        if (depth_ == maximumDepth) return wrong("more than 64 levels deep");
        if (!json.is_object()) return wrong("a node is an object");
        std::string type;
        Members(*this, json)("type", type);
        ++depth_;
        View result = typedView(json, type, std::make_index_sequence<std::variant_size_v<NodeKind>>());
        --depth_;
        return result;
    }

    void read(const Json& json, Color& color, const NumberLimits& = {}) {
        std::string hex;
        double alpha = 1.0;
        if (json.is_object()) Members(*this, json)("hex", hex)("alpha", alpha);
        const bool isHex = hex.size() == 7 && hex[0] == '#' &&
                           hex.find_first_not_of("0123456789abcdefABCDEF", 1) == hex.npos;
        if (!isHex) {
            wrong("a colour is {\"hex\":\"#RRGGBB\",\"alpha\":1}");
            return;
        }
        const auto step = [&](std::size_t at) { return std::stoi(hex.substr(at, 2), nullptr, 16) / 255.0; };
        color = Color::rgb(step(1), step(3), step(5), std::clamp(alpha, 0.0, 1.0));
    }

private:
    /// Goes one step down into the tree while it lives, so that a problem names its place.
    class Step {
    public:
        Step(Reader& reader, const std::string& name) : reader_(reader), length_(reader.path_.size()) {
            const bool isElement = name.starts_with('[');
            reader.path_ += (reader.path_.empty() || isElement ? "" : ".") + name;
        }
        ~Step() { reader_.path_.resize(length_); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        Reader& reader_;
        std::size_t length_;
    };

    /// Reads the members of one object.
    class Members {
    public:
        Members(Reader& reader, const Json& json) : reader_(reader), json_(json) {}

        template <typename Value>
        Members& operator()(const char* name, Value& value, const NumberLimits& limits = {}) {
            const Step step(reader_, name);
            if (const Json* found = member(name)) {
                reader_.read(*found, value, limits);
            } else if (isRequired(value)) {
                reader_.wrong("missing");
            }
            return *this;
        }
        template <typename Value>
        Members& unlessZero(const char* name, Value& value) {
            return (*this)(name, value);
        }
        Members& picture(std::string& name, std::optional<Bytes>& bytes) {
            std::optional<int> attachment;
            std::optional<std::string> encoded;
            (*this)("attachment", attachment)("bytes", encoded);
            if (attachment) {
                const Step step(reader_, "attachment");
                bytes = reader_.attachment(*attachment);
            } else if (encoded) {
                const Step step(reader_, "bytes");
                std::optional<std::string> decoded = base64Decoded(*encoded);
                if (!decoded) reader_.wrong("not base64");
                bytes = Bytes(std::move(decoded).value_or(""));
            }
            if (!bytes) return (*this)("name", name);
            std::optional<std::string> fallback;
            (*this)("fallback", fallback);
            name = std::move(fallback).value_or("");
            return *this;
        }
        /// Null when it is absent or null.
        const Json* member(const char* name) const {
            const auto found = json_.find(name);
            return found == json_.end() || found->is_null() ? nullptr : &*found;
        }

    private:
        template <typename Value>
        static bool isRequired(const Value& value) {
            if constexpr (requires { value.empty(); }) return value.empty();
            return std::is_same_v<Value, Color>;
        }

        Reader& reader_;
        const Json& json_;
    };

    View wrong(const std::string& problem) {
        if (problem_.empty()) problem_ = (path_.empty() ? "the root" : path_) + ": " + problem;
        return {};
    }

    template <typename Value>
    void read(const Json& json, std::optional<Value>& value, const NumberLimits& limits) {
        value.emplace();
        read(json, *value, limits);
    }
    void read(const Json& json, double& value, const NumberLimits& limits) {
        if (limits.mayBeInfinite && json == "infinity") {
            value = infinity;
        } else if (!json.is_number() || !std::isfinite(json.get<double>())) {
            wrong("not a finite number");
        } else {
            value = json.get<double>();
            if (value < limits.least || value > limits.most)
                wrong("not between " + numberJson(limits.least).dump() + " and " +
                      numberJson(limits.most).dump());
        }
    }
    void read(const Json& json, int& value, const NumberLimits& limits) {
        double number = 0.0;
        read(json, number, limits);
        if (number != std::trunc(number) || std::abs(number) > 1e9) {
            wrong("not a whole number");
        } else {
            value = static_cast<int>(number);
        }
    }
    void read(const Json& json, bool& value, const NumberLimits&) {
        if (!json.is_boolean()) wrong("neither true nor false");
        if (json.is_boolean()) value = json.get<bool>();
    }
    void read(const Json& json, std::string& value, const NumberLimits&) {
        if (!json.is_string()) wrong("not a text");
        if (json.is_string()) value = json.get<std::string>();
    }
    void read(const Json& json, Alignment& alignment, const NumberLimits&) {
        std::string name;
        read(json, name, {});
        const auto found = std::ranges::find(namedAlignments, name, &NamedAlignment::name);
        if (found != namedAlignments.end()) {
            alignment = found->alignment;
        } else {
            wrong("unknown name \"" + name + "\"");
        }
    }
    template <typename Enumeration>
        requires std::is_enum_v<Enumeration>
    void read(const Json& json, Enumeration& value, const NumberLimits&) {
        std::string name;
        read(json, name, {});
        const std::optional<Enumeration> known = caseNamed<Enumeration>(name);
        if (!known) wrong("unknown name \"" + name + "\"");
        value = known.value_or(value);
    }
    template <HasFields Object>
    void read(const Json& json, Object& object, const NumberLimits&) {
        if (!json.is_object()) {
            wrong("not an object");
            return;
        }
        Members members(*this, json);
        Object::fields(object, members);
    }
    template <typename Value>
    void read(const Json& json, std::vector<Value>& list, const NumberLimits&) {
        if (!json.is_array()) wrong("not a list");
        for (std::size_t i = 0; json.is_array() && i < json.size() && problem_.empty(); ++i) {
            const Step step(*this, "[" + std::to_string(i) + "]");
            read(json[i], list.emplace_back(), {});
        }
    }
    void read(const Json& json, View& child, const NumberLimits&) { child = view(json); }

    std::optional<Bytes> attachment(int index) {
        if (index >= 0 && static_cast<std::size_t>(index) < attachments_.size())
            return attachments_[static_cast<std::size_t>(index)];
        wrong("no attachment of that number");
        return std::nullopt;
    }

    template <std::size_t... Index>
    View typedView(const Json& json, const std::string& type, std::index_sequence<Index...>) {
        View result;
        const bool isKnown = ((type == std::variant_alternative_t<Index, NodeKind>::type &&
                               (result = node<std::variant_alternative_t<Index, NodeKind>>(json), true)) ||
                              ...);
        if (isKnown) return result;
        const Step step(*this, "type");
        return wrong("unknown type \"" + type + "\"");
    }
    template <typename Kind>
    View node(const Json& json) {
        Kind kind;
        Members members(*this, json);
        if constexpr (HasFields<Kind>) Kind::fields(kind, members);
        if (!problem_.empty()) return {};
        std::vector<View> children;
        if constexpr (childrenOf<Kind>() == Children::any) {
            if (members.member("children") != nullptr) members("children", children);
        } else if constexpr (childrenOf<Kind>() != Children::none) {
            required(members, "content", children.emplace_back());
            if constexpr (childrenOf<Kind>() == Children::contentAndLayer)
                required(members, "layer", children.emplace_back());
        }
        return View(std::move(kind), std::move(children));
    }
    void required(Members& members, const char* name, View& child) {
        const Step step(*this, name);
        if (const Json* json = members.member(name)) {
            child = view(*json);
        } else {
            wrong("missing");
        }
    }

    std::span<const Bytes> attachments_;
    std::string path_;
    std::string problem_;
    int depth_ = 0;
    int nodes_ = 0;
};

template <typename Value>
Result<Value> valueOrProblem(Value value, const Reader& reader) {
    if (!reader.problem().empty()) return failure("ViewError", 0, reader.problem());
    return value;
}

}  // namespace

Json numberJson(double value) {
    constexpr double largestExactWhole = 9007199254740992.0;
    if (!std::isfinite(value)) return nullptr;
    if (value == std::trunc(value) && std::abs(value) < largestExactWhole)
        return static_cast<std::int64_t>(value);
    return value;
}

Json colorJson(const Color& color) {
    std::array<char, 8> hex{};
    std::snprintf(hex.data(), hex.size(), "#%02X%02X%02X", colorStep(color.red()), colorStep(color.green()),
                  colorStep(color.blue()));
    return {{"hex", hex.data()}, {"alpha", numberJson(color.alpha())}};
}

Result<Color> colorFromJson(const Json& json) {
    Reader reader(std::span<const Bytes>{});
    Color color;
    reader.read(json, color);
    return valueOrProblem(color, reader);
}

Json textRunJson(const TextRun& run) { return Writer::written(run); }

Json viewJson(const View& view) { return written(view, nullptr); }

Json viewJson(const View& view, std::vector<Bytes>& attachments) { return written(view, &attachments); }

Result<View> viewFromJson(std::string_view text, const std::vector<Bytes>& attachments) {
    const Result<Json> json = parsedJson(text);
    if (!json) return failure("ViewError", 0, json.error().message);
    Reader reader(attachments);
    return valueOrProblem(reader.view(*json), reader);
}

}  // namespace platform
