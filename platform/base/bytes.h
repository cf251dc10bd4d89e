#pragma once

// Binary data that is handed around without being copied.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

/// Immutable bytes. Copies share the content; any thread may read them.
class Bytes {
public:
    Bytes() = default;
    explicit Bytes(std::string content) : content_(std::make_shared<const std::string>(std::move(content))) {}

    std::string_view view() const { return content_ ? std::string_view(*content_) : std::string_view(); }
    std::size_t size() const { return view().size(); }
    bool empty() const { return view().empty(); }

    friend bool operator==(const Bytes& a, const Bytes& b) { return a.view() == b.view(); }

private:
    std::shared_ptr<const std::string> content_;
};

std::string base64Encoded(std::string_view bytes);

/// Nothing when `text` is not wholly padded base64 of the standard alphabet.
std::optional<std::string> base64Decoded(std::string_view text);

}  // namespace platform
