# SPDX-License-Identifier: Apache-2.0
"""What is done to a Mat: conversions, copies between sides, pickling, errors."""

import copy
import os
import pickle
from functools import partial

import numpy as np
import pytest
import vela
from vela import COORDINATE_SYSTEM as AXES
from vela import COPY_TYPE, ERROR_CODE, MAT_TYPE, MEM, UNIT, Mat


@pytest.fixture
def device(monkeypatch):
    """Uses the software device as the GPU."""
    monkeypatch.setenv("VELA_SOFTWARE_DEVICE", "1")


def cloud(height=3, width=4):
    values = np.arange(height * width * 4, dtype=np.float32).reshape(height, width, 4)
    values[..., 3] = np.frombuffer(b"\x01\x02\x03\xff\xff\xff\xff\x7f", np.float32)[0]
    return values


class TestConversions:
    @pytest.mark.parametrize("fourth", [b"\x01\x02\x03\xff", b"\x00\x00\xa0\x7f"])  # a denormal, a signalling NaN
    def test_packed_colour_keeps_its_bits_and_what_lies_around_a_part_too(self, fourth):
        values = np.arange(320, dtype=np.float32).reshape(8, 10, 4)
        values.view(np.uint8).reshape(8, 10, 16)[..., 12:] = list(fourth)
        expected = values.copy()
        x, y, z = np.moveaxis(values[2:5, 3:7, :3] * np.float32(100), -1, 0)
        expected[2:5, 3:7, :3] = np.dstack([z, -x, -y])  # forward, left, up
        m = Mat.from_array(values[2:5, 3:7], copy=False)
        m.convert_unit(UNIT.METER, UNIT.CENTIMETER)
        m.convert_coordinate_system(AXES.IMAGE, AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD)
        assert values.tobytes() == expected.tobytes()

    def test_the_fourth_channel_is_scaled_on_request(self):
        values = np.ones((2, 2, 4), np.float32)
        m = Mat.from_array(values)
        m.convert_unit(UNIT.METER, UNIT.METER)
        assert (values == 1).all()
        m.convert_unit(UNIT.METER, UNIT.MILLIMETER, scale_fourth=True)
        assert (values == 1000).all()

    def test_refusals_carry_code_and_reason(self, device):
        depth, picture = Mat(2, 2, MAT_TYPE.MAT_32F_C1), Mat(2, 2, MAT_TYPE.MAT_8U_C1)
        on_device, shared = Mat(2, 2, MAT_TYPE.MAT_32F_C4, MEM.GPU), Mat.from_array(np.ones((2, 2), np.float32))
        inches = (UNIT.METER, UNIT.INCH)
        for error, why, function, *arguments in (
            ("INVALID_FUNCTION_PARAMETERS", "arguments", picture.convert_unit, *inches),
            ("INVALID_FUNCTION_PARAMETERS", "arguments", depth.convert_coordinate_system, AXES.IMAGE, AXES(1)),
            ("INVALID_FUNCTION_CALL", "empty", Mat().convert_unit, *inches),
            ("INVALID_FUNCTION_CALL", "device", depth.convert_unit, *inches, MEM.BOTH),
            ("INVALID_FUNCTION_CALL", "no device side", depth.update_cpu_from_gpu),
            ("INVALID_FUNCTION_CALL", "no host side", on_device.convert_unit, *inches),
            ("INVALID_FUNCTION_CALL", "no device side", depth.copy_to, Mat(), COPY_TYPE.GPU_CPU),
            ("FAILURE", "for reference Mat is forbidden", shared.update_gpu_from_cpu),
            (ValueError, None, depth.convert_unit, *inches, MEM.MANAGED),
            (ValueError, "host alone", partial(on_device.convert_unit, scale_fourth=True), *inches, MEM.GPU),
            (ValueError, None, Mat, 2, 2, MAT_TYPE.MAT_8U_C1, MEM(0)),
            (TypeError, None, depth.convert_unit, UNIT.METER, AXES.IMAGE),
            (TypeError, None, depth.convert_unit, 2, 0),
            (TypeError, None, Mat, 2, 2, UNIT.METER),
            (TypeError, None, Mat, -1, 2, MAT_TYPE.MAT_8U_C1),
        ):
            with pytest.raises(vela.Error if isinstance(error, str) else error, match=why) as caught:
                function(*arguments)
            assert not isinstance(error, str) or caught.value.code.name == error

    @pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""), reason="AddressSanitizer ends the process instead")
    def test_without_memory_a_memory_error_is_raised(self):
        with pytest.raises(MemoryError):
            Mat(2**40, 2**20, MAT_TYPE.MAT_8U_C1)

    def test_without_pixels_conversions_keep_the_shape(self):
        m = Mat(0, 3, MAT_TYPE.MAT_32F_C4)
        m.convert_unit(UNIT.METER, UNIT.INCH)
        m.convert_coordinate_system(AXES.IMAGE, AXES.LEFT_HANDED_Z_UP_AND_X_FORWARD)
        assert m.clone().shape == (3, 0, 4) and m.valid.shape == (3, 0)


