// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail::signature {

// Signatures printed in front of CUDA errors. Written out, because compilers spell their built-in function
// names differently.
inline constexpr const char* ALLOC = "void vela::Mat::alloc(size_t, size_t, vela::MAT_TYPE, vela::MEM)";
inline constexpr const char* FREE = "void vela::Mat::free(vela::MEM)";
inline constexpr const char* COPY_TO =
    "vela::ERROR_CODE vela::Mat::copyTo(vela::Mat&, vela::COPY_TYPE, cudaStream_t) const";
inline constexpr const char* SET_FROM =
    "vela::ERROR_CODE vela::Mat::setFrom(const vela::Mat&, vela::COPY_TYPE, cudaStream_t)";
inline constexpr const char* UPDATE_CPU = "vela::ERROR_CODE vela::Mat::updateCPUfromGPU(cudaStream_t)";
inline constexpr const char* UPDATE_GPU = "vela::ERROR_CODE vela::Mat::updateGPUfromCPU(cudaStream_t, int)";

// Followed by the name of the pixel type and the end.
inline constexpr const char* SET_VALUE =
    "vela::ERROR_CODE vela::Mat::setValue(size_t, size_t, N, vela::MEM) [with N = ";
inline constexpr const char* GET_VALUE =
    "vela::ERROR_CODE vela::Mat::getValue(size_t, size_t, N*, vela::MEM) const [with N = ";
inline constexpr const char* WITH_END = "; size_t = long unsigned int]";

}  // namespace vela::detail::signature
