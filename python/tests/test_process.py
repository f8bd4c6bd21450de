# SPDX-License-Identifier: Apache-2.0
"""What importing and using the package does to a process: time, threads, forks, other threads."""

import subprocess
import sys
from pathlib import Path

import pytest
import vela


def in_a_process(code):
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert done.returncode == 0, done.stderr
    return done.stdout.split()


def test_import_is_light():
    """One thread; no numpy, no OpenCV and nothing else of size before it is needed."""
    code = (
        "import sys, os; before = set(sys.modules); import vela; "
        "print(len(os.listdir('/proc/self/task')), 'numpy' in sys.modules, 'opencv' in open('/proc/self/maps').read(), "
        "len(set(sys.modules) - before))"
    )
    threads, numpy_loaded, opencv_loaded, modules = in_a_process(code)
    assert (threads, numpy_loaded, opencv_loaded) == ("1", "False", "False") and int(modules) < 25


def test_a_mat_freed_while_it_is_converted_stays_mapped(run_program):
    assert run_program("race.py") == "survived\n"


@pytest.mark.parametrize("order", ["log-first", "fork-first"])
@pytest.mark.parametrize("end", ["exit", "_exit"])
def test_forked_processes_end(run_program, order, end):
    assert run_program("fork.py", order, end, timeout=30).split()[-1] == "ended"


def test_other_threads_run_meanwhile(run_program):
    ticks, seconds = map(float, run_program("gil.py").split())
    assert ticks > 20 * seconds, "a thread that ticks 200 times a second where it may"


def test_the_tour_prints_and_writes_its_results(tmp_path):
    program = Path(__file__).parents[2] / "examples" / "python" / "tour.py"
    done = subprocess.run([sys.executable, str(program), str(tmp_path)], capture_output=True, text=True, timeout=60)
    assert done.stdout.splitlines() == [
        "75600 of 76800 points written, 1200 without a depth",
        "read back in MILLIMETER: the same points",
        "tour.ply", "tour_depth.png", "tour_shades.png", "tour_top.png",
    ], done.stderr  # fmt: skip
    depth, info = vela.io.read_depth(tmp_path / "tour_depth.png")
    assert info.with_depth == 75600 and depth.numpy()[0, 0] == 3 and depth.numpy()[120, 160] == pytest.approx(1.55)


@pytest.mark.parametrize("method", ["spawn", "fork"])
def test_mats_pass_through_worker_processes(run_program, method):
    assert run_program("pool.py", method) == "equal\n"
