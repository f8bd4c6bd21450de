# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

from dataclasses import dataclass, field

from ._core import ObjectData


@dataclass
class Objects:
    """The objects of one frame, in the order of detection."""

    list: list[ObjectData] = field(default_factory=list)

    def get_object_data_from_id(self, id: int) -> ObjectData | None:
        """The first object with this id, itself and not a copy; None if there is none."""
        return next((found for found in self.list if found.id == id), None)


Objects.__module__ = "vela"
