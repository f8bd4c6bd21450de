# SPDX-License-Identifier: Apache-2.0
"""Other programs must read what we write, and we what they write, to the last bit and colour.

Usage: exchange.py [PCL_PROGRAM], in an environment made by `scripts/setup --with readers`, where the package vela can
be imported. A program that is missing is reported and left out.
       exchange.py --corpus CLOUD_FOLDER DEPTH_FOLDER writes small files by the other programs into two folders."""
import importlib
import inspect
import os
import subprocess
import sys
import tempfile

import numpy as np

try:
    from vela import COORDINATE_SYSTEM, UNIT, Mat, io
except ImportError as error:
    io = error
CORPUS = sys.argv[1:2] == ["--corpus"]
PCL = sys.argv[1] if len(sys.argv) == 2 else None
COUNT, SHAPE = (4, (3, 4)) if CORPUS else (2000, (31, 47))
EXCHANGES = []
random = np.random.default_rng(1)
points = random.normal(0, 1, (COUNT, 3)).astype(np.float32) * np.float32(3)
colors = random.integers(0, 256, (COUNT, 3), dtype=np.uint8)
normals = random.normal(0, 1, (COUNT, 3)).astype(np.float32)
depth = random.uniform(0.2, 60, SHAPE).astype(np.float32)
depth[::5, ::3] = np.nan
samples = np.where(np.isnan(depth), 0, np.floor(depth.astype(np.float64) * 1000 + 0.5)).astype(np.uint16)
RGB = ("red", "green", "blue")


def exchange(module):
    """A function that needs that module. It checks files that we wrote, or writes files for us and yields for each
    what our reader must find in it: an array; or of the cloud "all", "points", or "rough" (in fewer digits)."""
    return lambda function: EXCHANGES.append((module, function)) or function


def same(seen, wanted, what):
    seen, wanted = np.asarray(seen), np.asarray(wanted)
    if seen.shape != wanted.shape or not np.array_equal(seen, wanted, equal_nan=seen.dtype.kind == "f"):
        raise AssertionError(f"{what}: {seen.shape} {seen.reshape(-1)[:6]}, wanted {wanted.reshape(-1)[:6]}")


def expect_ours(path, wanted):
    """Checks that our reader finds in a file what an exchange yielded for it."""
    if not isinstance(wanted, str):
        return same(io.read_depth(path)[0], wanted, path)
    cloud = io.read_cloud(path, four_channels=True)[0]
    if "rough" in wanted:
        assert np.allclose(cloud.xyz[0], points, rtol=1e-5, atol=1e-5), path
    else:
        same(cloud.xyz[0], points, f"{path}: points")
    if "points" not in wanted:
        same(cloud.rgba[0, :, :3], colors, f"{path}: colours")


def clouds(*endings):
    return [f"{kind}_{ending}" for kind in ("plain", "full") for ending in endings]


@exchange("plyfile")
def plyfile_reads_ply(plyfile):
    for name in clouds("ascii.ply", "binary.ply", "big.ply"):
        vertex = plyfile.PlyData.read(name)["vertex"]
        same(np.stack([vertex[k] for k in "xyz"], 1), points, name)
        same(np.stack([vertex[k] for k in RGB], 1), colors, name)
        if name.startswith("full"):
            same(np.stack([vertex[k] for k in ("nx", "ny", "nz")], 1), normals, name)


@exchange("plyfile")
def plyfile_writes(plyfile):
    for text, order in ((True, "="), (False, "<"), (False, ">")):
        for real in ("f4", "f8"):
            vertex = np.zeros(COUNT, [(k, real) for k in "xyz"] + [("q", "i2")] + [(k, "u1") for k in RGB])
            for i in range(3):
                vertex["xyz"[i]], vertex[RGB[i]] = points[:, i], colors[:, i]
            faces = np.array([([0, 1, 2],)], dtype=[("vertex_indices", "i4", (3,))])
            elements = [plyfile.PlyElement.describe(faces, "face"), plyfile.PlyElement.describe(vertex, "vertex")]
            name = f"plyfile_{real}{'=<>'.index(order)}.ply"
            plyfile.PlyData(elements, text=text, byte_order=order).write(name)
            yield name, "all"


