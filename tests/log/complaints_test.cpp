// SPDX-License-Identifier: Apache-2.0
// The texts that go to standard output instead of the log.
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/vela.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace vela::test {
namespace {

using detail::fromValue;

TEST(Complaints, AreFlushedAtOnce) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { getObjectClass(fromValue<OBJECT_SUBCLASS>(24)); }, "ERR : INVALID SUBLASS\n"},
        {[] { Mat(1, 1, MAT_TYPE::MAT_8U_C1, fromValue<MEM>(5)); }, "ERROR ALLOC MEM TYPE 5\n"},
        {[] {
             Mat mat;
             saveDepthAs(mat, static_cast<DEPTH_FORMAT>(3), "none", 1);
         },
         " Invalid Depth Format\n"}};
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [complain, text] : cases) {
        const auto program = [complain = complain] {
            dup2(STDERR_FILENO, STDOUT_FILENO);
            complain();
            std::_Exit(0);  // does not flush buffers
        };
        EXPECT_EXIT(program(), testing::ExitedWithCode(0), text);
    }
}

}  // namespace
}  // namespace vela::test
