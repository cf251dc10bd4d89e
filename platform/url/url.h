#pragma once

// Addresses by the strict rule: a text with any character that an address must not hold is not an address.

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A text that is an address, kept as given: nothing is encoded or normalised. A text without
/// a scheme is a (relative) address too; loading it fails later.
class URL {
public:
    /// Nothing for an empty text, a blank, a bare "%", braces, non-ASCII characters and the like.
    static std::optional<URL> parse(std::string_view text);

    const std::string& text() const { return text_; }
    /// In lower case; empty when the address has no scheme.
    const std::string& scheme() const { return scheme_; }
    /// In lower case and without brackets; empty when the address has no host.
    const std::string& host() const { return host_; }

    bool operator==(const URL& other) const { return text_ == other.text_; }

private:
    URL() = default;
    std::string text_;
    std::string scheme_;
    std::string host_;
};

}  // namespace platform
