# SPDX-License-Identifier: Apache-2.0
"""python -m vela: the commands of velatool, with the process's own streams, arguments and signals."""

import array
import fcntl
import os
import signal
import subprocess
import sys
import termios

import numpy as np
import pytest
import vela
from vela import COORDINATE_SYSTEM as AXES
from vela import UNIT, Mat, io

COMMAND = [sys.executable, "-m", "vela"]


@pytest.fixture
def cloud(tmp_path):
    """A file of three points, one of which is not finite; its name is not valid UTF-8."""
    path = os.fsencode(tmp_path / "a") + b"\xff.ply"
    points = np.array([[1, 2, 3], [np.nan, 0, 1], [0, 0, 2]], np.float32)
    io.write_cloud(Mat.from_points(points), path, keep_grid=True, unit=UNIT.METER, axes=AXES.IMAGE)
    return path


def run(*words, stdin=b""):
    return subprocess.run([*COMMAND, *words], input=stdin, capture_output=True, timeout=60)


def test_convert_reads_and_writes_standard_streams(cloud):
    with open(cloud, "rb") as file:
        done = run("convert", "-", "-", "--format", "xyz", "--unit-to", "mm", stdin=file.read())
    assert done.returncode == 0, done.stderr
    assert [line.split()[:3] for line in done.stdout.splitlines() if line[:1] != b"#"] == [
        [b"1e3", b"2e3", b"3e3"], [b"0", b"0", b"2e3"],
    ]  # fmt: skip
    assert done.stderr.startswith(b"3 points in, 2 written, 1 dropped")


@pytest.mark.parametrize("words", [[], ["shrink"], ["info"], ["info", "none.ply"], ["convert", "a.ply", "--unit-to", "mile", "b"]])
def test_mistakes_print_one_line_and_exit_with_2(words):
    done = run(*words)
    assert (done.returncode, done.stdout, done.stderr.count(b"\n")) == (2, b"", 1)
    assert done.stderr.startswith(b"python -m vela: ")


def test_help_names_the_command():
    assert run("--version").stdout.decode() == f"python -m vela {vela.__version__}\n"
    assert all(command in run("--help").stdout for command in (b"info", b"convert", b"view", b"diff", b"depth2cloud"))


HEADER = b"ply\nformat ascii 1.0\nelement vertex 200000\nproperty float x\nproperty float y\nproperty float z\nend_header\n"


def start_converting():
    return subprocess.Popen([*COMMAND, "convert", "-", "-", "--format", "xyz"], stdin=subprocess.PIPE,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip


def test_an_interrupt_ends_it_at_once():
    with start_converting() as process:
        process.stdin.write(HEADER)
        process.stdin.flush()
        waiting = array.array("i", [1])
        while waiting[0]:
            fcntl.ioctl(process.stdin, termios.FIONREAD, waiting)
        process.send_signal(signal.SIGINT)  # while it waits for points
        assert process.wait(timeout=60) == -signal.SIGINT


def test_a_reader_that_leaves_ends_it():
    with start_converting() as process:
        process.stdout.close()
        process.stdin.write(HEADER + 200000 * b"1 2 3\n")
        process.stdin.close()
        assert process.wait(timeout=60) == -signal.SIGPIPE
