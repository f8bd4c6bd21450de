# SPDX-License-Identifier: Apache-2.0
"""The example that converts recordings on a cluster."""
import os
import pathlib
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
import vela
import vela.io

pytest.importorskip("mcap_ros2")
pytest.importorskip("distributed")

SCRIPT = pathlib.Path(__file__).parents[2] / "examples/cluster/convert.py"
COUNT = 60
sys.path.insert(0, str(SCRIPT.parent))
import recording  # noqa: E402


@pytest.fixture(scope="module")
def robot(tmp_path_factory):
    path = tmp_path_factory.mktemp("recording") / "robot.mcap"
    recording.write(path, COUNT)
    return path


def start(robot, folder, *options, topic=recording.POINTS):
    return subprocess.Popen([sys.executable, SCRIPT, robot, topic, folder, *options], stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True,
                            env={**os.environ, "PYTHONPATH": os.pathsep.join(filter(None, sys.path))})


def result(process):
    printed, complaints = process.communicate(timeout=300)
    assert process.returncode == 0, complaints
    return printed


@pytest.fixture(scope="module")
def alone(robot, tmp_path_factory):
    folder = tmp_path_factory.mktemp("alone")
    return result(start(robot, folder)), folder


def test_clouds_are_in_the_wanted_unit_and_axes(alone):
    printed, folder = alone
    assert printed.startswith(f"{COUNT} messages")
    xyz, rgb = recording.cloud(7, 160, 90)
    mat, info = vela.io.read_cloud(str(folder / f"{recording.START + 7 * recording.PERIOD}.ply"))
    assert info.unit == vela.UNIT.MILLIMETER
    assert info.axes == vela.COORDINATE_SYSTEM.RIGHT_HANDED_Y_UP_AND_Z_BACKWARD
    wanted = xyz * np.float32(1000) * np.array([1, -1, -1], np.float32)
    np.testing.assert_allclose(mat.xyz, wanted, rtol=1e-6)
    np.testing.assert_array_equal(mat.rgba[..., :3], rgb)


def test_depth_maps_are_converted_too(robot, tmp_path):
    result(start(robot, tmp_path, "--unit", "CENTIMETER", topic=recording.DEPTH))
    xyz, _ = recording.cloud(3, 160, 90)
    mat, info = vela.io.read_depth(str(tmp_path / f"{recording.START + 3 * recording.PERIOD}.png"))
    assert info.unit == vela.UNIT.CENTIMETER
    wanted = (np.nan_to_num(xyz[..., 2]) * 1000).round() / 10
    read = np.nan_to_num(mat.numpy())
    assert np.abs(read - wanted).max() <= 0.5 + 1e-3
    assert (read == 0).sum() == (wanted == 0).sum()


def test_two_workers_leave_the_same_files_as_one_process(robot, alone, tmp_path):
    assert result(start(robot, tmp_path, "--workers", "2")) == alone[0]


def workers_of(process):
    tasks = pathlib.Path(f"/proc/{process.pid}/task").glob("*/children")  # each thread has its own
    return [int(child) for task in tasks for child in task.read_text().split()
            if b"spawn_main" in pathlib.Path(f"/proc/{child}/cmdline").read_bytes()]


def test_a_worker_that_is_killed_in_the_middle_changes_nothing(robot, alone, tmp_path):
    process = start(robot, tmp_path, "--workers", "2", "--ranges", "60")
    deadline = time.monotonic() + 240
    while not list(tmp_path.glob("*.ply")):
        assert process.poll() is None and time.monotonic() < deadline, "no file appeared"
        time.sleep(0.002)
    os.kill(workers_of(process)[0], signal.SIGKILL)
    assert len(list(tmp_path.glob("*.ply"))) < COUNT, "the worker was killed too late to matter"
    assert result(process) == alone[0]


def test_messages_that_hold_less_than_they_say_are_refused():
    import convert
    message = recording.cloud_message(*recording.cloud(0, 8, 4))
    message["fields"] = [type("Field", (), field) for field in message["fields"]]
    broken = type("Message", (), {**message, "data": message["data"][:-65]})
    with pytest.raises(ValueError, match="less than its size says"):
        convert.cloud_of(broken)
