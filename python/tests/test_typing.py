# SPDX-License-Identifier: Apache-2.0
"""The stubs must be valid, match the module, and serve a user's type checker."""

import re
import subprocess
import sys
from pathlib import Path

import pytest
import vela

pytest.importorskip("mypy")
PACKAGE = Path(vela.__file__).parent
pytestmark = pytest.mark.skipif(
    not (PACKAGE / "_core.pyi").exists(), reason="sanitized builds have no stubs"
)

# Differences between nanobind's classes and functions and Python's own; none concerns users.
NANOBIND = re.compile(r"__nb_enum__|metaclass differs|stub does not have \*args|is not a function|but runtime is not")

USER = """\
import numpy as np
import numpy.typing as npt
import vela
from vela import io

m = vela.Mat.from_array(np.zeros((4, 5), np.float32))
pixels: npt.NDArray[np.float32] = m.numpy()
colours: npt.NDArray[np.uint8] = vela.Mat.from_points(np.zeros((4, 3), np.float32)).rgba
m.convert_unit(vela.UNIT.METER, vela.UNIT.MILLIMETER, mem=vela.MEM.CPU)
cloud, info = io.read_cloud("cloud.ply", target_unit=vela.UNIT.METER)
count: int = info.points
seen: int = io.preview(cloud, "sides.png", views=[io.CLOUD_VIEW.TOP]).written
moved: npt.NDArray[np.float32] = vela.Transform() @ cloud.xyz
motion: vela.Transform = vela.Transform() @ vela.Transform(vela.Rotation(), (1, 2, 3)).inverse()
try:
    io.write_depth(m, "depth.png")
except vela.Error as error:
    code: vela.ERROR_CODE = error.code
"""

MISTAKES = {
    "m.convert_unit(vela.UNIT.METER, vela.COORDINATE_SYSTEM.IMAGE)": "arg-type",
    "vela.Mat(4, 5, vela.UNIT.METER)": "call-overload",
    "m.widht": "attr-defined",
    "m.width = 3": "misc",
    "io.write_cloud(m, 'a.ply', colour=True)": "call-arg",
    "text: str = m.numpy()": "assignment",
    "vela.Orientation(0, 0, 0, 1)": "call-arg",
}


def mypy(*arguments, cwd=None):
    command = [sys.executable, "-m", *arguments]
    return subprocess.run(command, capture_output=True, text=True, cwd=cwd, timeout=300)


def test_package_is_strictly_typed(tmp_path):
    done = mypy("mypy", "--strict", "-p", "vela", cwd=tmp_path)
    assert done.returncode == 0, done.stdout


def test_stubs_are_like_the_module(tmp_path):
    done = mypy("mypy.stubtest", "--concise", "--ignore-disjoint-bases", "vela", cwd=tmp_path)
    differences = [line for line in done.stdout.splitlines() if not NANOBIND.search(line)]
    assert differences == [] and done.stdout


def test_mistakes_in_a_users_file_are_found(tmp_path):
    lines = USER.splitlines()
    (tmp_path / "user.py").write_text("\n".join([*lines, *MISTAKES]))
    done = mypy("mypy", "--strict", "user.py", cwd=tmp_path)
    found = dict(re.findall(r"user.py:(\d+): error: .*\[(.+)\]", done.stdout))
    wanted = {str(len(lines) + i): kind for i, kind in enumerate(MISTAKES.values(), 1)}
    assert found == wanted, done.stdout
