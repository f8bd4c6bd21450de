#include "vela_core/utils/fct_intern.hpp"

#include "support/capture.hpp"

#include <gtest/gtest.h>

namespace vela::test {
namespace {

TEST(FctIntern, PictureTypesHaveTheirPixelType) {
    constexpr auto OTHER = MAT_TYPE::MAT_8U_C1;
    // Rows: OpenCV's depths 8U, 8S, 16U, 16S, 32S, 32F, 64F; columns: 1 to 5 channels.
    const MAT_TYPE wanted[7][5] = {
        {OTHER, MAT_TYPE::MAT_8U_C2, MAT_TYPE::MAT_8U_C3, MAT_TYPE::MAT_8U_C4, OTHER},
        {OTHER, OTHER, OTHER, MAT_TYPE::MAT_8S_C4, OTHER},
        {MAT_TYPE::MAT_US16_C1, OTHER, OTHER, OTHER, OTHER},
        {OTHER, OTHER, OTHER, OTHER, OTHER},
        {OTHER, OTHER, OTHER, OTHER, OTHER},
        {MAT_TYPE::MAT_32F_C1, MAT_TYPE::MAT_32F_C2, MAT_TYPE::MAT_32F_C3, MAT_TYPE::MAT_32F_C4, OTHER},
        {OTHER, OTHER, OTHER, OTHER, OTHER}};
    for (int depth = 0; depth < 7; ++depth) {
        for (int channels = 1; channels <= 5; ++channels) {
            EXPECT_EQ(getMatTypeFromCvMat(cv::Mat(1, 1, CV_MAKETYPE(depth, channels))),
                      wanted[depth][channels - 1])
                << depth << " " << channels;
        }
    }
}

TEST(FctIntern, ReadsFieldsOfAParameterFile) {
    LogCapture log;
    const cv::FileStorage file(
        "%YAML:1.0\n---\ntext: \"two words\"\nnumber: -42\nreal: 0.25\nnothing: \"\"\nlist: [ 1, 2 ]\n",
        cv::FileStorage::READ | cv::FileStorage::MEMORY);
    cv::FileNode root = file.root();
    const std::pair<const char*, const char*> fields[] = {{"text", "two words"},
                                                          {"number", "-42"},
                                                          {"real", "2.5000000000000000e-01"},
                                                          {"nothing", ""},
                                                          {"list", ""}};
    for (const auto& [name, text] : fields) {
        std::string value = "default";
        getField(root, name, value);
        EXPECT_EQ(value, text) << name;
    }
    EXPECT_EQ(log.take(), "");
    cv::FileNode leaf = root["number"];
    cv::FileNode none;
    for (cv::FileNode* const node : {&root, &leaf, &none}) {
        std::string value = "default";
        getField(*node, "missing", value);
        EXPECT_EQ(value, "default");
        EXPECT_EQ(log.take(),
                  "vela_core/utils/fct_intern.cpp:108 ERROR [Core]  Parameter missing not found in given "
                  "parameter file, "
                  "default value used.\n");
    }
}

}  // namespace
}  // namespace vela::test
