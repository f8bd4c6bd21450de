# SPDX-License-Identifier: Apache-2.0
"""Enumerations must match the C++ headers, which these tests parse themselves."""

import enum
import inspect
import pickle
import re
from pathlib import Path

import pytest
import vela

HEADERS = Path(__file__).parents[2] / "vela_core"
DECLARATION = re.compile(r"enum (?:class )?(\w+) : std::int32_t \{(.*?)\};", re.S)
ENUMERATOR = re.compile(r"^\s*(\w+) = (\d+),", re.M)


def declared():
    found = {}
    for header in HEADERS.rglob("*.hpp"):
        for name, body in DECLARATION.findall(header.read_text()):
            found[name] = {key: int(value) for key, value in ENUMERATOR.findall(body)}
    return found


ENUMS = {name: value for name, value in vars(vela).items() if inspect.isclass(value) and issubclass(value, enum.Enum)}


@pytest.mark.parametrize("name", sorted(ENUMS))
def test_enumerators_match_the_header(name):
    wanted = declared()[name]
    if name == "MEM":
        wanted |= {"BOTH": 3, "MANAGED": 4}
    assert {key: int(value) for key, value in ENUMS[name].__members__.items()} == wanted
    assert issubclass(ENUMS[name], enum.IntFlag if name == "MEM" else enum.IntEnum)


def test_no_enumeration_is_forgotten():
    internal = {"LogStatement", "LOGGER_NAME", "POINT_CLOUD_FORMAT", "DEPTH_FORMAT"}  # of logs and of C++'s own exporters
    assert set(declared()) - internal == set(ENUMS)


def test_every_value_has_a_text():
    assert vela.to_string(vela.SENSORS_UNIT.M_S2) == "m/s²"
    for type in ENUMS.values():
        assert all(vela.to_string(value) for value in type if value not in (vela.MEM.BOTH, vela.MEM.MANAGED))


def test_sides_combine_and_pickling_keeps_identity():
    assert vela.MEM.CPU | vela.MEM.GPU == vela.MEM.BOTH and isinstance(vela.MEM.CPU | vela.MEM.GPU, vela.MEM)
    assert pickle.loads(pickle.dumps(vela.UNIT.METER)) is vela.UNIT.METER


def test_subclasses_belong_to_their_class():
    car, vehicle = vela.OBJECT_SUBCLASS.CAR, vela.OBJECT_CLASS.VEHICLE
    assert vela.get_object_class(car) is vehicle and car in vela.get_object_sub_classes(vehicle)
