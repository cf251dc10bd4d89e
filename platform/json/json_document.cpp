#include "platform/json/json_document.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace platform {
namespace {

using Json = nlohmann::ordered_json;

/// Builds a value while it counts: what is refused has then cost little.
class Builder final : public nlohmann::json_sax<Json> {
public:
    explicit Builder(const JSONLimits& limits) : limits_(limits) {}

    Json document;
    /// What is wrong, and before which byte if that is known.
    std::string problem;
    std::size_t place = 0;

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(std::int64_t value) override { return add(value); }
    bool number_unsigned(std::uint64_t value) override { return add(value); }
    bool number_float(double value, const std::string&) override { return add(value); }
    bool string(std::string& value) override { return add(std::move(value)); }
    bool binary(Json::binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(std::string& name) override {
        key_ = std::move(name);
        return open_.back()->size() < limits_.members || refuse("an object has too many members");
    }
    bool parse_error(std::size_t position, const std::string&, const Json::exception&) override {
        place = position;
        return refuse("not JSON");
    }

private:
    bool refuse(const char* reason) {
        problem = reason;
        return false;
    }
    bool add(Json value) { return insert(std::move(value)) != nullptr; }
    bool open(Json container) {
        if (open_.size() == limits_.depth) return refuse("nested too deeply");
        Json* inserted = insert(std::move(container));
        open_.push_back(inserted);
        return inserted != nullptr;
    }
    bool close() {
        open_.pop_back();
        return true;
    }
    /// Null when there are too many. Nothing is added to a container while one inside it is open, so its
    /// address stays.
    Json* insert(Json value) {
        if (++values_ > limits_.values) {
            refuse("too many values");
            return nullptr;
        }
        if (open_.empty()) return &(document = std::move(value));
        if (open_.back()->is_object()) return &((*open_.back())[key_] = std::move(value));
        open_.back()->push_back(std::move(value));
        return &open_.back()->back();
    }

    const JSONLimits limits_;
    std::vector<Json*> open_;
    std::string key_;
    std::size_t values_ = 0;
};

/// " at line 1, column 3" for the third byte; nothing when no place is known.
std::string placeIn(std::string_view text, std::size_t count) {
    if (count == 0) return "";
    const std::string_view before = text.substr(0, count - 1);
    const auto line = 1 + std::ranges::count(before, '\n');
    const std::size_t column = before.size() - (before.rfind('\n') + 1);
    return " at line " + std::to_string(line) + ", column " + std::to_string(column + 1);
}

}  // namespace

Result<Json> parsedJson(std::string_view text, const JSONLimits& limits) {
    // The library takes a NUL for the end and would let anything pass behind it.
    if (text.find('\0') != text.npos) return failure("JSONError", 1, "not JSON: it holds a NUL character");
    Builder builder(limits);
    if (Json::sax_parse(text, &builder)) return std::move(builder.document);
    return failure("JSONError", 1, builder.problem + placeIn(text, builder.place));
}

}  // namespace platform
