// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vela::test {

/// Whether files or pixels have the same bytes; if not, tells the sizes and where they first differ.
template <class Bytes>
testing::AssertionResult sameBytes(const Bytes& seen, const Bytes& wanted) {
    if (seen == wanted) return testing::AssertionSuccess();
    const auto first = std::mismatch(seen.begin(), seen.end(), wanted.begin(), wanted.end()).first;
    return testing::AssertionFailure() << "byte " << first - seen.begin() << " is the first to differ; "
                                       << seen.size() << " bytes, wanted " << wanted.size();
}

/// The same for a file that may end early.
inline testing::AssertionResult beginsLike(const std::string& seen, const std::string& whole) {
    return sameBytes(seen, whole.substr(0, seen.size()));
}

}  // namespace vela::test
