# SPDX-License-Identifier: Apache-2.0
"""From a depth map to a cloud, its file, and two pictures of it.

Usage: python examples/python/tour.py [FOLDER]
"""

import struct
import sys
import zlib
from pathlib import Path

import numpy as np
from vela import COORDINATE_SYSTEM as AXES
from vela import UNIT, Mat, io

WIDTH, HEIGHT, FOCAL = 320, 240, 300.0


def scene():
    """Depth in metres of a ball in front of a wall, with a hole where the camera saw nothing."""
    x, y = np.meshgrid(np.arange(WIDTH) - WIDTH / 2, np.arange(HEIGHT) - HEIGHT / 2)
    depth = np.full((HEIGHT, WIDTH), 3.0, np.float32)
    from_centre = (x**2 + y**2) / 70**2
    ball = from_centre < 1
    depth[ball] = 2 - 0.45 * np.sqrt(1 - from_centre[ball])
    depth[20:50, 20:60] = np.nan
    return depth


def cloud_of(depth):
    """The points that the pixels of a pinhole camera saw: x right, y down, z forward; brighter where nearer."""
    x, y = np.meshgrid(np.arange(WIDTH) - WIDTH / 2, np.arange(HEIGHT) - HEIGHT / 2)
    points = np.dstack([x * depth / FOCAL, y * depth / FOCAL, depth]).astype(np.float32)
    shade = np.nan_to_num(255 * (3.2 - depth) / 1.7).clip(0, 255).astype(np.uint8)
    return Mat.from_points(points, np.dstack([shade, shade // 2 + 60, 255 - shade]))


def top_view(cloud, pixels_per_metre=100):
    """The number of points above each place on the ground, as grey levels."""
    points = cloud.xyz[cloud.valid]  # x forward, y left, z up, in metres
    row = (400 - points[:, 0] * pixels_per_metre).astype(int)
    column = (200 - points[:, 1] * pixels_per_metre).astype(int)
    seen = (row >= 0) & (row < 400) & (column >= 0) & (column < 400)
    counts = np.zeros((400, 400), int)
    np.add.at(counts, (row[seen], column[seen]), 1)
    return (255 * np.minimum(counts, 20) / 20).astype(np.uint8)


def save_png(path, grey):
    """A PNG file by hand, so that this tour needs numpy alone; use cv2, PIL or imageio for pictures."""

    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    header = struct.pack(">IIBBBBB", grey.shape[1], grey.shape[0], 8, 0, 0, 0, 0)
    rows = b"".join(b"\0" + row.tobytes() for row in grey)
    chunks = chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunks)


def main():
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else "out")
    folder.mkdir(parents=True, exist_ok=True)
    depth = scene()

    cloud = cloud_of(depth)
    cloud.convert_coordinate_system(AXES.IMAGE, AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD)
    result = io.write_cloud(
        cloud, folder / "tour.ply", unit=UNIT.METER, axes=AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD
    )
    print(f"{result.written} of {result.points} points written, {result.dropped} without a depth")

    again, info = io.read_cloud(folder / "tour.ply", target_unit=UNIT.MILLIMETER)
    same = np.allclose(again.xyz[0], cloud.xyz[cloud.valid] * 1000)
    print(f"read back in {info.unit.name}: {'the same' if same else 'different'} points")

    io.write_depth(Mat.from_array(depth), folder / "tour_depth.png", unit=UNIT.METER, scale=1000)
    save_png(folder / "tour_shades.png", np.nan_to_num(depth * 80).clip(0, 255).astype(np.uint8))
    save_png(folder / "tour_top.png", top_view(cloud))
    for path in sorted(folder.glob("tour*")):
        print(path.name)


if __name__ == "__main__":
    main()
