// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Transform.hpp"

#include "support/geometry.hpp"

namespace vela::test {
namespace {

TEST(Transform, RepresentationsAgreeAndKeepTheRest) {
    for (const float x : {-3.0F, 0.0F, 2.0F}) {
        for (const float y : {-2.5F, 0.0F, 0.7F}) {
            for (const float z : {-1.3F, 0.0F, 0.4F}) {
                const Rotation r = Rotation(y, {0, 1, 0}) * Rotation(z, {0, 0, 1}) * Rotation(x, {1, 0, 0});
                Transform t;
                t.setEulerAngles({x, y, z});
                t.setTranslation({1, 2, 3});
                expectNear(t, Transform(r, Translation(1, 2, 3)));
                expectNear(t, Transform(t.getOrientation(), t.getTranslation()), ROOT_TOLERANCE);
                expectNear(t.getEulerAngles(), {x, y, z}, ROOT_TOLERANCE);
                t.m[12] = 4;
                const Transform wanted(t);
                t.setRotation(Rotation());
                t.setOrientation(wanted.getOrientation());
                expectNear(t, wanted, ROOT_TOLERANCE);
                t.setRotation(Rotation());
                t.setRotationVector(wanted.getRotationVector());
                expectNear(t, wanted, ROOT_TOLERANCE);
                t.setRotation(Rotation());
                t.setEulerAngles(wanted.getEulerAngles(false), false);
                expectNear(t, wanted, ROOT_TOLERANCE);
            }
        }
    }
}

TEST(Transform, MovesPoints) {
    Transform t(Rotation(std::acos(0.0F), {0, 0, 1}), Translation(10, 20, 30));
    t.m[12] = t.m[15] = NAN;  // row 3 is ignored
    const Vector3<float> moved = t * Vector3<float>(1, 2, 3);
    expectNear(moved, {8, 21, 33});
    const Matrix4f columns = t * Vector4<float>(1, 2, 3, 1);
    expectNear(moved, {columns(0, 3), columns(1, 3), columns(2, 3)}, 0.0F);
}

}  // namespace
}  // namespace vela::test
