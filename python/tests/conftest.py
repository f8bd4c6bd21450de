# SPDX-License-Identifier: Apache-2.0
import subprocess
import sys
from pathlib import Path

import pytest

PROGRAMS = Path(__file__).parent / "programs"


@pytest.fixture
def run_program():
    """Runs a program of tests/programs in a separate process; returns its output."""

    def run(name, *arguments, timeout=120):
        command = [sys.executable, str(PROGRAMS / name), *arguments]
        done = subprocess.run(command, capture_output=True, text=True, timeout=timeout)
        assert done.returncode == 0, f"{command}: {done.returncode}\n{done.stdout}{done.stderr}"
        return done.stdout

    return run
