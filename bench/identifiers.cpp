// SPDX-License-Identifier: Apache-2.0
// Random identifiers.
#include "support/Session.hpp"

#include <vela_core/vela.hpp>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <array>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>

// The library uses AVX2 too where the processor has it; benchmarks are not run on other processors.
#if defined(__x86_64__)
#define VELA_BENCH_AVX2 __attribute__((target("avx2"), optimize("O3")))
#else
#define VELA_BENCH_AVX2
#endif

namespace {

using vela::bench::Comparison;
using vela::bench::Session;

constexpr std::size_t COUNT = 64;
constexpr int DRAWS = 31;  // digits that are not fixed

/// The same digits from the same engine, through a text stream.
std::string identifierByStream() {
    using namespace vela::uuid;
    std::stringstream text;
    text << std::hex;
    const auto digits = [&](int count) {
        for (int i = 0; i < count; ++i) {
            text << dis(gen);
        }
    };
    digits(8);
    text << '-';
    digits(4);
    text << "-4";
    digits(3);
    text << '-' << dis2(gen);
    digits(3);
    text << '-';
    digits(12);
    return text.str();
}

/// The shared engine's numbers, computed in vectorised loops: a cost that no implementation can avoid.
class VectorEngine {
public:
    explicit VectorEngine(const std::mt19937_64& from) {
        std::stringstream text;
        text << from;
        for (std::uint64_t& word : words_) {
            text >> word;
        }
        text >> next_;
    }

    std::uint64_t operator()() {
        if (next_ == SIZE) refill();
        std::uint64_t z = words_[next_++];
        z ^= z >> 29 & 0x5555555555555555U;
        z ^= z << 17 & 0x71D67FFFEDA60000U;
        z ^= z << 37 & 0xFFF7EEE000000000U;
        return z ^ z >> 43;
    }

private:
    static constexpr std::size_t SIZE = 312;
    static constexpr std::size_t SHIFT = 156;
    static constexpr std::uint64_t LOWER = 0x7FFFFFFF;

    static std::uint64_t twist(std::uint64_t word, std::uint64_t next) {
        const std::uint64_t y = (word & ~LOWER) | (next & LOWER);
        return y >> 1 ^ ((0U - (y & 1U)) & 0xB5026F5AA96619E9U);
    }

    VELA_BENCH_AVX2 void refill() {
        for (std::size_t i = 0; i < SHIFT; ++i) {
            words_[i] = words_[i + SHIFT] ^ twist(words_[i], words_[i + 1]);
        }
        for (std::size_t i = SHIFT; i < SIZE - 1; ++i) {
            words_[i] = words_[i - SHIFT] ^ twist(words_[i], words_[i + 1]);
        }
        words_[SIZE - 1] = words_[SHIFT - 1] ^ twist(words_[SIZE - 1], words_[0]);
        next_ = 0;
    }

    std::array<std::uint64_t, SIZE> words_{};
    std::size_t next_ = SIZE;
};

/// The draws of one identifier; the upper four bits of a number are its digit.
std::uint64_t drawDigits(VectorEngine& engine) {
    std::uint64_t sum = 0;
    for (int i = 0; i < DRAWS; ++i) {
        sum += engine() >> 60;
    }
    return sum;
}

/// Makes many and keeps the last.
template <class Text, class Make>
auto makeMany(Text& last, Make make) {
    return [&last, make]() mutable {
        for (std::size_t i = 0; i < COUNT; ++i) {
            last = make();
            benchmark::DoNotOptimize(last);
        }
    };
}

std::string checkForm(const std::string& text) {
    const std::string form = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    const auto fits = [](char wanted, char c) {
        if (wanted == 'x') return std::string("0123456789abcdef").find(c) != std::string::npos;
        if (wanted == 'y') return std::string("89ab").find(c) != std::string::npos;
        return c == wanted;
    };
    bool fine = text.size() == form.size();
    for (std::size_t i = 0; fine && i < form.size(); ++i) {
        fine = fits(form[i], text[i]);
    }
    return fine ? "" : text + " is no identifier";
}

void runAll(Session& session) {
    vela::String ours;
    std::string theirs;
    std::string expected;
    std::uint64_t drawn = 0;
    boost::uuids::random_generator fromSystem;
    boost::uuids::random_generator_mt19937 fromEngine;
    const auto start = vela::uuid::gen;
    VectorEngine engine(start);
    // The stream gives the expected text of the engine's numbers.
    Comparison comparison("identifier");
    comparison.before([&] { vela::uuid::gen = start; })
        .repeats(COUNT)
        .ours(makeMany(ours, vela::generate_unique_id),
              [&] {
                  vela::uuid::gen = start;
                  makeMany(expected, identifierByStream)();
                  return expected == ours.c_str() ? checkForm(expected) : "differs from the stream's";
              })
        .peer("stringstream", makeMany(theirs, identifierByStream), [&] { return checkForm(theirs); })
        .peer("Boost", makeMany(theirs, [&] { return boost::uuids::to_string(fromSystem()); }),
              [&] { return checkForm(theirs); })
        .peer("Boost (mt19937)", makeMany(theirs, [&] { return boost::uuids::to_string(fromEngine()); }),
              [&] { return checkForm(theirs); })
        .limit("the draws, refilled in vectors", makeMany(drawn, [&] { return drawDigits(engine); }), [&] {
            std::mt19937_64 expectedEngine = start;
            expectedEngine.discard(COUNT * DRAWS);
            return engine() == expectedEngine() ? "" : "other draws";
        });
    session.run(comparison);
}

}  // namespace

int main(int argc, char** argv) {
    return vela::bench::measure(argc, argv, {}, runAll);
}
