// SPDX-License-Identifier: Apache-2.0
#include <vela_core/vela.hpp>

int main() {
    vela::Mat mat(16, 16, vela::MAT_TYPE::MAT_32F_C4);
    mat.setTo(vela::Vector4<float>(1, 2, 3, 4));
    return vela::convertUnit(mat, vela::UNIT::METER, vela::UNIT::INCH, vela::MEM::CPU) !=
           vela::ERROR_CODE::SUCCESS;
}
