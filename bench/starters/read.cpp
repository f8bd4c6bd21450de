// SPDX-License-Identifier: Apache-2.0
#include <vela_core/vela.hpp>

int main(int argc, char** argv) {
    vela::Mat picture;
    return argc != 2 || picture.read(argv[1]) != vela::ERROR_CODE::SUCCESS;
}
