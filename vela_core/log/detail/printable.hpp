// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail {

/// Whether a byte of a message is printed unchanged: those that quill prints by default, and bytes above 127,
/// since names of Mats and files may be UTF-8. Others are printed as "\x01".
constexpr bool isPrintable(char c) noexcept {
    return c == '\n' || c == '\t' || c == '\r' || (static_cast<unsigned char>(c) >= ' ' && c != '\x7f');
}

}  // namespace vela::detail
