// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/OutputFile.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/tables.hpp"
#include "vela_io/pictures/CloudPoints.hpp"
#include "vela_io/pictures/drawing.hpp"
#include "vela_io/pictures/frames.hpp"
#include "vela_io/pictures/viewer_page.hpp"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io {
namespace detail {
namespace {

struct Bounds {
    double low[3] = {0, 0, 0};
    double high[3] = {0, 0, 0};
};

Bounds boundsOf(const Mat& cloud) {
    Bounds bounds;
    bool first = true;
    forEachFinitePoint(cloud, [&](const CloudPoint& point) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double value = point.xyz[axis];
            if (first || value < bounds.low[axis]) bounds.low[axis] = value;
            if (first || value > bounds.high[axis]) bounds.high[axis] = value;
        }
        first = false;
    });
    return bounds;
}

/// Selection sampling: `next` says for each of `all` items in turn whether it is among the `wanted` ones,
/// which are chosen at random, the same every time.
class Choice {
public:
    Choice(std::size_t all, std::size_t wanted) : left_(all), wanted_(wanted < all ? wanted : all) {}
    bool next() {
        const bool taken = wanted_ == left_ || random_() % left_ < wanted_;
        --left_;
        if (taken) --wanted_;
        return taken;
    }

private:
    std::mt19937_64 random_;  // NOLINT(cert-msc51-cpp): the same seed on purpose
    std::size_t left_;
    std::size_t wanted_;
};

/// Points as 16-bit coordinates and colours, stored as differences between successive points in planes of
/// bytes, which compress better. The page's script decodes them.
class PackedPoints {
public:
    PackedPoints(std::size_t count, bool colored, const Bounds& bounds)
        : bytes_((colored ? 9 : 6) * count), count_(count), colored_(colored), bounds_(bounds) {}

    void add(const CloudPoint& point) {
        const std::uint8_t color[] = {point.color.red, point.color.green, point.color.blue};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const std::uint16_t place = quantized(point.xyz[axis], axis);
            const auto difference = static_cast<std::uint16_t>(place - place_[axis]);
            bytes_[2 * axis * count_ + next_] = static_cast<unsigned char>(difference & 0xffU);
            bytes_[(2 * axis + 1) * count_ + next_] = static_cast<unsigned char>(difference >> 8U);
            place_[axis] = place;
            if (!colored_) continue;
            bytes_[(6 + axis) * count_ + next_] = static_cast<unsigned char>(color[axis] - color_[axis]);
            color_[axis] = color[axis];
        }
        ++next_;
    }
    const std::vector<unsigned char>& bytes() const { return bytes_; }

private:
    std::uint16_t quantized(double value, std::size_t axis) const {
        const double size = bounds_.high[axis] - bounds_.low[axis];
        if (!(size > 0)) return 0;
        return static_cast<std::uint16_t>(std::lround((value - bounds_.low[axis]) / size * 65535));
    }

    std::vector<unsigned char> bytes_;
    std::size_t count_;
    bool colored_;
    Bounds bounds_;
    std::size_t next_ = 0;
    std::uint16_t place_[3] = {};
    std::uint8_t color_[3] = {};
};

std::vector<unsigned char> deflated(const std::vector<unsigned char>& bytes) {
    uLongf size = compressBound(bytes.size());
    std::vector<unsigned char> packed(size);
    if (compress2(packed.data(), &size, bytes.data(), bytes.size(), 6) != Z_OK) throw std::bad_alloc();
    packed.resize(size);
    return packed;
}

void appendBase64(OutputFile& file, const std::vector<unsigned char>& bytes) {
    constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t word = 0;
        for (std::size_t k = 0; k < 3; ++k)
            word = word << 8U | (k < count ? bytes[i + k] : 0U);
        char text[4];
        for (std::size_t k = 0; k < 4; ++k)
            text[k] = k <= count ? DIGITS[word >> (18 - 6 * k) & 63U] : '=';
        file.append(text, sizeof text);
    }
}

/// Text for an element of a page.
std::string htmlText(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '<')
            out += "&lt;";
        else if (c == '&')
            out += "&amp;";
        else
            out += c;
    }
    return out;
}

