// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/ErrorCode.hpp"

#include "support/ScratchFolder.hpp"
#include "support/device.hpp"
#include "vela_core/types/enum_stream.hpp"

namespace vela::test {
namespace {

TEST(ErrorCode, EveryValueHasItsTextsAndOthersAreUnknown) {
    std::ostringstream texts;
    for (std::int32_t value = -1; value <= 34; ++value) {
        const auto code = fromValue<ERROR_CODE>(value);
        if (code == ERROR_CODE::CUDA_ERROR) continue;  // has a separate test
        texts << value << " \"" << code << "\" \"" << toVerbose(code) << "\"\n";
        EXPECT_EQ(errorCode2str(code), toString(code));
    }
    EXPECT_EQ(texts.str(), contentOf(VELA_TEST_FOLDER "/types/error_codes.txt"));
    for (const std::int32_t value : {0x7FFFFFFF, INT32_MIN, INT32_MIN + 1, INT32_MIN + 33}) {
        EXPECT_EQ(toString(fromValue<ERROR_CODE>(value)), "Unknown") << value;
        EXPECT_EQ(toVerbose(fromValue<ERROR_CODE>(value)), "Unknown error") << value;
    }
}

class ErrorCodeTest : public DeviceTest {};

TEST_F(ErrorCodeTest, TextsOfCudaErrorConsumeThePendingError) {
    const std::string message = "A CUDA related error has been caught, data may be corrupted. CUDA Err: ";
    EXPECT_EQ(cudaMallocManaged(nullptr, 0, 1), cudaErrorInvalidValue);
    EXPECT_EQ(toString(ERROR_CODE::FAILURE), "FAILURE");
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorInvalidValue) << "other codes do not ask";
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR), message + "invalid argument");
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR), message + "no error");
    EXPECT_EQ(cudaMallocManaged(nullptr, 0, 1), cudaErrorInvalidValue);
    EXPECT_EQ(toString(ERROR_CODE::CUDA_ERROR), "CUDA ERROR");
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

}  // namespace
}  // namespace vela::test
