# SPDX-License-Identifier: Apache-2.0
"""Makes objects again from what pickle kept: functions of extensions cannot be pickled by name."""

from __future__ import annotations

from typing import Any

from ._core import Mat, Orientation


def restore(shape: tuple[int, ...], dtype: str, timestamp: int, name: str, pixels: Any) -> Mat:
    """A Mat of these pixels: in place where they may be written, otherwise a copy."""
    import numpy

    mat = Mat.from_array(numpy.ndarray(shape, dtype, pixels))
    mat.timestamp = timestamp
    mat.name = name
    return mat


def restore_orientation(x: float, y: float, z: float, w: float) -> Orientation:
    return Orientation.from_xyzw((x, y, z, w))