/// A JSON string that may stand in a script element.
std::string jsonText(std::string_view text) {
    constexpr char HEX[] = "0123456789abcdef";
    std::string out = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || c == '"' || c == '\\' || c == '<' || c == '&') {
            out += "\\u00";
            out += HEX[code >> 4U];
            out += HEX[code & 15U];
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string jsonNumbers(const double (&values)[3]) {
    std::string out = "[";
    for (const double value : values) {
        char text[32];
        out +=
            (out.size() > 1 ? "," : "") + std::string(text, std::to_chars(text, std::end(text), value).ptr);
    }
    return out + "]";
}

std::string jsonDirection(const Direction& direction) {
    double values[3] = {0, 0, 0};
    values[direction.axis] = direction.sign;
    return jsonNumbers(values);
}

/// The part that the first view shows: all but 2 % at either end of each axis.
Bounds focusOf(PointSample& sample) {
    Bounds focus;
    for (std::size_t axis = 0; axis < 3 && sample.finite > 0; ++axis) {
        const Range range = rangeWithoutTails(sample.axes[axis], 0.02);
        focus.low[axis] = range.low;
        focus.high[axis] = range.high;
    }
    return focus;
}

/// Writes the page with what its three marks stand for.
void appendPage(OutputFile& file, const std::string& title, const std::string& meta,
                const std::vector<unsigned char>& points) {
    std::string_view rest = VIEWER_PAGE;
    const auto until = [&](std::string_view mark) {
        const std::size_t at = rest.find(mark);
        file.append(rest.substr(0, at));
        rest.remove_prefix(at + mark.size());
    };
    until("%TITLE%");
    file.append(title);
    until("%META%");
    file.append(meta);
    until("%POINTS%");
    appendBase64(file, points);
    file.append(rest);
}

}  // namespace
}  // namespace detail

using namespace detail;  // NOLINT(google-build-using-namespace): the library's own other half

Result writeHtml(const Mat& cloud, const String& path, const HtmlOptions& options) {
    return guarded(path, [&](Result& result) {
        requireHostSide(cloud, "the cloud");
        const bool colored = cloud.dataType == MAT_TYPE::MAT_32F_C4;
        if (!colored && cloud.dataType != MAT_TYPE::MAT_32F_C3) refuse("only clouds can be shown in a page");
        const Frame frame = frameOf(options.axes);
        COLOR_BY mode = options.color.value_or(colored ? COLOR_BY::RGB : COLOR_BY::DEPTH);
        if (!colored && mode == COLOR_BY::RGB) mode = COLOR_BY::DEPTH;

        PointSample sample = sampleOf(cloud);
        const Bounds bounds = boundsOf(cloud);
        const Bounds focus = focusOf(sample);
        result.points = cloud.width * cloud.height;
        result.dropped = result.points - sample.finite;
        result.written = std::min(sample.finite, options.maxPoints);
        PackedPoints points(result.written, colored, bounds);
        Choice choice(sample.finite, result.written);
        forEachFinitePoint(cloud, [&](const CloudPoint& point) {
            if (choice.next()) points.add(point);
        });

        const std::string title = options.title.c_str() == nullptr ? "" : options.title.c_str();
        std::string text = title + "\n" + grouped(result.written) + " points";
        if (result.written < sample.finite) text += " of " + grouped(sample.finite);
        if (result.dropped > 0) text += ", " + grouped(result.dropped) + " invalid";
        constexpr const char* MODES[] = {"rgb", "depth", "height"};
        const char* const* const modeName = rowAt(MODES, mode);
        if (modeName == nullptr) refuse("an unknown colour mode");
        const std::string meta =
            "{\"text\":" + jsonText(text) + ",\"unit\":" + jsonText(labelOf(options.unit)) +
            ",\"drawn\":" + std::to_string(result.written) + ",\"colored\":" + (colored ? "true" : "false") +
            ",\"mode\":\"" + *modeName + "\",\"low\":" + jsonNumbers(bounds.low) +
            ",\"high\":" + jsonNumbers(bounds.high) + ",\"focusLow\":" + jsonNumbers(focus.low) +
            ",\"focusHigh\":" + jsonNumbers(focus.high) + ",\"right\":" + jsonDirection(frame.right) +
            ",\"up\":" + jsonDirection(frame.up) + ",\"forward\":" + jsonDirection(frame.forward) + "}";
        const std::vector<unsigned char> packed = deflated(points.bytes());
        OutputFile file(path, {false, &options.progress});
        file.expect(VIEWER_PAGE.size() + packed.size() / 3 * 4);
        appendPage(file, htmlText(title), meta, packed);
        result.bytes = file.finish();
    });
}

}  // namespace vela::io
