// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace vela::detail {

/// The path with the extension added unless it already has it; case matters.
inline std::string withExtension(std::string path, std::string_view extension) {
    const bool ends = path.size() >= extension.size() &&
                      path.compare(path.size() - extension.size(), extension.size(), extension) == 0;
    return ends ? path : path.append(extension);
}

}  // namespace vela::detail
