#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Converts the point clouds and depth maps of a recording to files in another unit and axis convention.

The work is cut into time ranges. Every worker opens the recording itself, follows its chunk index to a range and
writes the files of that range, each of which appears whole or not at all: so a range that is done again, because its
worker died, leaves the same files. Between processes travel a few words per range, never pixels.

    pip install 'vela-core[cluster]'
    convert.py recording.mcap /camera/points out --workers 8
    convert.py recording.mcap /camera/points out --scheduler tcp://head:8786
"""
import argparse
import hashlib
import os
import pathlib
import sys
from dataclasses import dataclass

import numpy as np

import vela
import vela.io
from vela import COORDINATE_SYSTEM, UNIT

FLOAT32 = 7  # sensor_msgs/PointField


@dataclass(frozen=True)
class Job:
    """What a worker needs besides its time range."""

    recording: str
    topic: str
    folder: str
    target_unit: UNIT = UNIT.MILLIMETER
    target_axes: COORDINATE_SYSTEM = COORDINATE_SYSTEM.RIGHT_HANDED_Y_UP_AND_Z_BACKWARD
    source_axes: COORDINATE_SYSTEM = COORDINATE_SYSTEM.IMAGE


def cloud_of(message):
    """The points of a sensor_msgs/PointCloud2 as an array (height, width, 4), the fourth float a packed colour."""
    height, width, step, row_step = message.height, message.width, message.point_step, message.row_step
    fields = {field.name: field for field in message.fields}
    if message.is_bigendian or any(fields[name].datatype != FLOAT32 for name in "xyz"):
        raise ValueError("clouds of little-endian 32-bit floats are expected")
    if row_step < width * step or len(message.data) < height * row_step:
        raise ValueError("the message holds less than its size says")
    rows = np.frombuffer(message.data, np.uint8, height * row_step).reshape(height, row_step)
    records = rows[:, :width * step].reshape(height, width, step)
    cloud = np.zeros((height, width, 4), np.float32)
    lanes = cloud.view(np.uint8).reshape(height, width, 4, 4)
    for lane, name in enumerate("xyz"):
        lanes[..., lane, :] = records[..., fields[name].offset:fields[name].offset + 4]
    color = fields.get("rgb") or fields.get("rgba")
    if color:
        lanes[..., 3, :3] = records[..., color.offset:color.offset + 3][..., ::-1]  # 0xAARRGGBB in memory
        lanes[..., 3, 3] = 255
    return cloud


def depth_of(message):
    """A sensor_msgs/Image of depths and its unit: 16-bit millimetres or floats in metres."""
    kinds = {"16UC1": (np.uint16, UNIT.MILLIMETER), "32FC1": (np.float32, UNIT.METER)}
    if message.encoding not in kinds or message.is_bigendian:
        raise ValueError(f"depth maps of {' or '.join(kinds)} are expected, not {message.encoding}")
    dtype, unit = kinds[message.encoding]
    if message.step < message.width * dtype().itemsize or len(message.data) < message.height * message.step:
        raise ValueError("the message holds less than its size says")
    rows = np.frombuffer(message.data, np.uint8, message.height * message.step).reshape(message.height, message.step)
    packed = np.ascontiguousarray(rows[:, :message.width * dtype().itemsize])
    return packed.view(dtype), unit


def write(message, kind, stem, job):
    """Writes one message; returns the path of its file."""
    if kind.endswith("PointCloud2"):
        path = stem + ".ply"
        vela.io.write_cloud(vela.Mat.from_array(cloud_of(message)), path, keep_grid=True, unit=UNIT.METER,
                            axes=job.source_axes, target_unit=job.target_unit, target_axes=job.target_axes)
    else:
        path = stem + ".png"
        depth, unit = depth_of(message)
        vela.io.write_depth(vela.Mat.from_array(depth), path, unit=unit, target_unit=job.target_unit,
                            allow_clipping=True)
    return path


def times_of(job):
    """When the topic's messages were logged, in nanoseconds, in order."""
    from mcap.reader import make_reader
    with open(job.recording, "rb") as file:
        return sorted(message.log_time for _, _, message in make_reader(file).iter_messages(topics=[job.topic]))


def ranges_of(times, count):
    """At most `count` half-open time ranges with about as many messages each."""
    count = min(count, len(times))
    starts = [times[i * len(times) // count] for i in range(count)]
    return list(zip(starts, starts[1:] + [times[-1] + 1])) if times else []


def convert(job, first, last):
    """Converts the messages with first <= time < last; returns how many there were."""
    from mcap_ros2.reader import read_ros2_messages
    done = 0
    for message in read_ros2_messages(job.recording, topics=[job.topic], start_time=first, end_time=last):
        write(message.ros_msg, message.schema.name, os.path.join(job.folder, str(message.log_time_ns)), job)
        done += 1
    return done


def convert_on(client, job, ranges):
    """`convert` for all ranges on the workers of a Dask client.

    A range is tried again when it fails, and when its worker dies, which Dask does of its own accord.
    """
    futures = [client.submit(convert, job, *each, key=f"{job.topic}-{each[0]}", retries=2) for each in ranges]
    return sum(client.gather(futures))


def digest(folder):
    """SHA-256 over names and bytes of all files, except the hidden files that a killed worker left unfinished."""
    total = hashlib.sha256()
    for path in sorted(pathlib.Path(folder).glob("[!.]*")):
        total.update(path.name.encode())
        total.update(path.read_bytes())
    return total.hexdigest()


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("recording")
    parser.add_argument("topic")
    parser.add_argument("folder", help="where the files go; must be seen by all workers")
    parser.add_argument("--workers", type=int, default=0, help="processes on this machine; 0: none beside this one")
    parser.add_argument("--scheduler", help="address of a running Dask scheduler")
    parser.add_argument("--ranges", type=int, default=24, help="time ranges that the work is cut into")
    parser.add_argument("--unit", type=UNIT.__getitem__, default=UNIT.MILLIMETER, metavar="UNIT")
    parser.add_argument("--axes", type=COORDINATE_SYSTEM.__getitem__, metavar="CONVENTION",
                        default=COORDINATE_SYSTEM.RIGHT_HANDED_Y_UP_AND_Z_BACKWARD)
    return parser.parse_args(arguments)


def main(arguments):
    options = options_of(arguments)
    job = Job(options.recording, options.topic, options.folder, options.unit, options.axes)
    os.makedirs(job.folder, exist_ok=True)
    ranges = ranges_of(times_of(job), options.ranges)
    if not ranges:
        sys.exit(f"{job.recording} has no message of {job.topic}")
    if not options.workers and not options.scheduler:
        done = sum(convert(job, *each) for each in ranges)
    else:
        from distributed import Client, LocalCluster
        if options.scheduler:
            with Client(options.scheduler) as client:
                done = convert_on(client, job, ranges)
        else:
            with LocalCluster(n_workers=options.workers, threads_per_worker=1, dashboard_address=None) as cluster, \
                    Client(cluster) as client:
                done = convert_on(client, job, ranges)
    print(f"{done} messages, sha256 {digest(job.folder)}")


if __name__ == "__main__":
    main(sys.argv[1:])
