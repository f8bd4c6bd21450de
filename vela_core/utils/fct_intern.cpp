// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/fct_intern.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/utils/detail/cv_types.hpp"

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
    for (const CvType& known : CV_TYPES) {
        if (known.cvType == mat.type()) return known.value;
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
