# SPDX-License-Identifier: Apache-2.0
"""What we write is read by other programs, and what they write by us, to the last bit and colour.

Usage: exchange.py FILES_PROGRAM [PCL_PROGRAM], in an environment made by `scripts/setup --with readers`. A program
that is missing is reported and left out."""
import importlib
import os
import subprocess
import sys
import tempfile

import numpy as np

PROGRAM = sys.argv[1]
PCL = sys.argv[2] if len(sys.argv) > 2 else None
COUNT = 2000
CHECKS = []
random = np.random.default_rng(1)
points = random.normal(0, 1, (COUNT, 3)).astype(np.float32) * np.float32(3)
colors = random.integers(0, 256, (COUNT, 3), dtype=np.uint8)
normals = random.normal(0, 1, (COUNT, 3)).astype(np.float32)
depth = random.uniform(0.2, 60, (31, 47)).astype(np.float32)
depth[::5, ::3] = np.nan
samples = np.where(np.isnan(depth), 0, np.floor(depth.astype(np.float64) * 1000 + 0.5)).astype(np.uint16)


def check(*modules):
    """A check that needs these modules."""
    def add(function):
        CHECKS.append((modules, function))
        return function
    return add


def same(seen, wanted, what):
    seen, wanted = np.asarray(seen), np.asarray(wanted)
    if seen.shape != wanted.shape or not np.array_equal(seen, wanted, equal_nan=seen.dtype.kind == "f"):
        raise AssertionError(f"{what}: {seen.shape} {seen.reshape(-1)[:6]}, wanted {wanted.reshape(-1)[:6]}")


def ours(path):
    """A file as our reader takes it: float32 (h, w, 4) of a cloud, (h, w) of a depth map."""
    array = path + ".read.npy"
    subprocess.run([PROGRAM, "read", path, array], check=True)
    return np.load(array)


def same_as_cloud(path, color=True):
    cloud = ours(path).reshape(-1, 4)
    same(cloud[:, :3].copy(), points, f"{path}: points")
    if color:
        same(cloud[:, 3].copy().view(np.uint8).reshape(-1, 4)[:, :3], colors, f"{path}: colours")


def clouds(*endings):
    return [f"{kind}_{ending}" for kind in ("plain", "full") for ending in endings]


@check("plyfile")
def plyfile_reads_ply(plyfile):
    for name in clouds("ascii.ply", "binary.ply", "big.ply"):
        vertex = plyfile.PlyData.read(name)["vertex"]
        same(np.stack([vertex[k] for k in "xyz"], 1), points, name)
        same(np.stack([vertex[k] for k in ("red", "green", "blue")], 1), colors, name)
        if name.startswith("full"):
            same(np.stack([vertex[k] for k in ("nx", "ny", "nz")], 1), normals, name)


@check("plyfile")
def we_read_plyfile(plyfile):
    for text, order in ((True, "="), (False, "<"), (False, ">")):
        for real in ("f4", "f8"):
            vertex = np.zeros(COUNT, [("x", real), ("y", real), ("z", real), ("q", "i2"), ("red", "u1"), ("green", "u1"), ("blue", "u1")])
            for i in range(3):
                vertex["xyz"[i]] = points[:, i]
                vertex[("red", "green", "blue")[i]] = colors[:, i]
            faces = np.array([([0, 1, 2],)], dtype=[("vertex_indices", "i4", (3,))])
            elements = [plyfile.PlyElement.describe(faces, "face"), plyfile.PlyElement.describe(vertex, "vertex")]
            plyfile.PlyData(elements, text=text, byte_order=order).write("plyfile.ply")
            same_as_cloud("plyfile.ply")


@check("open3d")
def open3d_reads_clouds(o3d):
    for name in clouds("ascii.ply", "binary.ply", "big.ply", "ascii.pcd", "binary.pcd", "packed.pcd"):
        cloud = o3d.io.read_point_cloud(name)
        same(np.asarray(cloud.points).astype(np.float32), points, name)
        same(np.round(np.asarray(cloud.colors) * 255).astype(np.uint8), colors, name)
        if name.startswith("full"):
            same(np.asarray(cloud.normals).astype(np.float32), normals, name)


@check("open3d")
def we_read_open3d(o3d):
    cloud = o3d.geometry.PointCloud(o3d.utility.Vector3dVector(points))
    cloud.colors = o3d.utility.Vector3dVector(colors / 255.0)
    for name, text, packed in (("a.ply", True, False), ("b.ply", False, False), ("a.pcd", True, False),
                               ("b.pcd", False, False), ("c.pcd", False, True)):
        assert o3d.io.write_point_cloud("open3d_" + name, cloud, write_ascii=text, compressed=packed)
        if text and name.endswith(("ply", "pcd")):
            # Open3D prints fewer digits than it takes
            back = ours("open3d_" + name).reshape(-1, 4)
            assert np.allclose(back[:, :3], points, atol=1e-5), name
            same(back[:, 3].copy().view(np.uint8).reshape(-1, 4)[:, :3], colors, name)
        else:
            same_as_cloud("open3d_" + name)


@check("trimesh")
def trimesh_reads(trimesh):
    for name in clouds("ascii.ply", "binary.ply", "big.ply") + ["plain_ascii.xyz"]:
        cloud = trimesh.load(name)
        same(np.asarray(cloud.vertices).astype(np.float32), points, name)
        same(np.asarray(cloud.colors)[:, :3], colors, name)


@check("trimesh")
def we_read_trimesh(trimesh):
    cloud = trimesh.PointCloud(points, colors)
    for name in ("trimesh.ply", "trimesh.xyz"):
        cloud.export(name)
        back = ours(name).reshape(-1, 4)
        assert np.allclose(back[:, :3], points, atol=1e-6), name


