#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws how costs grow, with the size of images and with threads, from the results of `growth` and `threads`.

Usage: plot.py GROWTH.json THREADS.json OUT.svg
"""
import re
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402 (after the backend is chosen)

from table import collect, named  # noqa: E402

COLORS = {"clone": "#4c78a8", "fill": "#f58518", "unit": "#54a24b", "axes": "#b279a2", "XYZ": "#e45756"}


def growth_of(path):
    """{operation: [(side, ns per pixel)]}"""
    lines = {}
    for case, roles in collect([path]).items():
        operation, side = re.fullmatch(r"growth (\w+)/(\d+)", case).groups()
        lines.setdefault(operation, []).append((int(side), roles["ours"].median / int(side) ** 2))
    return lines


def threads_of(path):
    """[(threads, ours, limit)] in ms for one conversion of every thread's Mat, there and back."""
    rounds = 20
    result = []
    for case, roles in collect([path]).items():
        threads = int(re.search(r"(\d+) threads", case).group(1))
        _, limit = named(roles, "limit")[0]
        result.append((threads, roles["ours"].median / 1e6 / rounds, limit.median / 1e6 / rounds))
    return result


def main(growth, threads, out):
    plt.rcParams.update({"font.size": 9, "svg.hashsalt": "vela", "svg.fonttype": "none"})
    figure, (left, right) = plt.subplots(1, 2, figsize=(10, 4), constrained_layout=True)
    for operation, points in growth_of(growth).items():
        left.plot(*zip(*points), marker="o", markersize=3, color=COLORS[operation], label=operation)
    left.set_xscale("log", base=2)
    left.set_yscale("log")
    sides = sorted({side for points in growth_of(growth).values() for side, _ in points})
    left.set_xticks(sides, [f"{side}²" for side in sides])
    left.set_xlabel("pixels of a MAT_32F_C4")
    left.set_ylabel("ns per pixel, one thread")
    left.legend(frameon=False)
    rows = [row for row in threads_of(threads) if row[0] <= 8]
    counts = [row[0] for row in rows]
    right.plot(counts, [row[1] for row in rows], marker="o", color=COLORS["unit"], label="convertUnit, there and back")
    right.plot(counts, [row[2] for row in rows], marker="o", color="#9d9d9d", label="loads and stores alone")
    right.set_xticks(counts)
    right.set_ylim(bottom=0)
    right.set_xlabel("threads, each with a 1280 x 720 MAT_32F_C4 of its own")
    right.set_ylabel("ms until all are done")
    right.legend(frameon=False)
    for axes in (left, right):
        axes.grid(alpha=0.3)
        axes.spines[["top", "right"]].set_visible(False)
    figure.savefig(out, metadata={"Date": None})


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
