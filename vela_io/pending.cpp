// SPDX-License-Identifier: Apache-2.0
// Functions whose formats are being written: until then they refuse every call.
#include "vela_io/detail/Failure.hpp"

namespace vela::io {
namespace {

Result refused(const String& path) {
    return detail::guarded(path,
                           [](Result& /*result*/) { detail::refuse("this format is not supported yet"); });
}

}  // namespace

Result writeDepth(const Mat& /*depth*/, const String& path, const DepthOptions& /*options*/) {
    return refused(path);
}

Result readDepth(const String& path, Mat& /*depth*/, DepthInfo* /*info*/) {
    return refused(path);
}

Result readDepth(const String& path, Mat& /*depth*/, const DepthReadOptions& /*options*/,
                 DepthInfo* /*info*/) {
    return refused(path);
}

Result inspectDepth(const String& path, DepthInfo& /*info*/) {
    return refused(path);
}

FILE_KIND kindOf(const String& /*path*/) {
    return FILE_KIND::UNKNOWN;
}

}  // namespace vela::io