@exchange("open3d")
def open3d_reads_clouds(o3d):
    for name in clouds("ascii.ply", "binary.ply", "big.ply", "ascii.pcd", "binary.pcd", "packed.pcd"):
        cloud = o3d.io.read_point_cloud(name)
        same(np.asarray(cloud.points).astype(np.float32), points, name)
        same(np.round(np.asarray(cloud.colors) * 255).astype(np.uint8), colors, name)
        if name.startswith("full"):
            same(np.asarray(cloud.normals).astype(np.float32), normals, name)


@exchange("open3d")
def open3d_writes(o3d):
    cloud = o3d.geometry.PointCloud(o3d.utility.Vector3dVector(points))
    cloud.colors = o3d.utility.Vector3dVector(colors / 255.0)
    for name, wanted in (("ply", "all"), ("pcd", "all"), ("xyz", "rough points"), ("xyzrgb", None), ("pts", None)):
        for text in (False, True):
            for packed in (False, True):
                path = f"open3d_{text}_{packed}.{name}"
                assert o3d.io.write_point_cloud(path, cloud, write_ascii=text, compressed=packed)
                yield path, "rough" if text and wanted == "all" else wanted


@exchange("trimesh")
def trimesh_reads(trimesh):
    for name in clouds("ascii.ply", "binary.ply", "big.ply") + ["plain_ascii.xyz"]:
        cloud = trimesh.load(name)
        same(np.asarray(cloud.vertices).astype(np.float32), points, name)
        same(np.asarray(cloud.colors)[:, :3], colors, name)


@exchange("trimesh")
def trimesh_writes(trimesh):
    for name in ("trimesh.ply", "trimesh.xyz"):
        trimesh.PointCloud(points, colors).export(name)
        yield name, "rough points"


@exchange("meshio")
def meshio_reads(meshio):
    for name in clouds("ascii.ply", "binary.ply"):
        same(meshio.read(name).points.astype(np.float32), points, name)


@exchange("meshio")
def meshio_writes(meshio):
    mesh = meshio.Mesh(points, [("triangle", np.array([[0, 1, 2]])), ("vertex", np.arange(COUNT).reshape(-1, 1))])
    for kind in ("ply", "vtk", "vtk42"):
        for binary in (False, True):
            name = f"meshio_{kind}_{binary}.{kind[:3]}"
            meshio.write(name, mesh, file_format=kind, binary=binary)
            yield name, "points"


@exchange("pypcd4")
def pypcd4_reads_pcd(pypcd4):
    for name in clouds("ascii.pcd", "binary.pcd", "packed.pcd"):
        cloud = pypcd4.PointCloud.from_path(name)
        same(cloud.numpy(("x", "y", "z")).astype(np.float32), points, name)
        packed = cloud.pc_data["rgb"].copy().view(np.uint32)
        same(np.stack([packed >> 16 & 255, packed >> 8 & 255, packed & 255], 1).astype(np.uint8), colors, name)


@exchange("pypcd4")
def pypcd4_writes(pypcd4):
    packed = (colors[:, 0].astype(np.uint32) << 16 | colors[:, 1].astype(np.uint32) << 8 | colors[:, 2]).view(np.float32)
    cloud = pypcd4.PointCloud.from_xyzrgb_points(np.column_stack([points, packed]))
    for encoding in pypcd4.Encoding:
        name = f"pypcd4_{encoding.value}.pcd"
        cloud.save(name, encoding=encoding)
        yield name, "rough points" if encoding == pypcd4.Encoding.ASCII else "all"


@exchange("cv2")
def opencv_reads_depth(cv2):
    for name in ("depth.png", "depth.pgm", "plain.pgm"):
        same(cv2.imread(name, cv2.IMREAD_UNCHANGED), samples, name)
    same(cv2.imread("depth.pfm", cv2.IMREAD_UNCHANGED), depth, "depth.pfm")


@exchange("cv2")
def opencv_writes_depth(cv2):
    for name, array in (("cv", samples), ("cv8", samples.astype(np.uint8))):
        for kind, options in (("png", []), ("pgm", []), ("plain.pgm", [cv2.IMWRITE_PXM_BINARY, 0])):
            cv2.imwrite(f"{name}.{kind}", array, options)
            yield f"{name}.{kind}", np.where(array == 0, np.nan, array).astype(np.float32)
    cv2.imwrite("cv.pfm", depth)
    yield "cv.pfm", depth


