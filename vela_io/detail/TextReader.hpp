// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/InputFile.hpp"
#include "vela_io/detail/number_text.hpp"

#include <string>
#include <string_view>

namespace vela::io::detail {

/// Reads lines and tokens of a text file; line feeds, carriage returns and both together end a line.
class TextReader {
public:
    /// Longer lines of a header, and longer tokens, are an error.
    static constexpr std::size_t LONGEST_LINE = 16384;
    static constexpr std::size_t LONGEST_TOKEN = 1024;

    explicit TextReader(InputFile& file) : file_(file) {}

    /// The next line without its end, valid until the next call; false at the end of the file.
    bool line(std::string_view& line);

    // Tokens, apart from each other by blanks and line ends of any kind. The place is kept in the reader
    // until `finish`.

    /// To the next token, which is then whole in the block; false at the end of the file.
    bool next() {
        for (;;) {
            for (; static_cast<unsigned char>(*place_) - 1U < 32; ++place_) {
                lineNumber_ += *place_ == '\n' ? 1 : 0;
            }
            if (file_.end() - place_ >= static_cast<std::ptrdiff_t>(LONGEST_TOKEN)) return true;
            if (!refill()) return place_ < file_.end();
        }
    }
    const char* place() const { return place_; }
    void moveTo(const char* place) { place_ = place; }

    float nextFloat() {
        float value = 0;
        requireToken();
        accept(readFloat(place_, file_.end(), value));
        return value;
    }
    double nextDouble();
    /// A whole number below 2^32; also one written as "255.0".
    std::uint32_t nextWhole();
    std::uint8_t nextByte() {
        requireToken();
        // Nearly always one to three digits.
        const char* p = place_;
        unsigned value = 0;
        for (; isDigit(*p) && p < place_ + 3; ++p) {
            value = value * 10 + static_cast<unsigned>(*p - '0');
        }
        if (p == place_ || static_cast<unsigned char>(*p) > ' ' || value > 255) return byteSlowly();
        place_ = p;
        return static_cast<std::uint8_t>(value);
    }
    void skipToken();
    std::string_view nextWord();

    /// Begins reading tokens where the lines have ended, and back.
    void start() {
        place_ = file_.begin();
        ++lineNumber_;
    }
    void finish() {
        file_.take(place_);
        --lineNumber_;
    }

    [[noreturn]] void fail(const std::string& text) const { failFormat(text, lineNumber_); }

private:
    bool refill();
    const char* findEnd(const char* begin, const char* end) const;
    std::uint8_t byteSlowly();
    void requireToken() {
        if (!next()) fail("a number is missing at the end of the file");
    }
    void accept(const char* end) {
        // Letters may follow at once: some files have the next keyword there.
        if (end == nullptr) fail("a number is expected");
        if (end == file_.end() && !file_.blockEndsFile()) fail("the number is too long");
        place_ = end;
    }

    InputFile& file_;
    const char* place_ = nullptr;
    std::size_t lineNumber_ = 0;  ///< of the line read last, or that of the token, from 1
    bool returnEndsLine_ = false;
};

}  // namespace vela::io::detail
