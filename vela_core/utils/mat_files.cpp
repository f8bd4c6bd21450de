// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/detail/mat_files.hpp"

#include "vela_core/log/detail/statements.hpp"
#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/utils/depth_export.hpp"
#include "vela_core/utils/detail/cv_types.hpp"
#include "vela_core/utils/fct_intern.hpp"
#include "vela_core/utils/point_cloud_export.hpp"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vela {
using namespace detail;
namespace {

/// OpenCV's type for the images that it encodes; null for others.
const CvType* findEncoded(MAT_TYPE type) {
    const CvType* const known = rowAt(CV_TYPES, type);
    return known != nullptr && known->isEncoded ? known : nullptr;
}

/// The characters after the last dot; none without a dot or if there are more than four.
std::string extensionOf(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
    return extension.size() > 4 ? "" : extension;
}

template <class Format>
struct NamedFormat {
    std::string_view extension;
    Format format;
};
constexpr NamedFormat<DEPTH_FORMAT> DEPTH_FORMATS[] = {{"png", PNG}, {"pfm", PFM}, {"pgm", PGM}};
constexpr NamedFormat<POINT_CLOUD_FORMAT> CLOUD_FORMATS[] = {
    {"pcd", PCD}, {"ply", PLY}, {"vtk", VTK}, {"xyz", XYZ}};

template <class Format, std::size_t count>
Format formatFor(std::string_view extension, const NamedFormat<Format> (&formats)[count], Format other) {
    const auto found =
        std::find_if(std::begin(formats), std::end(formats),
                     [=](const NamedFormat<Format>& named) { return named.extension == extension; });
    return found == std::end(formats) ? other : found->format;
}

ERROR_CODE failed(LogStatement statement) {
    logError(statement);
    return ERROR_CODE::FAILURE;
}

ERROR_CODE writeDepth(Mat& depth, const std::string& path, const std::string& extension) {
    const DEPTH_FORMAT format = formatFor(extension, DEPTH_FORMATS, PFM);
    if (depth.ptrCPU != nullptr && saveDepthAs(depth, format, path, 1.0F)) return ERROR_CODE::SUCCESS;
    return failed(LogStatement::WRITE_DEPTH_FAILED);
}

ERROR_CODE writeCloud(Mat& cloud, const std::string& path, const std::string& extension, bool color,
                      LogStatement failure) {
    const POINT_CLOUD_FORMAT format = formatFor(extension, CLOUD_FORMATS, PCD);
    if (cloud.ptrCPU != nullptr && savePointCloudAs(cloud, format, path, color)) return ERROR_CODE::SUCCESS;
    return failed(failure);
}

/// The encoder's parameters for a compression of 0 to 100, or -1 for the usual one.
std::vector<int> encoderParameters(const std::string& extension, int compression) {
    if (extension == "png") {
        const int level = (compression == -1 ? 30 : compression) / 10;
        return {cv::IMWRITE_PNG_COMPRESSION, std::clamp(level, 0, 9)};
    }
    if (extension == "jpg" || extension == "jpeg") {
        const std::int64_t quality = std::int64_t{100} - (compression == -1 ? 5 : compression);
        return {cv::IMWRITE_JPEG_QUALITY, static_cast<int>(std::clamp<std::int64_t>(quality, 0, 100))};
    }
    return {};
}

ERROR_CODE writeImage(const Mat& image, const std::string& path, const std::string& extension,
                      int compression) {
    // 16-bit samples are written to PNG files only.
    const bool encodable = findEncoded(image.dataType) != nullptr &&
                           (image.dataType != MAT_TYPE::MAT_US16_C1 || extension == "png");
    const cv::Mat encoded = encodable ? wrapAsCvMat(image) : cv::Mat();
    if (encoded.empty()) return failed(LogStatement::WRITE_UNSUPPORTED_TYPE);
    cv::imwrite(path, encoded, encoderParameters(extension, compression));
    cv::redirectError(nullptr);
    return ERROR_CODE::SUCCESS;
}

}  // namespace

cv::Mat detail::wrapAsCvMat(const Mat& mat) {
    const CvType* const type = findEncoded(mat.dataType);
    if (type == nullptr) {
        logError(LogStatement::WRAP_UNSUPPORTED_TYPE);
        return {};
    }
    return {static_cast<int>(mat.height), static_cast<int>(mat.width), type->cvType, mat.ptrCPU,
            mat.getStepBytes(MEM::CPU)};
}

ERROR_CODE Mat::write(const String& path, MEM mem, int compression) {
    if (!isInit) return ERROR_CODE::FAILURE;
    if (mem != MEM::CPU && mem != MEM::GPU) return ERROR_CODE::INVALID_FUNCTION_CALL;
    if (mem == MEM::GPU) {
        const ERROR_CODE status = updateCPUfromGPU();
        if (status != ERROR_CODE::SUCCESS) return status;
    }
    const std::string file = toStdString(path);
    const std::string extension = extensionOf(file);
    try {
        switch (dataType) {
            case MAT_TYPE::MAT_32F_C1:
                return writeDepth(*this, file, extension);
            case MAT_TYPE::MAT_32F_C3:
                return writeCloud(*this, file, extension, false, LogStatement::WRITE_CLOUD3_FAILED);
            case MAT_TYPE::MAT_32F_C4:
                return writeCloud(*this, file, extension, true, LogStatement::WRITE_CLOUD4_FAILED);
            default:
                return writeImage(*this, file, extension, compression);
        }
    } catch (const cv::Exception& exception) {
        logError(LogStatement::WRITE_EXCEPTION, exception.what());
        return ERROR_CODE::FAILURE;
    }
}

ERROR_CODE Mat::read(const String& path) {
    try {
        const cv::Mat image = cv::imread(toStdString(path), cv::IMREAD_UNCHANGED);
        if (image.empty()) return ERROR_CODE::FAILURE;
        Mat decoded(static_cast<std::size_t>(image.cols), static_cast<std::size_t>(image.rows),
                    getMatTypeFromCvMat(image), MEM::CPU);
        std::memcpy(decoded.ptrCPU, image.data, decoded.stepBytesCPU * decoded.height);
        decoded.extraFlag = extraFlag;
        decoded.timestamp = timestamp;
        return decoded.move(*this);
    } catch (const cv::Exception& exception) {
        logError(LogStatement::READ_EXCEPTION, exception.what());
    } catch (const std::exception&) {
        // A failed allocation is not logged.
    }
    return ERROR_CODE::FAILURE;
}

}  // namespace vela
