#include "vela_core/types/String.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>

namespace vela::test {
namespace {

std::string streamed(const String& text) {
    std::ostringstream stream;
    stream << text;
    return stream.str();
}

TEST(String, HoldsTextOrNoCharacterData) {
    struct Case {
        String string;
        const char* text;
        bool empty;
    };
    const Case cases[] = {{String(), "", true},
                          {"", "", true},
                          {std::string(), "", true},
                          {"caf\xC3\xA9", "caf\xC3\xA9", false},
                          {std::string("a b"), "a b", false},
                          {static_cast<const char*>(nullptr), nullptr, true}};
    for (const Case& c : cases) {
        String copy(c.string);
        const String moved(std::move(copy));
        String assigned("before");
        assigned = c.string;
        String set("before");
        set.set(c.text);
        for (const String& string : {c.string, moved, assigned, set}) {
            EXPECT_STREQ(string.c_str(), c.text);
            EXPECT_STREQ(string.get(), c.text);
            EXPECT_EQ(string.empty(), c.empty);
            EXPECT_EQ(streamed(string), c.text == nullptr ? "" : c.text);
            EXPECT_EQ(toStdString(string), c.text == nullptr ? "" : c.text);
            EXPECT_TRUE(string == c.string);
        }
    }
}

TEST(String, ComparesCharacters) {
    const String nothing(static_cast<const char*>(nullptr));
    EXPECT_TRUE(String("abc") == std::string("abc"));
    EXPECT_TRUE(String("abc") != "abcd");
    EXPECT_TRUE(String() == "");
    EXPECT_TRUE(nothing != String()) << "no character data is not the empty text";
}

TEST(String, OwnsItsCharacters) {
    char text[] = "abc";
    String a(text);
    text[0] = 'x';
    EXPECT_EQ(a, "abc");
    const String b(a);
    a.set(a.c_str() + 1);
    EXPECT_EQ(a, "bc");
    EXPECT_EQ(b, "abc");
    String& alias = a;
    a = alias;
    a = std::move(alias);
    EXPECT_EQ(a, "bc");
}

}  // namespace
}  // namespace vela::test
