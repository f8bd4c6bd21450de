# SPDX-License-Identifier: Apache-2.0
"""What a frame of a recording costs on its way through examples/cluster/convert.py, in processor time and bytes.

Usage: python bench/python/recordings.py [FOLDER]    FOLDER: for the recording and the files; memory unless given

A recording of noisy clouds and depth maps of 1280 x 720 pixels is made and converted by one process; the median of the
frames is printed. Needs mcap and mcap-ros2-support.
"""

import os
import statistics
import sys
import tempfile
import time
from pathlib import Path

from vela import Mat

HOME = Path(__file__).parents[2]
sys.path.insert(0, str(HOME / "examples/cluster"))
import convert  # noqa: E402
import recording  # noqa: E402

FRAMES, WIDTH, HEIGHT = 24, 1280, 720


def frames(job, arrange):
    """Milliseconds for reading, arranging and writing, and bytes read and written, of each frame of a topic."""
    from mcap_ros2.reader import read_ros2_messages

    clock = time.process_time
    messages = iter(read_ros2_messages(job.recording, topics=[job.topic]))
    while True:
        start = clock()
        message = next(messages, None)
        if message is None:
            return
        read = clock()
        arrange(message.ros_msg)
        arranged = clock()
        path = convert.write(message.ros_msg, message.schema.name, os.path.join(job.folder, "frame"), job)
        written = clock()
        yield (
            1000 * (read - start),
            1000 * (arranged - read),
            1000 * (written - arranged - (arranged - read)),  # write() arranges again
            os.path.getsize(path),
        )


def main():
    at = sys.argv[1] if len(sys.argv) > 1 else "/dev/shm"
    with tempfile.TemporaryDirectory(dir=at) as folder:
        print(f"{WIDTH} x {HEIGHT}, {FRAMES} frames in {at}; load {os.getloadavg()[0]:.1f}")
        print(f"{'':8}{'read':>9}{'arrange':>9}{'write':>9}{'all':>9}   {'recorded':>9}{'file':>9}")
        for topic, arrange in (
            (recording.POINTS, lambda message: Mat.from_array(convert.cloud_of(message))),
            (recording.DEPTH, lambda message: Mat.from_array(convert.depth_of(message)[0])),
        ):
            path = os.path.join(folder, "robot.mcap")
            recording.write(path, FRAMES, WIDTH, HEIGHT, topics=[topic])
            job = convert.Job(path, topic, folder)
            read, arranged, written, size = map(statistics.median, zip(*frames(job, arrange)))
            recorded = os.path.getsize(path) / FRAMES
            print(f"{topic.split('/')[-1]:8}{read:6.1f} ms{arranged:6.1f} ms{written:6.1f} ms"
                  f"{read + arranged + written:6.1f} ms   {recorded / 1e6:6.2f} MB{size / 1e6:6.2f} MB")


if __name__ == "__main__":
    main()
