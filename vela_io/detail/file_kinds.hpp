// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/String.hpp"
#include "vela_io/detail/words.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace vela::io::detail {

template <class Format>
struct Extension {
    std::string_view text;  ///< with its dot, in lower case
    Format format;
};

/// The format of a path's extension, in any case.
template <class Format, std::size_t count>
std::optional<Format> formatByExtension(const Extension<Format> (&extensions)[count], const String& path) {
    const std::string text = toStdString(path);
    const std::size_t dot = text.rfind('.');
    if (dot == std::string::npos) return {};
    for (const Extension<Format>& known : extensions) {
        if (equalIgnoringCase(std::string_view(text).substr(dot), known.text)) return known.format;
    }
    return {};
}

/// Whether the first bytes of a file are those of a cloud or of a depth map.
bool isCloud(std::string_view start, const String& path);
bool isDepth(std::string_view start);

}  // namespace vela::io::detail
