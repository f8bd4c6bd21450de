// SPDX-License-Identifier: Apache-2.0
// The C++ library's random device, linked statically, calls the C library's arc4random where the program was
// built; C libraries before glibc 2.36 have none. This one lets the program start there too.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

extern "C" std::uint32_t arc4random() noexcept {
    std::uint32_t value = 0;
    if (getentropy(&value, sizeof value) != 0) std::abort();
    return value;
}
