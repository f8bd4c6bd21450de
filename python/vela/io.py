# SPDX-License-Identifier: Apache-2.0
"""Checked files of point clouds (PLY, PCD, VTK, XYZ), depth maps (PNG, PGM, PFM) and arrays (NPY), and pictures.

A file is written under another name and renamed: it is whole, or the old one. OSError, with errno and path, for
what the system refuses; vela.Error, with file and line, for what a file or a Mat has wrong.
"""

from ._core import (
    CLOUD_FILE as CLOUD_FILE,
    CLOUD_VIEW as CLOUD_VIEW,
    COLOR_BY as COLOR_BY,
    DEPTH_FILE as DEPTH_FILE,
    ENCODING as ENCODING,
    FILE_KIND as FILE_KIND,
    ROW_ORDER as ROW_ORDER,
    CloudInfo as CloudInfo,
    DepthInfo as DepthInfo,
    Result as Result,
    inspect_cloud as inspect_cloud,
    inspect_depth as inspect_depth,
    kind_of as kind_of,
    preview as preview,
    read_cloud as read_cloud,
    read_depth as read_depth,
    read_npy as read_npy,
    save_html as save_html,
    write_cloud as write_cloud,
    write_depth as write_depth,
    write_npy as write_npy,
)