@exchange("numpy")
def numpy_writes_arrays(numpy):
    for name, array in (("f4", depth), ("big", depth.astype(">f4")), ("u2", samples),
                        ("fortran", numpy.asfortranarray(depth)), ("i1", numpy.zeros((2, 3, 4), numpy.int8))):
        numpy.save(f"{name}.npy", array)
        yield f"{name}.npy", depth if array.dtype.kind == "f" else None


def by_pcl(path):
    """Coordinates, colours and normals as PCL reads a file."""
    array = path + ".pcl.npy"
    subprocess.run([PCL, "read", path, array], check=True, capture_output=True)
    values = np.load(array).reshape(-1, 8)
    return values[:, :3].copy(), values[:, 3].copy().view(np.uint8).reshape(-1, 4)[:, :3], values[:, 4:7].copy()


def pcl_reads_clouds(_):
    for name in clouds("ascii.ply", "binary.ply", "ascii.pcd", "binary.pcd", "packed.pcd"):
        xyz, rgb, normal = by_pcl(name)
        same(xyz, points, name)
        same(rgb, colors, name)
        if name.startswith("full"):
            same(normal, normals, name)


def pcl_writes(_):
    subprocess.run([PCL, "write", "."], check=True, capture_output=True)
    for name in ("pcl_ascii.pcd", "pcl_binary.ply", "pcl_binary.pcd", "pcl_packed.pcd"):
        yield name, "all"
    yield "pcl_ascii.ply", "rough"


if PCL:
    exchange("numpy")(pcl_reads_clouds)
    exchange("numpy")(pcl_writes)


@exchange("numpy")
def we_read_our_depth(_):
    for name in ("depth.png", "depth.pgm", "plain.pgm"):
        expect_ours(name, np.where(samples == 0, np.nan, samples / 1000.0).astype(np.float32))


def write_ours():
    cloud, normal = Mat.from_points(points[:, None], colors[:, None]), Mat.from_array(normals[:, None])
    stated = {"unit": UNIT.METER, "axes": COORDINATE_SYSTEM.IMAGE}
    for kind, encoding, formats in (("ascii", "ASCII", ("ply", "pcd", "vtk", "xyz")),
                                    ("binary", "BINARY", ("ply", "pcd", "vtk")),
                                    ("big", "BINARY_BIG_ENDIAN", ("ply",)),
                                    ("packed", "BINARY_COMPRESSED", ("pcd",))):
        for form in formats:
            io.write_cloud(cloud, f"plain_{kind}.{form}", encoding=io.ENCODING[encoding])
            io.write_cloud(cloud, f"full_{kind}.{form}", encoding=io.ENCODING[encoding], normals=normal, **stated)
    for name in ("depth.png", "depth.pgm", "plain.pgm"):
        encoding = io.ENCODING.ASCII if name == "plain.pgm" else None
        io.write_depth(Mat.from_array(depth), name, unit=UNIT.METER, scale=1000, encoding=encoding)
    io.write_depth(Mat.from_array(depth), "depth.pfm", unit=UNIT.METER)
    io.write_npy(cloud, "cloud.npy")
    io.write_npy(normal, "normals.npy")


def run(module, function):
    """Returns whether the function did its work, or its module is missing."""
    try:
        for path, wanted in function(importlib.import_module(module)) or ():
            if not CORPUS and wanted is not None:
                expect_ours(path, wanted)
        print("passed", function.__name__)
    except ImportError as error:
        print("left out:", function.__name__, error)
    except Exception as error:  # all are reported
        print("FAILED", function.__name__, type(error).__name__, error)
        return False
    return True


def main():
    if CORPUS:
        folders = [os.path.abspath(folder) for folder in sys.argv[2:]]
        for module, function in EXCHANGES:
            if inspect.isgeneratorfunction(function):
                os.chdir(folders[module in ("cv2", "numpy")])
                run(module, function)
        return 0
    if isinstance(io, ImportError):
        return print("skipped:", io)
    if not PCL:
        print("left out: PCL (libpcl-dev)")
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        write_ours()
        done = [run(module, function) for module, function in EXCHANGES]
        os.chdir("/")
    return 0 if all(done) else 1


sys.exit(main())