class TestCopies:
    def test_fitting_pixels_are_written_through_others_replaced(self):
        big = np.zeros((6, 8), np.uint8)
        part = Mat.from_array(big[1:4, 2:7], copy=False)
        source = Mat.from_array(np.arange(1, 16, dtype=np.uint8).reshape(3, 5))
        source.timestamp = 7
        source.copy_to(part)
        assert np.array_equal(big[1:4, 2:7], source.numpy()) and np.count_nonzero(big) == 15
        assert part.timestamp == 7
        Mat.from_array(np.ones((2, 2), np.uint8)).copy_to(part)
        assert part.shape == (2, 2) and part.owns and np.count_nonzero(big) == 15

    @pytest.mark.parametrize("shift", [-1, 1])
    def test_parts_may_overlap(self, shift):
        values = np.arange(80, dtype=np.float32).reshape(8, 10)
        expected = values[1:7].copy()
        Mat.from_array(values[1:7]).copy_to(Mat.from_array(values[1 + shift : 7 + shift], copy=False))
        assert np.array_equal(values[1 + shift : 7 + shift], expected)

    def test_a_clone_has_pixels_of_its_own(self, device):
        for mem in (MEM.CPU, MEM.BOTH, MEM.MANAGED):
            m = Mat(3, 2, MAT_TYPE.MAT_32F_C3, mem)
            m.set_to((1, 2, 3))
            m.timestamp, m.name = 5, "left"
            n = m.clone()
            m.set_to(0)
            assert (n.mem, n.timestamp, n.name) == (mem, 5, "n/a") and (n.numpy() == [1, 2, 3]).all()
        assert not Mat().clone()

    def test_pixels_pass_through_the_device(self, device):
        values = cloud()
        m = Mat.from_array(values, copy=True)
        m.update_gpu_from_cpu()
        assert m.mem is MEM.BOTH
        m.set_to(0)
        m.convert_unit(UNIT.METER, UNIT.MILLIMETER, MEM.GPU)
        assert (m.numpy() == 0).all(), "the host side is another one"
        kept = m.clone()
        m.update_cpu_from_gpu()
        assert np.array_equal(m.xyz, values[..., :3] * 1000) and np.array_equal(m.rgba[0, 0], Mat.from_array(values).rgba[0, 0])
        kept.convert_unit(UNIT.MILLIMETER, UNIT.METER, MEM.BOTH)
        assert np.allclose(kept.xyz, values[..., :3], rtol=1e-6, atol=0)
        there, back = Mat(), Mat()
        m.copy_to(there, COPY_TYPE.CPU_GPU)
        there.copy_to(back, COPY_TYPE.GPU_CPU)
        assert (there.mem, back.mem) == (MEM.GPU, MEM.CPU) and bytes(back) == bytes(m)
        there.update_cpu_from_gpu()
        assert there.mem is MEM.BOTH and bytes(there) == bytes(m)


class TestPickle:
    @pytest.mark.parametrize("protocol", range(2, pickle.HIGHEST_PROTOCOL + 1))
    @pytest.mark.parametrize(
        "values", [cloud(), cloud()[:, 1:3], np.zeros((0, 2, 3), np.uint8), np.arange(8, dtype=np.int8).reshape(1, 2, 4)]
    )
    def test_every_field_comes_back(self, protocol, values):
        m = Mat.from_array(values)
        m.timestamp, m.name = 2**63, "Übersicht"
        n = pickle.loads(pickle.dumps(m, protocol))
        assert (n.type, n.shape, n.timestamp, n.name) == (m.type, m.shape, 2**63, "Übersicht")
        assert bytes(n) == bytes(m)
        n.set_to(1)  # writable, whichever buffer pickle gave it

    def test_pixels_go_out_of_band(self):
        m = Mat.from_array(np.arange(1_000_000, dtype=np.float32).reshape(1000, 1000))
        buffers = []
        data = pickle.dumps(m, 5, buffer_callback=buffers.append)
        assert len(data) < 500 and np.shares_memory(np.asarray(buffers[0]).view(np.float32).ravel(), m.numpy())
        assert np.array_equal(pickle.loads(data, buffers=buffers).numpy(), m.numpy())

    def test_what_has_no_host_side_cannot_be_pickled(self, device):
        for m in (Mat(), Mat(2, 2, MAT_TYPE.MAT_8U_C1, MEM.GPU)):
            with pytest.raises(BufferError):
                pickle.dumps(m)

    def test_deep_copies_are_apart(self):
        m = Mat.from_array(cloud())
        deep = copy.deepcopy(m)
        assert not np.shares_memory(deep.numpy(), m.numpy()) and bytes(deep) == bytes(m)


def test_errors_carry_code_and_text():
    error = vela.Error("convert: no", ERROR_CODE.CUDA_ERROR)
    again = pickle.loads(pickle.dumps(error))
    assert (type(again), str(again), again.code) == (vela.Error, "convert: no", ERROR_CODE.CUDA_ERROR)
    assert isinstance(error, RuntimeError) and repr(type(error)) == "<class 'vela.Error'>"


def test_repr_tells_size_type_and_ownership():
    m = Mat(5, 3, MAT_TYPE.MAT_8U_C3)
    m.name = "left"
    assert repr(m) == 'Mat(5, 3, 8U C3, CPU, "left")'
    assert repr(Mat.from_array(np.zeros((1, 2), np.float32))) == "Mat(2, 1, 32F C1, CPU, shared)"
    assert repr(Mat()) == "Mat()" and not Mat() and m and not Mat().owns
