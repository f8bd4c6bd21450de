# SPDX-License-Identifier: Apache-2.0
"""Makes a recording like a robot's: organised clouds and depth maps, ROS 2 messages in an MCAP file.

    recording.py robot.mcap 300        # 300 frames of each

The points are /camera/points, in metres, x right and y down; the depth maps are /camera/depth, in millimetres.
"""
import sys

import numpy as np

POINTS = "/camera/points"
DEPTH = "/camera/depth"
START = 1_700_000_000_000_000_000
PERIOD = 66_666_667

HEADER = """================================================================================
MSG: std_msgs/Header
builtin_interfaces/Time stamp
string frame_id
================================================================================
MSG: builtin_interfaces/Time
int32 sec
uint32 nanosec
"""
CLOUD = """std_msgs/Header header
uint32 height
uint32 width
sensor_msgs/PointField[] fields
bool is_bigendian
uint32 point_step
uint32 row_step
uint8[] data
bool is_dense
""" + HEADER + """================================================================================
MSG: sensor_msgs/PointField
string name
uint32 offset
uint8 datatype
uint32 count
"""
IMAGE = """std_msgs/Header header
uint32 height
uint32 width
string encoding
uint8 is_bigendian
uint32 step
uint8[] data
""" + HEADER


def cloud(index, width, height):
    """x, y, z in metres and red, green, blue, of one frame; some points are missing."""
    random = np.random.default_rng(index)
    y, x = np.mgrid[:height, :width].astype(np.float32)
    z = 1.5 + 0.4 * np.sin(x * 0.01 + index / 9) + random.normal(0, 0.003, x.shape)
    xyz = np.stack([(x - width / 2) * z / 180, (y - height / 2) * z / 180, z], -1).astype(np.float32)
    xyz[random.random(x.shape) < 0.05] = np.nan
    return xyz, random.integers(0, 256, (height, width, 3), np.uint8)


def cloud_message(xyz, rgb):
    """As drivers send it: a gap after z, colours as 0x00RRGGBB, a gap after each row."""
    height, width, _ = xyz.shape
    step, row_step = 32, 32 * width + 64
    rows = np.zeros((height, row_step), np.uint8)
    records = rows[:, :step * width].reshape(height, width, step)
    records[..., :12] = xyz.view(np.uint8).reshape(height, width, 12)
    records[..., 16:19] = rgb[..., ::-1]
    fields = [{"name": name, "offset": offset, "datatype": 7, "count": 1}
              for name, offset in (("x", 0), ("y", 4), ("z", 8), ("rgb", 16))]
    return {"header": header(), "height": height, "width": width, "fields": fields, "is_bigendian": False,
            "point_step": step, "row_step": row_step, "data": rows.tobytes(), "is_dense": False}


def depth_message(xyz):
    """Millimetres in 16 bits, 0 where there is no depth."""
    height, width, _ = xyz.shape
    samples = np.nan_to_num(xyz[..., 2] * 1000).round().astype("<u2")
    return {"header": header(), "height": height, "width": width, "encoding": "16UC1", "is_bigendian": 0,
            "step": 2 * width, "data": samples.tobytes()}


def header():
    return {"stamp": {"sec": 0, "nanosec": 0}, "frame_id": "camera_optical"}


def write(path, count, width=160, height=90, topics=(POINTS, DEPTH)):
    from mcap_ros2.writer import Writer
    with open(path, "wb") as file:
        writer = Writer(file)
        clouds = writer.register_msgdef("sensor_msgs/msg/PointCloud2", CLOUD)
        images = writer.register_msgdef("sensor_msgs/msg/Image", IMAGE)
        for index in range(count):
            xyz, rgb = cloud(index, width, height)
            time = START + index * PERIOD
            if POINTS in topics:
                writer.write_message(POINTS, clouds, cloud_message(xyz, rgb), log_time=time, publish_time=time)
            if DEPTH in topics:
                writer.write_message(DEPTH, images, depth_message(xyz), log_time=time, publish_time=time)
        writer.finish()


if __name__ == "__main__":
    if len(sys.argv) != 3 or not sys.argv[2].isdecimal():
        sys.exit("usage: recording.py FILE FRAMES")
    write(sys.argv[1], int(sys.argv[2]))
