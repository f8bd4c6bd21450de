// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/String.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>
#include <vector>

namespace vela::test {
namespace {

TEST(String, HoldsTextOrNoCharacterData) {
    for (const char* const text : {"", "caf\xC3\xA9", static_cast<const char*>(nullptr)}) {
        const std::string shown = text == nullptr ? "" : text;
        const String string(text);
        String assigned("before");
        assigned = string;
        String set("before");
        set.set(text);
        String copy(string);
        const String moved(std::move(copy));
        for (const String& each : {string, assigned, set, moved}) {
            std::ostringstream stream;
            stream << each;
            EXPECT_STREQ(each.c_str(), text);
            EXPECT_STREQ(each.get(), text);
            EXPECT_EQ((std::vector{stream.str(), toStdString(each)}), std::vector(2, shown));
            EXPECT_EQ(each.empty(), shown.empty());
            EXPECT_TRUE(each == string);
        }
    }
    EXPECT_STREQ(String().c_str(), "");
}

TEST(String, ComparesCharacters) {
    EXPECT_TRUE(String("abc") != "abcd" && String("abc") == std::string("abc"));
    EXPECT_TRUE(String(static_cast<const char*>(nullptr)) != "") << "no character data is not the empty text";
}

TEST(String, OwnsItsCharacters) {
    char text[] = "abc";
    String a(text);
    text[0] = 'x';
    const String b(a);
    a.set(a.c_str() + 1);
    String& alias = a;
    a = alias;
    a = std::move(alias);
    EXPECT_EQ((std::vector{a, b}), (std::vector<String>{"bc", "abc"}));
}

}  // namespace
}  // namespace vela::test
