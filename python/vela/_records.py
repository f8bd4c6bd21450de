# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

import builtins
from collections.abc import Iterable

from ._core import ObjectData


class Objects:
    """The objects of one frame: `list`, in the order of detection."""

    list: builtins.list[ObjectData]

    def __init__(self, list: Iterable[ObjectData] = ()) -> None:
        self.list = [*list]

    def get_object_data_from_id(self, id: int) -> ObjectData | None:
        """The first object with this id, itself and not a copy; None if there is none."""
        return next((found for found in self.list if found.id == id), None)

    def __repr__(self) -> str:
        return f"Objects({self.list!r})"


Objects.__module__ = "vela"
