// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/fct_intern.hpp"

#include "support/capture.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <gtest/gtest.h>

namespace vela::test {
namespace {

using detail::toValue;

TEST(FctIntern, PictureTypesHaveTheirPixelType) {
    std::string types;
    for (const int depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F}) {
        for (int channels = 1; channels <= 5; ++channels) {
            types +=
                std::to_string(toValue(getMatTypeFromCvMat(cv::Mat(1, 1, CV_MAKETYPE(depth, channels)))));
        }
        types += " ";
    }
    EXPECT_EQ(types, "45674 44494 84444 44444 44444 01234 44444 ");
}

TEST(FctIntern, ReadsFieldsOfAParameterFile) {
    LogCapture log;
    const cv::FileStorage file(
        "%YAML:1.0\n---\ntext: \"two words\"\nnumber: -42\nreal: 0.25\nnothing: \"\"\nlist: [ 1, 2 ]\n",
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
    EXPECT_EQ(field(root, "number"), "-42");
    EXPECT_EQ(field(root, "real"), "2.5000000000000000e-01");
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
