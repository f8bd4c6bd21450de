// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/frames.hpp"

#include "vela_core/geometry/detail/checks.hpp"
#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/detail/enum_table.hpp"

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<COORDINATE_SYSTEM> COORDINATE_SYSTEM_NAMES[] = {
    {COORDINATE_SYSTEM::IMAGE, "IMAGE"},
    {COORDINATE_SYSTEM::LEFT_HANDED_Y_UP_AND_Z_FORWARD, "Left HANDED Y UP and Z FORWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Y_UP_AND_Z_BACKWARD, "Right HANDED Y UP and Z BACKWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_Y_FORWARD, "Right HANDED Z UP and Y FORWARD"},
    {COORDINATE_SYSTEM::LEFT_HANDED_Z_UP_AND_X_FORWARD, "Left HANDED Z UP and X FORWARD"},
    {COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD, "Right HANDED Z UP and X FORWARD"},
};

// Each maps coordinates of its convention to IMAGE coordinates. Indexed by COORDINATE_SYSTEM.
constexpr float FRAMES[][9] = {
    {1, 0, 0, 0, 1, 0, 0, 0, 1},    // IMAGE
    {1, 0, 0, 0, -1, 0, 0, 0, 1},   // LEFT_HANDED_Y_UP_AND_Z_FORWARD
    {1, 0, 0, 0, -1, 0, 0, 0, -1},  // RIGHT_HANDED_Y_UP_AND_Z_BACKWARD
    {1, 0, 0, 0, 0, -1, 0, 1, 0},   // RIGHT_HANDED_Z_UP_AND_Y_FORWARD
    {0, 1, 0, 0, 0, -1, 1, 0, 0},   // LEFT_HANDED_Z_UP_AND_X_FORWARD
    {0, -1, 0, 0, 0, -1, 1, 0, 0},  // RIGHT_HANDED_Z_UP_AND_X_FORWARD
};

Matrix4f frameOf(COORDINATE_SYSTEM system) {
    Matrix4f frame;
    const auto* const known = rowAt(FRAMES, system);
    if (known != nullptr) frame.setSubMatrix3f(Matrix3f(*known), 0, 0);
    return frame;
}

}  // namespace

String toString(const COORDINATE_SYSTEM& value) {
    return nameIn(COORDINATE_SYSTEM_NAMES, value);
}

ERROR_CODE detail::checkFrames(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    constexpr COORDINATE_SYSTEM last = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    return isPast(from, last) || isPast(to, last) ? ERROR_CODE::INVALID_COORDINATE_SYSTEM
                                                  : ERROR_CODE::SUCCESS;
}

Matrix4f getCoordinateTransformConversion4f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    return Matrix4f::inverse(frameOf(to)) * frameOf(from);
}

Matrix3f getCoordinateTransformConversion3f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    return Transform(getCoordinateTransformConversion4f(from, to)).getRotationMatrix();
}

ERROR_CODE convertCoordinateSystem(Transform& transform, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    if (from == to) return ERROR_CODE::SUCCESS;
    const ERROR_CODE status = checkFrames(from, to);
    if (status != ERROR_CODE::SUCCESS) return status;
    const Matrix4f k = getCoordinateTransformConversion4f(from, to);
    transform = k * transform * Matrix4f::inverse(k);
    return ERROR_CODE::SUCCESS;
}

}  // namespace vela
