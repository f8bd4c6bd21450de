# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

from ._core import ERROR_CODE


class Error(RuntimeError):
    """What the library could not do: the text says why, `code` is the library's status."""

    code: ERROR_CODE

    def __init__(self, message: str, code: ERROR_CODE = ERROR_CODE.FAILURE) -> None:
        super().__init__(message)
        self.code = code

    def __reduce__(self) -> tuple[type[Error], tuple[str, ERROR_CODE]]:
        return type(self), (str(self), self.code)


Error.__module__ = "vela"
