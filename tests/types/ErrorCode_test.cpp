#include "vela_core/types/ErrorCode.hpp"

#include "support/device.hpp"
#include "support/fnv.hpp"
#include "vela_core/types/enum_cast.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace vela::test {
namespace {

TEST(ErrorCode, TextsOfAllValues) {
    std::string all;
    for (std::int32_t value = 0; value <= 33; ++value) {
        if (value == 5 || value == 18) continue;  // reserved; CUDA_ERROR has tests of its own
        const auto code = fromValue<ERROR_CODE>(value);
        all += std::to_string(value) + "|" + toString(code).c_str() + "|" + toVerbose(code).c_str() + "\n";
        EXPECT_EQ(errorCode2str(code), toString(code));
        std::ostringstream stream;
        stream << code;
        EXPECT_EQ(stream.str(), toString(code).c_str());
    }
    EXPECT_EQ(fnv1a(all), 0x153561a5518b14d4U) << all;
    EXPECT_EQ(toString(ERROR_CODE::INVALID_AREA_FILE), "INVALID ARE FILE");
    EXPECT_EQ(toVerbose(ERROR_CODE::MODULE_NOT_COMPATIBLE_WITH_CAMERA),
              "The object detection module is not compatible with the KITE");
}

TEST(ErrorCode, UnknownValues) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t value : {5, 34, -1, Limits::max(), Limits::min()}) {
        const auto code = fromValue<ERROR_CODE>(value);
        EXPECT_EQ(toString(code), "Unknown") << value;
        EXPECT_EQ(errorCode2str(code), "Unknown") << value;
        EXPECT_EQ(toVerbose(code), "Unknown error") << value;
    }
}

class ErrorCodeTest : public DeviceTest {};

TEST_F(ErrorCodeTest, TextsOfCudaErrorConsumeThePendingError) {
    const auto provoke = [] { EXPECT_EQ(cudaMallocManaged(nullptr, 0, 1), cudaErrorInvalidValue); };
    provoke();
    EXPECT_EQ(toString(ERROR_CODE::FAILURE), "FAILURE");
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorInvalidValue) << "other codes do not ask";
    EXPECT_EQ(toString(ERROR_CODE::CUDA_ERROR), "CUDA ERROR");
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
    provoke();
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR),
              "A CUDA related error has been caught, data may be corrupted. CUDA Err: invalid argument");
    EXPECT_EQ(toVerbose(ERROR_CODE::CUDA_ERROR),
              "A CUDA related error has been caught, data may be corrupted. CUDA Err: no error");
}

}  // namespace
}  // namespace vela::test
