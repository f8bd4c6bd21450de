// SPDX-License-Identifier: Apache-2.0
// Random identifiers.
#include "support/Session.hpp"

#include <vela_core/vela.hpp>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <random>
#include <sstream>
#include <string>

namespace {

using vela::bench::Comparison;
using vela::bench::Session;

constexpr std::size_t COUNT = 64;
constexpr int DRAWS = 31;  // digits that are not fixed

/// The same digits from the same engine by a text stream.
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

/// What no writer can save: the draws of one identifier.
int drawDigits() {
    using namespace vela::uuid;
    int sum = dis2(gen);
    for (int i = 1; i < DRAWS; ++i) {
        sum += dis(gen);
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
    int drawn = 0;
    boost::uuids::random_generator fromSystem;
    boost::uuids::random_generator_mt19937 fromEngine;
    const auto start = vela::uuid::gen;
    // The stream tells what the engine's numbers should become.
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
        .limit("the draws", makeMany(drawn, drawDigits), [&] {
            const auto after = vela::uuid::gen;
            vela::uuid::gen = start;
            makeMany(theirs, identifierByStream)();
            return after == vela::uuid::gen ? "" : "not as many draws";
        });
    session.run(comparison);
}

}  // namespace

int main(int argc, char** argv) {
    return vela::bench::measure(argc, argv, {}, runAll);
}
