// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace vela::io::detail {

/// The text of viewer.html, with the marks %TITLE%, %META% and %POINTS%; made a source by the build.
extern const std::string_view VIEWER_PAGE;

}  // namespace vela::io::detail
