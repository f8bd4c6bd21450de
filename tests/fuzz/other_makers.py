# SPDX-License-Identifier: Apache-2.0
"""Writes small clouds and depth maps by the programs of other makers into two folders.

Usage: other_makers.py CLOUD_FOLDER DEPTH_FOLDER, in an environment made by `scripts/setup --with readers`. A program
that is missing there is left out."""
import importlib
import sys

import numpy as np

clouds, depths = sys.argv[1] + "/", sys.argv[2] + "/"
points = np.arange(12, dtype=np.float32).reshape(4, 3) / 7
colors = np.arange(12, dtype=np.uint8).reshape(4, 3) * 20
samples = np.arange(12, dtype=np.uint16).reshape(3, 4) * 500


def plyfile(module):
    vertex = np.zeros(4, [(name, "f8") for name in "xyz"] + [(name, "u1") for name in ("red", "green", "blue")])
    faces = np.array([([0, 1, 2],)], dtype=[("vertex_indices", "i4", (3,))])
    for i in range(3):
        vertex["xyz"[i]], vertex[("red", "green", "blue")[i]] = points[:, i], colors[:, i]
    elements = [module.PlyElement.describe(faces, "face"), module.PlyElement.describe(vertex, "vertex")]
    for text, order in ((True, "="), (False, "<"), (False, ">")):
        module.PlyData(elements, text=text, byte_order=order).write(f"{clouds}plyfile{'=<>'.index(order)}.ply")


def open3d(module):
    cloud = module.geometry.PointCloud(module.utility.Vector3dVector(points))
    cloud.colors = module.utility.Vector3dVector(colors / 255.0)
    for name in ("ply", "pcd", "xyz", "xyzrgb", "pts"):
        for text in (False, True):
            module.io.write_point_cloud(f"{clouds}open3d_{text}.{name}", cloud, write_ascii=text, compressed=not text)


def meshio(module):
    mesh = module.Mesh(points, [("triangle", np.array([[0, 1, 2]])), ("vertex", np.arange(4).reshape(-1, 1))])
    for kind in ("ply", "vtk", "vtk42"):
        for binary in (False, True):
            module.write(f"{clouds}meshio_{binary}.{kind}", mesh, file_format=kind, binary=binary)


def trimesh(module):
    for name in ("ply", "xyz"):
        module.PointCloud(points, colors).export(f"{clouds}trimesh.{name}")


def pypcd4(module):
    packed = np.frombuffer(np.column_stack([colors[:, ::-1], np.zeros(4, np.uint8)]).tobytes(), np.float32)
    cloud = module.PointCloud.from_xyzrgb_points(np.column_stack([points, packed]))
    for encoding in module.Encoding:
        cloud.save(f"{clouds}pypcd4_{encoding.value}.pcd", encoding=encoding)


def cv2(module):
    for name in ("png", "pgm"):
        module.imwrite(f"{depths}cv.{name}", samples)
        module.imwrite(f"{depths}cv8.{name}", samples.astype(np.uint8))
    module.imwrite(f"{depths}plain.pgm", samples, [module.IMWRITE_PXM_BINARY, 0])
    module.imwrite(f"{depths}cv.pfm", samples.astype(np.float32))


def numpy(module):
    for name, array in (("f4", samples.astype("<f4")), ("big", samples.astype(">f4")), ("u2", samples),
                        ("fortran", np.asfortranarray(samples)), ("i1", np.zeros((2, 3, 4), np.int8))):
        module.save(f"{depths}{name}.npy", array)


for maker in (plyfile, open3d, meshio, trimesh, pypcd4, cv2, numpy):
    try:
        maker(importlib.import_module(maker.__name__))
    except ImportError as error:
        print("left out:", maker.__name__, error)
