"""Round trips through every text and binary form, and the readers' failures."""
import json

import numpy as np
import pytest

import xggeokit as xg
from conftest import mixed

TEXTS = [
    "POINT (1 2)",
    "LINESTRING (0 0, 1.25 3, -4 5e-3)",
    "POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0), (2 2, 2 4, 4 4, 4 2, 2 2))",
    "MULTIPOINT ((1 2), (3 4))",
    "MULTILINESTRING ((0 0, 1 1), (2 2, 3 3, 4 5))",
    "MULTIPOLYGON (((0 0, 1 0, 1 1, 0 0)), ((5 5, 6 5, 6 6, 5 5)))",
]


@pytest.mark.parametrize("text", TEXTS)
def test_every_form_reads_back_the_same_shape(text):
    s = xg.from_wkt(text)
    assert xg.to_ogc_wkt(s) == text.replace("5e-3", "0.005")
    assert xg.from_wkt(xg.to_ogc_wkt(s)) == s
    assert xg.from_wkt(xg.to_wkt(s)) == xg.from_wkt(xg.to_ogc_wkt(s, 6))  # the dialect has 6 decimals
    assert xg.from_wkb(xg.to_wkb(s)) == s
    assert xg.from_wkb(xg.to_wkb(s, True)) == s
    assert xg.from_wkb(xg.to_hex(s)) == s
    assert xg.from_geojson(xg.to_geojson(s)) == s
    assert json.loads(xg.to_geojson(s))["type"].upper() == text.split()[0]


def test_round_trips_are_exact_on_random_arrays(rng):
    shapes = mixed(rng, 500)
    for back in (xg.from_wkt(xg.to_ogc_wkt(shapes)), xg.from_wkb(xg.to_wkb(shapes)),
                 xg.from_geojson(xg.to_geojson(shapes)), xg.from_wkb(xg.to_hex(shapes))):
        assert back.shape == shapes.shape
        assert all(x == y for x, y in zip(back, shapes))


def test_readers_take_arrays_with_none():
    out = xg.from_wkt(np.array([["POINT (1 2)", None], ["point (1.000000 2.000000)", "POINT EMPTY"]]))
    assert out.shape == (2, 2) and out[0, 1] is None
    assert out[0, 0] == out[1, 0] and out[1, 1].type == "Nil"
    assert xg.to_wkt(out[1, 1]) == "point empty" and xg.from_wkt("point empty").type == "Nil"


def test_geojson_feature_and_empty_forms():
    feature = {"type": "Feature", "properties": {}, "geometry": {"type": "Point", "coordinates": [1, 2]}}
    assert xg.from_geojson(feature) == xg.points([1, 2])
    assert xg.from_geojson({"type": "Feature", "geometry": None}) is None
    assert xg.to_geojson(xg.nil()) == '{"type": "Point", "coordinates": []}'
    assert xg.from_geojson(xg.to_geojson(xg.nil())).type == "Nil"
    assert xg.points([1, 2]).__geo_interface__ == {"type": "Point", "coordinates": [1.0, 2.0]}


@pytest.mark.parametrize("reader, data, code", [
    (xg.from_wkt, "POLYGON ((0 0, 1 0, 1 1 0 0))", -204),
    (xg.from_wkt, "GEOMETRYCOLLECTION (POINT (1 2))", -207),
    (xg.from_wkt, "POINT (1 2)\x00", -204),
    (xg.from_wkb, b"\x01\x01\x00\x00\x00", -206),
    (xg.from_wkb, b"\x07\x01\x00\x00\x00" + bytes(16), -198),
    (xg.from_geojson, '{"type": "GeometryCollection", "geometries": []}', -207),
    (xg.from_geojson, "{not json", -204),
])
def test_bad_input_raises_with_the_reader_status(reader, data, code):
    with pytest.raises(xg.GeometryError) as err:
        reader(data)
    assert err.value.code == code
    assert reader([data, data], errors="ignore").tolist() == [None, None]


def test_text_of_wrong_kind_is_a_type_error():
    with pytest.raises(TypeError):
        xg.from_wkt([1.5])
    with pytest.raises(TypeError):
        xg.area(["POINT (1 2)"])
