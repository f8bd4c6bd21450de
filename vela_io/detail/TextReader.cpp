// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/TextReader.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vela::io::detail {

const char* TextReader::findEnd(const char* begin, const char* end) const {
    const auto find = [&](char c) {
        const void* const found = std::memchr(begin, c, static_cast<std::size_t>(end - begin));
        if (found != nullptr) end = static_cast<const char*>(found);
    };
    if (!returnEndsLine_) find('\n');
    find('\r');
    return end;
}

bool TextReader::line(std::string_view& line) {
    file_.fill(LONGEST_LINE + 2);
    if (file_.begin() == file_.end()) return false;
    ++lineNumber_;
    const char* const begin = file_.begin();
    const char* const end = std::min(file_.end(), begin + LONGEST_LINE + 1);
    const char* const stop = findEnd(begin, end);
    if (stop == begin + LONGEST_LINE + 1) fail("the line is too long");
    line = {begin, static_cast<std::size_t>(stop - begin)};
    const bool atReturn = stop < file_.end() && *stop == '\r';
    const bool feedFollows = atReturn && stop + 1 < file_.end() && stop[1] == '\n';
    // Where lone returns end lines, a line feed behind one belongs to what follows.
    if (lineNumber_ == 1) returnEndsLine_ = atReturn && !feedFollows;
    const bool pair = feedFollows && !returnEndsLine_;
    file_.take(stop == file_.end() ? stop : stop + (pair ? 2 : 1));
    return true;
}

bool TextReader::refill() {
    file_.take(place_);
    const auto here = static_cast<std::size_t>(file_.end() - file_.begin());
    file_.fill(std::max(here + 1, LONGEST_TOKEN));
    place_ = file_.begin();
    return static_cast<std::size_t>(file_.end() - file_.begin()) > here;
}

double TextReader::nextDouble() {
    double value = 0;
    requireToken();
    accept(readDouble(place_, file_.end(), value));
    return value;
}

std::uint32_t TextReader::nextWhole() {
    const double value = nextDouble();
    if (!(value >= 0 && value <= 4294967295.0) || value != std::floor(value)) {
        fail("a whole number is expected");
    }
    return static_cast<std::uint32_t>(value);
}

std::uint8_t TextReader::byteSlowly() {
    const double value = nextDouble();
    if (!(value >= 0 && value <= 255)) fail("a colour from 0 to 255 is expected");
    return static_cast<std::uint8_t>(value);
}

void TextReader::skipToken() {
    requireToken();
    if (*place_ == '\0') fail("a zero byte in the text");
    while (static_cast<unsigned char>(*place_) > ' ') {
        ++place_;
        if (place_ == file_.end() && refill()) continue;
    }
}

std::string_view TextReader::nextWord() {
    requireToken();
    const char* const begin = place_;
    while (static_cast<unsigned char>(*place_) > ' ') {
        ++place_;
    }
    if (place_ == begin) fail("a zero byte in the text");
    if (place_ == file_.end() && !file_.blockEndsFile()) fail("the word is too long");
    return {begin, static_cast<std::size_t>(place_ - begin)};
}

}  // namespace vela::io::detail
