// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>

namespace vela VELA_API {

/// Owning, zero-terminated text at the API boundary, one pointer in size, so that records and matrices stay
/// small. A text ends at its first zero byte. A String made from a null pointer has no character data: it is
/// `empty`, and `c_str` and `get` are null; it differs from the empty text "".
class String {
public:
    /// The empty text "".
    String() noexcept = default;
    /// Copies the characters up to the first zero byte; null makes a String without character data.
    String(const char* text) : data_(copyOf(text)) {}
    /// Copies the characters up to the first zero byte.
    String(const std::string& text) : data_(copyOf(text.c_str())) {}

    /// Copies the characters.
    String(const String& other) : data_(other.data_ == nullptr ? nullptr : copyOf(other.c_str())) {}
    /// Takes the characters; `other` is then "".
    String(String&& other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
    /// Copies the characters; a failed allocation leaves this String as it was.
    String& operator=(const String& other) {
        String copy(other);
        std::swap(data_, copy.data_);
        return *this;
    }
    /// Takes the characters; `other` is then "".
    String& operator=(String&& other) noexcept {
        String taken(std::move(other));
        std::swap(data_, taken.data_);
        return *this;
    }
    ~String() {
        if (data_ != nullptr) release(data_);
    }

    /// Replaces the text; `text` may be null or point into this String.
    void set(const char* text) { *this = String(text); }

    /// The characters; null for a String without character data. Valid until the String changes.
    const char* c_str() const noexcept { return data_ == nullptr ? "" : data_ == noData() ? nullptr : data_; }
    /// The same as `c_str`.
    const char* get() const noexcept { return c_str(); }

    /// Whether there are no characters: "" or no character data.
    bool empty() const noexcept { return data_ == nullptr || data_ == noData(); }

    /// Same characters; a String without character data equals only another one.
    friend bool operator==(const String& a, const String& b) noexcept;
    /// The opposite of `==`.
    friend bool operator!=(const String& a, const String& b) noexcept { return !(a == b); }

private:
    // Null stands for the empty text: matrices carry a label that is nearly always empty, and a zero word is
    // the cheapest to make, copy and test. An address that no text can have marks missing character data; it
    // is a constant, the same in every copy of the library that a process loads.
    static char* noData() noexcept {
        return reinterpret_cast<char*>(  // NOLINT(performance-no-int-to-ptr): never followed
            std::uintptr_t{1});
    }
    static char* copyOf(const char* text);
    static void release(char* data) noexcept;

    char* data_ = nullptr;
};

/// Writes the characters; nothing for a String without character data.
std::ostream& operator<<(std::ostream& stream, const String& text);

/// The characters as a standard string; the empty one for a String without character data.
std::string toStdString(const String& text);

}  // namespace vela
