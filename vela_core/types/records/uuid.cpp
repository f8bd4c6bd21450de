// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/uuid.hpp"

#include "vela_core/types/detail/start_order.hpp"

#include <pthread.h>

#include <cstdint>
#include <exception>

namespace vela {
using namespace detail;

[[gnu::init_priority(START_IDENTIFIERS)]] std::random_device uuid::rd("default");
[[gnu::init_priority(START_IDENTIFIERS)]] std::mt19937_64 uuid::gen(uuid::rd());
[[gnu::init_priority(START_IDENTIFIERS)]] std::uniform_int_distribution<> uuid::dis(0, 15);
[[gnu::init_priority(START_IDENTIFIERS)]] std::uniform_int_distribution<> uuid::dis2(8, 11);

namespace {

/// A forked child would draw the numbers of its parent.
void reseedChild() noexcept {
    try {
        uuid::gen.seed(uuid::rd());
    } catch (const std::exception&) {
        // Without a working random device the child keeps the parent's state.
    }
}

struct ForkHandler {
    ForkHandler() noexcept { pthread_atfork(nullptr, nullptr, reseedChild); }
};
[[gnu::init_priority(START_IDENTIFIERS)]] const ForkHandler FORK_HANDLER;

struct IdentifierText {
    char characters[37];
};

constexpr int RANDOM_DIGITS = 31;
constexpr int VARIANT = 15;  // index of the one from `dis2`

inline IdentifierText draw() {
    std::uint8_t digits[RANDOM_DIGITS];
    auto digit = uuid::dis;
    auto variant = uuid::dis2;
    const auto drawInto = [&](int first, int end) {
        for (int i = first; i < end; ++i) {
            digits[i] = static_cast<std::uint8_t>(digit(uuid::gen));
        }
    };
    drawInto(0, VARIANT);
    digits[VARIANT] = static_cast<std::uint8_t>(variant(uuid::gen));
    drawInto(VARIANT + 1, RANDOM_DIGITS);

    IdentifierText text = {"xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx"};
    const std::uint8_t* next = digits;
    for (char& place : text.characters) {
        if (place == 'x') place = "0123456789abcdef"[*next++];
    }
    return text;
}

#if defined(__x86_64__)
// The engine makes 312 numbers at a time, which is half of the work; `flatten` inlines that loop here, where
// the compiler can vectorise it. The numbers are the same.
[[gnu::target("avx2"), gnu::flatten]] IdentifierText drawByAvx2() {
    return draw();
}
#endif

IdentifierText drawIdentifier() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") != 0) return drawByAvx2();
#endif
    return draw();
}

}  // namespace

std::string uuid::generate_uuid_v4() {
    return drawIdentifier().characters;
}

String generate_unique_id() {
    return drawIdentifier().characters;
}

}  // namespace vela
