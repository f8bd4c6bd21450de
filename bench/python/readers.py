# SPDX-License-Identifier: Apache-2.0
"""Reads and writes PLY files with another project's library, and times each call inside this process, for bench/io.

Usage: readers.py Open3D|plyfile

Says "ready", or "absent" if the library is not installed. Then each line of standard input is answered by one: the
seconds that "read FILE" and "write FILE" took; "done" for "save FILE", which puts the cloud that was read last into a
file of plain pixels (x, y, z as floats, red, green, blue, 255), and for "take FILE", which gets the cloud to be
written from such a file; "failed" and the reason.
"""

import os
import sys
import time

try:
    import numpy as np
except ImportError:
    sys.exit(print("absent"))

PIXEL = np.dtype([("xyz", "<f4", 3), ("rgb", "u1", 3), ("alpha", "u1")])


class Open3D:
    """Uses its tensors, which keep floats and bytes; the older interface converts both to doubles."""

    def __init__(self):
        import open3d

        self.open3d = open3d

    def read(self, path):
        return self.open3d.t.io.read_point_cloud(path)

    def write(self, path, cloud):
        if not self.open3d.t.io.write_point_cloud(path, cloud):
            raise OSError("write_point_cloud")

    def arrays(self, cloud):
        return cloud.point.positions.numpy(), cloud.point.colors.numpy()

    def cloud(self, xyz, rgb):
        cloud = self.open3d.t.geometry.PointCloud()
        cloud.point.positions = self.open3d.core.Tensor(xyz)
        cloud.point.colors = self.open3d.core.Tensor(rgb)
        return cloud


class Plyfile:
    """Includes arrays of points and colours: its reader only maps the file and reads nothing before they are made."""

    RECORD = np.dtype([(name, "<f4") for name in ("x", "y", "z")] + [(name, "u1") for name in ("red", "green", "blue")])

    def __init__(self):
        import plyfile

        self.plyfile = plyfile

    def read(self, path):
        data = self.plyfile.PlyData.read(path)["vertex"].data
        columns = [data[name] for name in self.RECORD.names]
        return np.stack(columns[:3], axis=1), np.stack(columns[3:], axis=1)

    def write(self, path, cloud):
        data = np.empty(len(cloud[0]), self.RECORD)
        for names, array in zip((self.RECORD.names[:3], self.RECORD.names[3:]), cloud):
            for i, name in enumerate(names):
                data[name] = array[:, i]
        self.plyfile.PlyData([self.plyfile.PlyElement.describe(data, "vertex")]).write(path)

    def arrays(self, cloud):
        return cloud

    def cloud(self, xyz, rgb):
        return xyz, rgb


class Conversation:
    def __init__(self, library):
        self.library = library
        self.cloud = None

    def read(self, path):
        self.cloud = None
        start = time.perf_counter()
        self.cloud = self.library.read(path)
        return time.perf_counter() - start

    def write(self, path):
        start = time.perf_counter()
        self.library.write(path, self.cloud)
        return time.perf_counter() - start

    def save(self, path):
        xyz, rgb = self.library.arrays(self.cloud)
        pixels = np.empty(len(xyz), PIXEL)
        pixels["xyz"], pixels["rgb"], pixels["alpha"] = xyz, rgb, 255
        pixels.tofile(path)
        return "done"

    def take(self, path):
        pixels = np.fromfile(path, PIXEL)
        self.cloud = self.library.cloud(pixels["xyz"].copy(), pixels["rgb"].copy())
        return "done"


def main(name):
    # Output of the libraries must not mix with the answers.
    answers = os.fdopen(os.dup(1), "w", buffering=1)
    os.dup2(2, 1)
    try:
        conversation = Conversation({"Open3D": Open3D, "plyfile": Plyfile}[name]())
    except ImportError:
        print("absent", file=answers)
        return
    print("ready", file=answers)
    for line in sys.stdin:
        verb, path = line.rstrip("\n").split(" ", 1)
        try:
            answer = {"read": conversation.read, "write": conversation.write, "save": conversation.save,
                      "take": conversation.take}[verb](path)
        except Exception as error:  # the benchmark reports every error
            answer = f"failed: {name}, {line.strip()}: {error}".replace("\n", " ")
        print(answer, file=answers)


if __name__ == "__main__":
    main(*sys.argv[1:])
