// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/tool.hpp"

#include <iostream>

int main(int argc, char** argv) {
    return vela::tools::runTool(argc, argv, std::cout, std::cerr);
}
