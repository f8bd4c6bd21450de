# SPDX-License-Identifier: Apache-2.0
"""Makes a Mat again from what pickle kept: extension functions cannot be pickled by name."""

from __future__ import annotations

from typing import Any

from ._core import Mat


def restore(shape: tuple[int, ...], dtype: str, timestamp: int, name: str, pixels: Any) -> Mat:
    """A Mat of these pixels: in place where they may be written, otherwise a copy."""
    import numpy

    mat = Mat.from_array(numpy.ndarray(shape, dtype, pixels))
    mat.timestamp = timestamp
    mat.name = name
    return mat
