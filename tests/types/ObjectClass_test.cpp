// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/ObjectClass.hpp"

#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <sstream>

namespace vela::test {
namespace {

using detail::fromValue;

TEST(ObjectClasses, EachSubclassIsInTheClassThatListsIt) {
    std::ostringstream text;
    for (std::int32_t value = -1; value <= 7; ++value) {
        const auto objectClass = fromValue<OBJECT_CLASS>(value);
        text << objectClass << ":";
        for (const OBJECT_SUBCLASS subclass : getObjectSubClasses(objectClass)) {
            text << " '" << subclass << "'";
            EXPECT_EQ(getObjectClass(subclass), objectClass) << subclass;
        }
        text << "\n";
    }
    EXPECT_EQ(text.str(), contentOf(VELA_TEST_FOLDER "/types/object_classes.txt"));
    for (const std::int32_t value : {24, -1}) {
        OBJECT_CLASS none{};
        EXPECT_EQ(printedBy([&] { none = getObjectClass(fromValue<OBJECT_SUBCLASS>(value)); }),
                  "[KITE SDK][AI][Core] ERR : INVALID SUBLASS\n");
        EXPECT_EQ(detail::toValue(none), 7);
    }
}

}  // namespace
}  // namespace vela::test
