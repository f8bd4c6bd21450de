#include "vela_core/geometry/conversion.hpp"

#include "vela_core/types/detail/enum_cast.hpp"

#include <cstdint>
#include <iterator>

namespace vela {
namespace {

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
    const auto index = static_cast<std::uint32_t>(toValue(system));
    if (index < std::size(FRAMES)) frame.setSubMatrix3f(Matrix3f(FRAMES[index]), 0, 0);
    return frame;
}

}  // namespace

Matrix4f getCoordinateTransformConversion4f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    return Matrix4f::inverse(frameOf(to)) * frameOf(from);
}

Matrix3f getCoordinateTransformConversion3f(COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    return Transform(getCoordinateTransformConversion4f(from, to)).getRotationMatrix();
}

float getUnitScale(UNIT from, UNIT to) {
    return from == to ? 1.0F : getScaleMillimeter(from) / getScaleMillimeter(to);
}

ERROR_CODE convertCoordinateSystem(Transform& transform, COORDINATE_SYSTEM from, COORDINATE_SYSTEM to) {
    if (from == to) return ERROR_CODE::SUCCESS;
    constexpr COORDINATE_SYSTEM last = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    if (isPast(from, last) || isPast(to, last)) return ERROR_CODE::INVALID_COORDINATE_SYSTEM;
    const Matrix4f k = getCoordinateTransformConversion4f(from, to);
    transform = k * transform * Matrix4f::inverse(k);
    return ERROR_CODE::SUCCESS;
}

ERROR_CODE convertUnit(Transform& transform, UNIT from, UNIT to) {
    if (from == to) return ERROR_CODE::SUCCESS;
    if (isPast(from, UNIT::FOOT) || isPast(to, UNIT::FOOT)) return ERROR_CODE::INVALID_FUNCTION_PARAMETERS;
    const float scale = getUnitScale(from, to);
    for (const int i : {3, 7, 11}) {
        transform.m[i] *= scale;
    }
    return ERROR_CODE::SUCCESS;
}

}  // namespace vela
