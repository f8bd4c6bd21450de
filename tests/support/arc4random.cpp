// SPDX-License-Identifier: Apache-2.0
// The random device of a statically linked C++ library calls arc4random if the C library at build time has
// it; glibc before 2.36 does not. This definition lets the program start there too.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

extern "C" std::uint32_t arc4random() noexcept {
    std::uint32_t value = 0;
    if (getentropy(&value, sizeof value) != 0) std::abort();
    return value;
}
