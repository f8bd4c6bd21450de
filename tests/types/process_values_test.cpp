// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/uuid.hpp"

#include "support/ScratchFolder.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/parameter_files.hpp"
#include "vela_core/types/records/Objects.hpp"
#include "vela_core/types/records/Skeleton.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>

namespace vela::test {
namespace {

std::string bones() {
    std::string text;
    const auto add = [&](const auto& bones) {
        for (const auto& [first, second] : bones) {
            text += (&first == &bones[0].first ? "" : " ") + std::to_string(detail::toValue(first)) + "-" +
                    std::to_string(detail::toValue(second));
        }
        text += "\n";
    };
    add(BODY_BONES);
    add(BODY_BONES_POSE_34);
    return text;
}

// The values that a program's own globals see.
const CustomBoxObjectData FIRST_BOXES[2];
const std::string EXTENSION_AT_THE_START = INIT_PARAM_EXTENSION;
const std::string BONES_AT_THE_START = bones();

TEST(Uuid, EachDigitIsOneDrawInOrder) {
    std::mt19937_64 replay = uuid::gen;
    std::uniform_int_distribution<std::size_t> digit(0, 15);
    std::uniform_int_distribution<std::size_t> variant(8, 11);
    for (int repetition = 0; repetition < 100; ++repetition) {
        std::string wanted = "dddddddd-dddd-4ddd-vddd-dddddddddddd";
        for (char& place : wanted) {
            if (place == 'd') place = "0123456789abcdef"[digit(replay)];
            if (place == 'v') place = "0123456789abcdef"[variant(replay)];
        }
        EXPECT_EQ(repetition % 2 == 0 ? generate_unique_id() : String(uuid::generate_uuid_v4()), wanted);
    }
}

TEST(ProcessValues, AreThereBeforeTheProgramsGlobals) {
    const std::string wanted = contentOf(VELA_TEST_FOLDER "/types/bones.txt");
    EXPECT_EQ(bones(), wanted);
    EXPECT_EQ(BONES_AT_THE_START, wanted);
    EXPECT_EQ(EXTENSION_AT_THE_START, ".yml");
    EXPECT_NE(toStdString(FIRST_BOXES[0].unique_id), toStdString(FIRST_BOXES[1].unique_id));
    EXPECT_NE(std::string("89ab").find(FIRST_BOXES[0].unique_id.c_str()[19]), std::string::npos)
        << FIRST_BOXES[0].unique_id;
}

TEST(Uuid, EachRunDrawsItsOwn) {
    // When this program starts itself again, this holds what the first one drew.
    setenv("VELA_TEST_FIRST_BOX", FIRST_BOXES[0].unique_id.c_str(), 0);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(FIRST_BOXES[0].unique_id != getenv("VELA_TEST_FIRST_BOX") ? 0 : 1),
                testing::ExitedWithCode(0), "");
    unsetenv("VELA_TEST_FIRST_BOX");
}

TEST(Uuid, ForkedChildrenDrawTheirOwn) {
    const ScratchFolder folder;
    std::set<std::string> drawn = {uuid::generate_uuid_v4()};
    for (const char* const name : {"a", "b"}) {
        const std::mt19937_64 parents = uuid::gen;
        const pid_t child = fork();
        if (child == 0) {
            put(folder / name, uuid::generate_uuid_v4());
            _exit(0);
        }
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
        EXPECT_EQ(uuid::gen, parents) << "the parent is not reseeded";
        drawn.insert(contentOf(folder / name));
    }
    drawn.insert(uuid::generate_uuid_v4());
    EXPECT_EQ(drawn.size(), 4U);
}

}  // namespace
}  // namespace vela::test
