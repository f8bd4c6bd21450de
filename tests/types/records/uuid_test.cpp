// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/uuid.hpp"

#include "support/ScratchFolder.hpp"
#include "vela_core/types/records/Objects.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace vela::test {
namespace {

const CustomBoxObjectData FIRST_BOXES[2];

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

TEST(Uuid, IsDrawnBeforeTheProgramsGlobals) {
    const std::string first = FIRST_BOXES[0].unique_id.c_str();
    EXPECT_NE(first, toStdString(FIRST_BOXES[1].unique_id));
    EXPECT_NE(std::string("89ab").find(first[19]), std::string::npos) << first;
}

TEST(Uuid, DiffersBetweenRuns) {
    // When this program starts itself again, this holds what the first one drew.
    setenv("VELA_TEST_FIRST_BOX", FIRST_BOXES[0].unique_id.c_str(), 0);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(FIRST_BOXES[0].unique_id != getenv("VELA_TEST_FIRST_BOX") ? 0 : 1),
                testing::ExitedWithCode(0), "");
    unsetenv("VELA_TEST_FIRST_BOX");
}

TEST(Uuid, DiffersBetweenForkedChildren) {
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
