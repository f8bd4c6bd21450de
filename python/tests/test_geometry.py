# SPDX-License-Identifier: Apache-2.0
"""Matrices, motions and records, against numpy and against values worked out by hand."""

import copy
import gc
import math
import pickle

import numpy as np
import pytest
import vela
from vela import COORDINATE_SYSTEM as AXES
from vela import UNIT, Matrix3f, Matrix4f, Orientation, Pose, Rotation, Transform, Translation

type_of = type
QUARTER_ABOUT_Z = Rotation(math.pi / 2, (0, 0, 1))
MOTION = Transform(QUARTER_ABOUT_Z, Translation(1, 2, 3))


@pytest.mark.parametrize(("type", "rows"), [(Matrix3f, 3), (Matrix4f, 4), (Rotation, 3), (Transform, 4)])
class TestMatrices:
    def test_view_writes_through_and_keeps_its_owner(self, type, rows):
        matrix = type()
        view = matrix.matrix
        assert view.dtype == np.float32 and np.array_equal(view, np.eye(rows))
        view[0, 1] = 5
        assert matrix.matrix[0, 1] == 5 == np.asarray(matrix)[0, 1]
        del matrix
        gc.collect()
        junk = [type() for _ in range(100)]
        assert view[0, 1] == 5 and junk

    def test_products_and_comparisons_are_numpys(self, type, rows):
        random = np.random.default_rng(rows)
        a, b = random.normal(size=(2, rows, rows)).astype(np.float32)
        product = type(a) @ type(b)
        assert isinstance(product, type) and np.allclose(product.matrix, a @ b, atol=1e-5)
        assert type(a) == type(a) and type(a) != type(b) and not (type(a) == 3)
        assert np.array_equal(type(a).transpose().matrix, a.T) and isinstance(type(a).transpose(), type)
        assert np.array_equal(type(a.astype(np.float64)).matrix, a), "float64 is rounded"
        assert type(a.tolist()) == type(a)
        plain = (Matrix3f if rows == 3 else Matrix4f)(b)
        mixed = type(a) @ plain
        assert type_of(mixed) is type_of(plain) and np.allclose(mixed.matrix, a @ b, atol=1e-5)

    @pytest.mark.parametrize("duplicate", [copy.copy, copy.deepcopy, lambda m: pickle.loads(pickle.dumps(m))])
    def test_copies_are_equal_and_apart(self, type, rows, duplicate):
        original = type(np.arange(rows * rows, dtype=np.float32).reshape(rows, rows))
        other = duplicate(original)
        assert isinstance(other, type) and other == original
        other.matrix[0, 0] = 9
        assert other != original

    def test_wrong_shapes_are_refused(self, type, rows):
        for values in (np.eye(rows + 1), np.eye(rows)[:, :2], np.zeros(rows * rows), "text"):
            with pytest.raises(TypeError):
                type(values)


def test_inverse_undoes_a_motion_or_raises():
    assert np.allclose((MOTION @ MOTION.inverse()).matrix, np.eye(4), atol=1e-6)
    assert isinstance(MOTION.inverse(), Transform) and isinstance(QUARTER_ABOUT_Z.inverse(), Rotation)
    with pytest.raises(vela.Error, match="inverse") as caught:
        Matrix4f(np.zeros((4, 4), np.float32)).inverse()
    assert caught.value.code is vela.ERROR_CODE.FAILURE


@pytest.mark.parametrize("shape", [(3,), (1, 3), (7, 3), (2, 5, 3), (0, 3)])
def test_points_are_moved(shape):
    points = np.random.default_rng(1).normal(size=shape).astype(np.float32)
    x, y, z = points[..., 0], points[..., 1], points[..., 2]
    turned = np.stack([-y, x, z], -1)
    assert np.allclose(QUARTER_ABOUT_Z @ points, turned, atol=1e-6)
    moved = MOTION @ points
    assert moved.shape == shape and moved.dtype == np.float32
    assert np.allclose(moved, turned + np.float32([1, 2, 3]), atol=1e-6)
    assert np.allclose(MOTION @ np.asfortranarray(points.astype(np.float64)), moved, atol=1e-6)


def test_points_of_other_shapes_are_refused():
    assert np.allclose(MOTION @ (1, 0, 0), (1, 3, 3), atol=1e-6), "a tuple will do"
    for bad in (np.zeros((3, 2), np.float32), np.float32(1), "text", None):
        with pytest.raises((ValueError, TypeError)):
            MOTION @ bad


def test_parts_of_a_motion_are_set_one_by_one():
    half = math.sqrt(0.5)
    t = Transform()
    t.translation, t.orientation = (4, 5, 6), MOTION.orientation
    assert t.translation.xyz == (4, 5, 6) and np.allclose(t.orientation.xyzw, (0, 0, half, half), atol=1e-3)
    t.set_euler_angles((0, 0, 0))
    assert np.allclose(t.rotation.matrix, np.eye(3), atol=1e-6) and t.translation.z == 6
    with pytest.raises(AttributeError):
        t.translation.x = 1  # would change a copy


