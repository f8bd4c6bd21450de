// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/parameter_files.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vela::test {
namespace {

const std::string EXTENSION_AT_THE_START = INIT_PARAM_EXTENSION;

TEST(ParameterFiles, TheExtensionIsSetBeforeTheProgramsGlobals) {
    EXPECT_EQ(EXTENSION_AT_THE_START, ".yml");
}

}  // namespace
}  // namespace vela::test
