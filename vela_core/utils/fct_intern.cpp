// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/fct_intern.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

namespace vela {
using namespace detail;
namespace {

/// The text after "key: " in the one line that OpenCV writes for a value.
template <class Value>
std::string writtenText(Value value) {
    cv::FileStorage storage(".yml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage << "value" << value;
    const std::string text = storage.releaseAndGetString();
    const std::string key = "value: ";
    const std::size_t start = text.find(key) + key.size();
    return text.substr(start, text.find('\n', start) - start);
}

}  // namespace

MAT_TYPE getMatTypeFromCvMat(const cv::Mat& mat) {
    struct Known {
        int cvType;
        MAT_TYPE type;
    };
    static constexpr Known KNOWN[] = {
        {CV_8UC1, MAT_TYPE::MAT_8U_C1},   {CV_8UC2, MAT_TYPE::MAT_8U_C2},   {CV_8UC3, MAT_TYPE::MAT_8U_C3},
        {CV_8UC4, MAT_TYPE::MAT_8U_C4},   {CV_32FC1, MAT_TYPE::MAT_32F_C1}, {CV_32FC2, MAT_TYPE::MAT_32F_C2},
        {CV_32FC3, MAT_TYPE::MAT_32F_C3}, {CV_32FC4, MAT_TYPE::MAT_32F_C4}, {CV_16UC1, MAT_TYPE::MAT_US16_C1},
        {CV_8SC4, MAT_TYPE::MAT_8S_C4},
    };
    for (const Known& known : KNOWN) {
        if (known.cvType == mat.type()) return known.type;
    }
    return MAT_TYPE::MAT_8U_C1;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the public signature takes the name by value
void getField(cv::FileNode& node, std::string name, std::string& value) {
    const cv::FileNode field = node.isMap() ? node[name] : cv::FileNode();
    if (field.empty()) {
        logError(LogStatement::PARAMETER_NOT_FOUND, name.c_str());
    } else if (field.isInt()) {
        value = writtenText(static_cast<int>(field));
    } else if (field.isReal()) {
        value = writtenText(static_cast<double>(field));
    } else {
        value = field.string();
    }
}

}  // namespace vela