def test_orientation_names_its_order():
    q = Orientation.from_wxyz((0.5, 0.1, 0.2, 0.3))
    assert np.allclose(q.xyzw, (0.1, 0.2, 0.3, 0.5)) and np.allclose(q.wxyz, (0.5, 0.1, 0.2, 0.3))
    assert Orientation.from_xyzw(q.xyzw) == q == pickle.loads(pickle.dumps(q))
    with pytest.raises(TypeError):
        Orientation(0, 0, 0, 1)
    turn = Orientation.between((1, 0, 0), (0, 1, 0))
    assert np.allclose(Translation(2, 0, 0).rotated((turn @ turn).normalise()).normalize().xyz, (-1, 0, 0), atol=1e-6)
    assert pickle.loads(pickle.dumps(Translation(1, 2, 3))) == Translation((1, 2, 3)) != Translation()


def test_conversions_match_values_worked_out_by_hand():
    t = Transform(QUARTER_ABOUT_Z, (1, 2, 3))
    t.convert_unit(UNIT.METER, UNIT.CENTIMETER)
    t.convert_coordinate_system(AXES.IMAGE, AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD)
    assert t.translation.xyz == (300, -100, -200)
    change = vela.get_coordinate_transform_conversion4f(AXES.IMAGE, AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD)
    assert np.array_equal(change @ np.float32([1, 2, 3]), (3, -1, -2))
    assert vela.get_unit_scale(UNIT.INCH, UNIT.MILLIMETER) == pytest.approx(25.4)
    heading = Transform(Rotation(1.0, (0, 1, 0)), (1, 2, 3))  # about the vertical of IMAGE
    heading.remove_yaw(AXES.IMAGE)
    assert np.allclose(heading.matrix[:3, :3], np.eye(3), atol=1e-6) and heading.translation.xyz == (1, 2, 3)
    down = vela.compute_rotation_matrix_from_gravity((0, 0, 9.81), (0, 1, 0))
    assert np.allclose(down @ np.float32([0, 1, 0]), (0, 0, 1), atol=1e-6)


def test_a_pose_shares_its_arrays_and_transform():
    pose = Pose(MOTION, timestamp=2**60, confidence=80)
    covariance, twist = pose.pose_covariance, pose.twist
    covariance[0, 5], twist[5] = 2, 3
    pose.transform.translation = 7, 8, 9
    assert covariance.shape == (6, 6) and pose.pose_covariance[0, 5] == 2 and pose.twist[5] == 3
    assert pose.translation.xyz == (7, 8, 9) and (pose.timestamp, pose.confidence, pose.valid) == (2**60, 80, False)
    del pose
    gc.collect()
    assert covariance[0, 5] == 2 and twist[5] == 3


def test_sensor_records_hold_and_check_values():
    data = vela.SensorsData()
    data.imu.angular_velocity = 1, 2, 3
    data.imu.pose.translation = 1, 0, 0
    data.temperature.temperatures = {vela.SENSOR_LOCATION.IMU: 36.5}
    assert data.imu.angular_velocity == (1, 2, 3) and data.imu.pose.translation.x == 1
    assert data.barometer.available is False and data.magnetometer.rate == 0, "never without a value"
    assert data.temperature.get(vela.SENSOR_LOCATION.IMU) == 36.5
    with pytest.raises(vela.Error):
        data.temperature.get(vela.SENSOR_LOCATION.BAROMETER)
    configuration = vela.SensorsConfiguration()
    configuration.gyroscope.available = True
    assert [type for type in vela.SENSOR_TYPE if configuration.is_sensor_available(type)] == [vela.SENSOR_TYPE.GYROSCOPE]
    with pytest.raises(TypeError):
        data.imu.angular_velocity = 1, 2


def test_camera_records_hold_and_check_values():
    calibration = vela.CalibrationParameters()
    calibration.camera_pair_transform.translation = -120, 0, 0
    calibration.left.distortion[:] = 1, 2, 3, 4, 5
    calibration.left.image_size = vela.Resolution(1280, 720)
    assert (calibration.left.image_size.height, calibration.left.distortion[4]) == (720, 5)
    assert calibration.get_camera_baseline() == 120
    source = vela.InputType()
    source.set_from_stream("10.0.0.2", 30000)
    assert (source.kind, source.address, source.port) == (3, "10.0.0.2", 30000)
    device = vela.DeviceProperties()
    device.model, device.id, device.path, device.serial = vela.MODEL.KITE_3E, 2, "/dev/video2", 77
    assert str(device) == "KITE 3e (2) /dev/video2 SN77 NOT AVAILABLE"
    with pytest.raises(TypeError):
        device.serial = -1


def test_objects_are_found_by_id_and_keep_masks_alive():
    first, second = vela.ObjectData(), vela.ObjectData()
    first.id, second.id = 4, 9
    second.bounding_box_2d = [(0, 0), (5, 0), (5, 5), (0, 5)]
    second.mask = vela.Mat.from_array(np.full((4, 5), 255, np.uint8))
    mask = second.mask.numpy()
    objects = vela.Objects([first, second])
    assert objects.get_object_data_from_id(9) is second and objects.get_object_data_from_id(5) is None
    assert second.bounding_box_2d[2] == (5, 5) and second.keypoint == []
    second.mask = vela.Mat()
    del objects, second
    gc.collect()
    assert (mask == 255).all()
    assert vela.CustomBoxObjectData().unique_id != vela.generate_unique_id()
    assert (vela.BODY_PARTS.NOSE, vela.BODY_PARTS.NECK) in vela.BODY_BONES and vela.BODY_BONES_POSE_34
