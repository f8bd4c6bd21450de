# SPDX-License-Identifier: Apache-2.0
"""vela.io.preview and save_html: that they make files, that every option matters, and what failures look like."""

import errno
import json
import re
import struct

import numpy as np
import pytest
import vela
from vela import COORDINATE_SYSTEM as AXES
from vela import UNIT, Mat, io


@pytest.fixture
def cloud():
    y, x = np.mgrid[0:60, 0:80].astype(np.float32)
    points = np.dstack([x - 40, y - 30, 100 + x / 4 + y])
    points[0, :7] = np.nan
    return Mat.from_points(points, np.dstack([x * 3, y * 4, x]).astype(np.uint8))


def png_size(path):
    content = path.read_bytes()
    assert content.startswith(b"\x89PNG\r\n\x1a\n") and content.endswith(b"IEND\xaeB`\x82")
    return struct.unpack(">II", content[16:24])


def meta(path):
    """The description of the points in the page."""
    found = re.search(r'<script id="meta" type="application/json">(.*?)</script>', path.read_text("utf-8"), re.S)
    return json.loads(found[1])


def test_every_option_of_a_preview_counts(tmp_path, cloud):
    path, depth = tmp_path / "Ünicode.png", Mat.from_array(np.linspace(1, 2, 1200, dtype=np.float32).reshape(30, 40))
    result = io.preview(cloud, path)
    assert (result.points, result.dropped, result.bytes) == (4800, 7, path.stat().st_size)
    assert 0 < result.written <= 4793 and io.preview(depth, path).written == 1200
    options = [dict(width=400, height=200), dict(unit=UNIT.METER), dict(axes=AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD),
               dict(views=[io.CLOUD_VIEW.LEFT]), dict(color=io.COLOR_BY.DEPTH)]
    for mat, changes in ((cloud, options), (depth, [dict(nearest=0.5), dict(farthest=3)])):
        drawn = set()
        for change in [{}, *changes]:
            io.preview(mat, path, **change)
            drawn.add(path.read_bytes())
            if mat is cloud:
                assert png_size(path) == (change.get("width", 1280), change.get("height", 720)), change
        assert len(drawn) == 1 + len(changes)


def test_every_option_of_a_page_counts(tmp_path, cloud):
    path = tmp_path / "cloud.html"
    result = io.save_html(cloud, path)
    assert (result.points, result.written, result.dropped, result.bytes) == (4800, 4793, 7, path.stat().st_size)
    assert "<title>Point cloud</title>" in path.read_text("utf-8") and meta(path)["drawn"] == 4793
    assert (meta(path)["mode"], meta(path)["unit"], meta(path)["up"]) == ("rgb", "", [0, -1, 0])
    options = dict(unit=UNIT.METER, axes=AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD, color=io.COLOR_BY.HEIGHT)
    assert io.save_html(cloud, path, max_points=100, title="<é>", **options).written == 100
    assert "<title>&lt;é></title>" in path.read_text("utf-8") and meta(path)["drawn"] == 100
    assert (meta(path)["mode"], meta(path)["unit"], meta(path)["up"]) == ("height", "m", [0, 0, 1])


@pytest.mark.parametrize("draw, sizes", [(io.preview, dict(width=1600, height=1300)), (io.save_html, {})])
def test_failures_raise_and_leave_no_file(tmp_path, cloud, draw, sizes):
    missing = tmp_path / "missing" / "picture"
    with pytest.raises(FileNotFoundError) as caught:
        draw(cloud, missing)
    assert caught.value.errno == errno.ENOENT and str(missing) in str(caught.value)
    with pytest.raises(vela.Error, match=draw.__name__) as caught:
        draw(Mat.from_array(np.zeros((2, 2), np.uint8)), tmp_path / "picture")
    assert caught.value.code is vela.ERROR_CODE.INVALID_FUNCTION_PARAMETERS
    noise = np.random.default_rng(1).random((1200, 1200, 3), np.float32) + 1
    large = Mat.from_array(noise[..., 0].copy() if draw is io.preview else noise)
    with pytest.raises(ZeroDivisionError):
        draw(large, tmp_path / "picture", progress=lambda done, total: 1 / 0, **sizes)
    assert not list(tmp_path.iterdir())


def test_values_are_named_like_their_enumerators():
    for kind in (io.COLOR_BY, io.CLOUD_VIEW):
        assert [vela.to_string(value) for value in kind] == list(kind.__members__)
