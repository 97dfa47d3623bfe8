"""The Shape object: blob checks, identity by bytes, pickling and the notebook picture."""
import pickle
import struct

import pytest

import xggeokit as xg

POINT_BLOB = b"\x00" + struct.pack("<I", 1) + struct.pack("<dd", 1.5, -2.0)


def test_blob_round_trip_and_properties():
    s = xg.Shape(POINT_BLOB)
    assert bytes(s) == POINT_BLOB
    assert s.type == "Point" and s.bounds == (1.5, -2.0, 1.5, -2.0)
    assert s.ogc_wkt == "POINT (1.5 -2)"
    assert s.wkt == "point (1.500000 -2.000000)"
    assert xg.from_wkb(s.wkb) == s
    assert repr(s) == "<Shape POINT (1.5 -2)>"


@pytest.mark.parametrize("blob, code", [
    (POINT_BLOB[:-1], -202),                                      # counts need more bytes
    (POINT_BLOB + b"\x00", -57),                                   # bytes left over
    (b"\x00" + struct.pack("<I", 77) + bytes(16), -199),           # unknown type
    (b"\x00" + struct.pack("<II", 2, 1000) + bytes(32), -202),    # count larger than the bytes
    (b"", -202),
])
def test_bad_blobs_raise_with_the_check_status(blob, code):
    with pytest.raises(xg.GeometryError) as err:
        xg.Shape(blob)
    assert err.value.code == code
    assert isinstance(err.value.message, str) and err.value.message


def test_equality_and_hash_follow_the_bytes():
    a, b = xg.Shape(POINT_BLOB), xg.Shape(POINT_BLOB)
    c = xg.points([1.5, -2.5])
    assert a == b and hash(a) == hash(b) and a != c
    assert len({a, b, c}) == 2
    assert (a == "not a shape") is False


def test_pickle_keeps_the_bytes(square):
    copy = pickle.loads(pickle.dumps(square))
    assert copy == square and copy is not square


def test_long_repr_is_cut(rng):
    line = xg.linestrings(rng.uniform(0, 1, (50, 2)))
    assert len(repr(line)) < 80 and repr(line).endswith("...>")


def test_svg_draws_every_type(square):
    shapes = [square, xg.points([1, 2]), xg.linestrings([[0, 0], [1, 1]]),
              xg.multipoints([[0, 0], [1, 1]]), xg.multilinestrings([[[0, 0], [1, 1]], [[2, 2], [3, 3]]]),
              xg.combine([square, xg.box(20, 20, 30, 30)])]
    for s in shapes:
        svg = s._repr_svg_()
        assert svg.startswith("<svg") and svg.endswith("</svg>")
    assert "<path" in square._repr_svg_() and "<circle" in shapes[1]._repr_svg_()


def test_constructors_build_the_documented_types():
    assert xg.nil().type == "Nil" and xg.is_empty(xg.nil())
    assert xg.envelope_from_bounds(0, 0, 1, 2).type == "Envelope"
    assert xg.envelope_from_bounds(0, 0, 1, 2).bounds == (0.0, 0.0, 1.0, 2.0)
    assert xg.points([[0, 0], [1, 1]]).shape == (2,)
    assert xg.points([0, 1], [2, 3])[1].bounds == (1.0, 3.0, 1.0, 3.0)
    assert xg.linestrings([[[0, 0], [1, 1]], [[0, 0], [2, 2]]]).shape == (2,)
    holed = xg.polygons([(0, 0), (0, 10), (10, 10), (10, 0), (0, 0)],
                        [[(2, 2), (4, 2), (4, 4), (2, 4), (2, 2)]])
    assert xg.area(holed) == pytest.approx(96.0)
    assert xg.combine([xg.points([0, 0]), xg.points([1, 1])]).type == "MultiPoint"
    with pytest.raises(xg.GeometryError) as err:
        xg.linestrings([[0, 0]])
    assert err.value.code == -148
