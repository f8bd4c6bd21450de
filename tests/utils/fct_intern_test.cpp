// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/fct_intern.hpp"

#include "support/capture.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <algorithm>
#include <vector>

namespace vela::test {
namespace {

using detail::fromValue;

TEST(FctIntern, MapsEveryOpenCvTypeToItsPixelType) {
    // In the order of MAT_TYPE; all others count as the fifth.
    const std::vector<int> known = {CV_32FC1, CV_32FC2, CV_32FC3, CV_32FC4, CV_8UC1,
                                    CV_8UC2,  CV_8UC3,  CV_8UC4,  CV_16UC1, CV_8SC4};
    for (int type = 0; type < CV_MAKETYPE(CV_16F, 5); ++type) {
        const auto found = std::find(known.begin(), known.end(), type) - known.begin();
        const auto wanted = found == 10 ? MAT_TYPE::MAT_8U_C1 : fromValue<MAT_TYPE>(static_cast<int>(found));
        EXPECT_EQ(getMatTypeFromCvMat(cv::Mat(1, 1, type)), wanted) << cv::typeToString(type);
    }
}

TEST(FctIntern, ReadsFieldsOfAParameterFile) {
    LogCapture log;
    const cv::FileStorage file(
        "%YAML:1.0\n---\ntext: \"two words\"\nnumber: -16777217\nreal: 0.1\nnothing: \"\"\nlist: [ 1, 2 ]\n",
        cv::FileStorage::READ | cv::FileStorage::MEMORY);
    cv::FileNode root = file.root();
    cv::FileNode leaf = root["number"];
    cv::FileNode none;
    const auto field = [](cv::FileNode& node, const char* name) {
        std::string value = "default";
        getField(node, name, value);
        return value;
    };
    EXPECT_EQ(field(root, "text"), "two words");
    EXPECT_EQ(field(root, "number"), "-16777217");
    EXPECT_EQ(field(root, "real"), "1.0000000000000001e-01");
    EXPECT_EQ(field(root, "nothing") + field(root, "list"), "");
    EXPECT_EQ(log.take(), "");
    for (cv::FileNode* const node : {&root, &leaf, &none}) {
        EXPECT_EQ(field(*node, "missing"), "default");
        EXPECT_EQ(log.take(),
                  "vela_core/utils/fct_intern.cpp:108 ERROR [Core]  Parameter missing not found in given "
                  "parameter file, default value used.\n");
    }
}

}  // namespace
}  // namespace vela::test
