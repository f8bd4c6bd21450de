// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/image_conversion.hpp"

#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/detail/mat_copy.hpp"
#include "vela_core/utils/detail/mat_sides.hpp"
#include "vela_gpu/kernels.hpp"

#include <cstdint>

namespace vela {
using namespace detail;
namespace {

bool isDeviceImage(const Mat& mat, MAT_TYPE type) {
    return mat.isInit && coversDeviceSide(mat.memType) && mat.dataType == type;
}

std::uint32_t stepPixels(const Mat& mat) {
    return static_cast<std::uint32_t>(mat.stepBytesGPU / 4);
}

}  // namespace

ERROR_CODE convertImage(Mat& source, Mat& destination, cudaStream_t stream) {
    if (!isDeviceImage(source, MAT_TYPE::MAT_8U_C4)) return ERROR_CODE::FAILURE;
    const bool fits = isDeviceImage(destination, MAT_TYPE::MAT_8S_C4) && destination.width == source.width &&
                      destination.height == source.height;
    if (!fits && sharesBuffersOf(source, destination)) {
        // The destination's old buffers are released, which waits for the kernel, after the source was read
        // from them.
        Mat earlier;
        destination.move(earlier);
        return convertImage(&source == &destination ? earlier : source, destination, stream);
    }
    if (!fits) destination.alloc(source.width, source.height, MAT_TYPE::MAT_8S_C4, MEM::GPU);
    cu_cvt2Signed(reinterpret_cast<Vector4<unsigned char>*>(source.ptrGPU),
                  reinterpret_cast<Vector4<char>*>(destination.ptrGPU), stepPixels(source),
                  stepPixels(destination), {source.width, source.height}, stream);
    return ERROR_CODE::SUCCESS;
}

}  // namespace vela