@check("meshio")
def meshio_reads(meshio):
    for name in clouds("ascii.ply", "binary.ply"):
        same(meshio.read(name).points.astype(np.float32), points, name)


@check("meshio")
def we_read_meshio(meshio):
    mesh = meshio.Mesh(points, [("vertex", np.arange(COUNT).reshape(-1, 1))])
    for name, kind, binary in (("m1.ply", "ply", True), ("m2.ply", "ply", False), ("m1.vtk", "vtk", True),
                               ("m2.vtk", "vtk", False), ("m3.vtk", "vtk42", True)):
        meshio.write("meshio_" + name, mesh, file_format=kind, binary=binary)
        same_as_cloud("meshio_" + name, color=False)


@check("pypcd4")
def pypcd4_reads_pcd(pypcd4):
    for name in clouds("ascii.pcd", "binary.pcd", "packed.pcd"):
        cloud = pypcd4.PointCloud.from_path(name)
        same(cloud.numpy(("x", "y", "z")).astype(np.float32), points, name)
        packed = cloud.pc_data["rgb"].copy().view(np.uint32)
        same(np.stack([packed >> 16 & 255, packed >> 8 & 255, packed & 255], 1).astype(np.uint8), colors, name)


@check("pypcd4")
def we_read_pypcd4(pypcd4):
    packed = (colors[:, 0].astype(np.uint32) << 16 | colors[:, 1].astype(np.uint32) << 8 | colors[:, 2]).view(np.float32)
    cloud = pypcd4.PointCloud.from_xyzrgb_points(np.column_stack([points, packed]))
    for encoding in pypcd4.Encoding:
        cloud.save("pypcd4.pcd", encoding=encoding)
        if encoding != pypcd4.Encoding.ASCII:  # which keeps fewer digits
            same_as_cloud("pypcd4.pcd")
        assert np.allclose(ours("pypcd4.pcd").reshape(-1, 4)[:, :3], points, atol=1e-5)


@check("cv2")
def opencv_reads_depth(cv2):
    for name in ("depth.png", "depth.pgm", "plain.pgm"):
        same(cv2.imread(name, cv2.IMREAD_UNCHANGED), samples, name)
    same(cv2.imread("depth.pfm", cv2.IMREAD_UNCHANGED), depth, "depth.pfm")


@check("cv2")
def we_read_opencv(cv2):
    for name in ("cv.png", "cv.pgm"):
        cv2.imwrite(name, samples)
        same(ours(name), np.where(samples == 0, np.nan, samples).astype(np.float32), name)
    cv2.imwrite("cv.pfm", depth)
    same(ours("cv.pfm"), depth, "cv.pfm")


def by_pcl(path):
    """Coordinates, colours and normals as PCL reads a file."""
    array = path + ".pcl.npy"
    subprocess.run([PCL, "read", path, array], check=True, capture_output=True)
    values = np.load(array).reshape(-1, 8)
    return values[:, :3].copy(), values[:, 3].copy().view(np.uint8).reshape(-1, 4)[:, :3], values[:, 4:7].copy()


def pcl_reads_clouds():
    for name in clouds("ascii.ply", "binary.ply", "ascii.pcd", "binary.pcd", "packed.pcd"):
        xyz, rgb, normal = by_pcl(name)
        same(xyz, points, name)
        same(rgb, colors, name)
        if name.startswith("full"):
            same(normal, normals, name)


def we_read_pcl():
    subprocess.run([PCL, "write", "."], check=True, capture_output=True)
    for name in ("pcl_ascii.pcd", "pcl_binary.ply", "pcl_binary.pcd", "pcl_packed.pcd"):
        same_as_cloud(name)
    back = ours("pcl_ascii.ply").reshape(-1, 4)  # with fewer digits
    assert np.allclose(back[:, :3], points, rtol=1e-5, atol=1e-5)
    same(back[:, 3].copy().view(np.uint8).reshape(-1, 4)[:, :3], colors, "pcl_ascii.ply")


if PCL:
    CHECKS.extend([((), pcl_reads_clouds), ((), we_read_pcl)])


@check("numpy")
def we_read_our_depth(_):
    for name in ("depth.png", "depth.pgm", "plain.pgm"):
        same(ours(name), np.where(samples == 0, np.nan, samples / 1000.0).astype(np.float32), name)


def write_inputs():
    cloud = np.zeros((COUNT, 1, 4), np.float32)
    cloud[:, 0, :3] = points
    rgba = np.column_stack([colors, np.full(COUNT, 255, np.uint8)])
    cloud[:, 0, 3] = np.ascontiguousarray(rgba).view(np.float32)[:, 0]
    np.save("cloud.npy", cloud)
    np.save("normals.npy", normals.reshape(COUNT, 1, 3))
    np.save("depth.npy", depth)
    subprocess.run([PROGRAM, "write", "."], check=True)


def main():
    missing, failed = set() if PCL else {"PCL (libpcl-dev)"}, 0
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        write_inputs()
        for modules, function in CHECKS:
            try:
                loaded = [importlib.import_module(name) for name in modules]
            except ImportError as error:
                missing.add(f"{modules[0]} ({error})")
                continue
            try:
                function(*loaded)
                print("passed", function.__name__)
            except Exception as error:  # all of them are told
                failed += 1
                print("FAILED", function.__name__, type(error).__name__, error)
        os.chdir("/")
    for name in sorted(missing):
        print("left out:", name)
    return 1 if failed else 0


sys.exit(main())
