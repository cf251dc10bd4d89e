#pragma once

// Reading JSON documents of unknown origin, one value after another.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// Goes through a document and keeps nothing of it. Each value is read as a type or skipped. What is skipped
/// needs only be well formed, UTF-8 and at most 512 levels deep: the library's parser would refuse a whole
/// document for a number beyond a double, or half a surrogate pair, in a member that nobody asks for.
///
/// The first fault stays. After it every call does nothing and answers an empty value, so a caller looks for
/// it once, with `finish`. Its message (domain "JSONError") names a member that was asked for or a place, and
/// nothing that the document holds.
class JSONReader {
public:
    explicit JSONReader(std::string_view document);

    /// Calls `member` with each key. It must read or skip the member's value.
    void object(const std::function<void(std::string_view key)>& member);
    /// Calls `element` for each element, which it must read or skip.
    void array(const std::function<void()>& element);
    /// Whether the value is null, which is then read.
    bool null();
    std::string text();
    bool boolean();
    /// A whole number within 64 bits: 12, 12.0 and 1.2e1 are 12.
    std::int64_t integer();
    void skip();

    void fail(std::string message);
    /// The first fault, or one when anything but blanks is left of the document.
    Result<void> finish();

private:
    void items(char open, char close, const char* type, const std::function<void()>& item);
    std::string_view rawText();
    std::string_view rawNumber();
    void literal(std::string_view word);

    char next();
    bool take(char wanted);
    void breakOff();
    void wrongType(const char* expected);

    std::string_view document_;
    std::string_view rest_;
    int depth_ = 0;
    /// What a message calls the value that comes next.
    std::string name_ = "the document";
    Result<void> fault_;
};

}  // namespace platform
