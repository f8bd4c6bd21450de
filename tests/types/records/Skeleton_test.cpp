// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/Skeleton.hpp"

#include "support/ScratchFolder.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <string>

namespace vela::test {
namespace {

using detail::toValue;

template <class Bones>
std::string textOf(const Bones& bones) {
    std::string text;
    for (const auto& [first, second] : bones) {
        text += (text.empty() ? "" : " ") + std::to_string(toValue(first)) + "-" +
                std::to_string(toValue(second));
    }
    return text + "\n";
}

std::string bones() {
    return textOf(BODY_BONES) + textOf(BODY_BONES_POSE_34);
}

const std::string BONES_AT_THE_START = bones();  // as one of a program's own globals finds them

TEST(Skeleton, BonesAreThereBeforeTheProgramsGlobals) {
    const std::string wanted = contentOf(VELA_TEST_FOLDER "/types/records/bones.txt");
    EXPECT_EQ(bones(), wanted);
    EXPECT_EQ(BONES_AT_THE_START, wanted);
}

}  // namespace
}  // namespace vela::test
