"""Shapely interoperation through WKB, checked against Shapely's own answers."""
import numpy as np
import pytest

import xggeokit as xg
from conftest import random_lines, random_polygons

shapely = pytest.importorskip("shapely")


def test_shapes_travel_both_ways(rng):
    polys = random_polygons(rng, 200)
    theirs = xg.to_shapely(polys)
    assert all(x.geom_type == "Polygon" for x in theirs)
    back = xg.from_shapely(theirs)
    assert all(a == b for a, b in zip(back, polys))
    assert xg.to_shapely(None) is None and xg.from_shapely(None) is None
    assert xg.to_shapely(xg.nil()).is_empty


def test_measures_and_intersects_agree_with_shapely(rng):
    polys, lines = random_polygons(rng, 400), random_lines(rng, 400)
    sp, sl = xg.to_shapely(polys), xg.to_shapely(lines)
    np.testing.assert_allclose(xg.area(polys), [g.area for g in sp], rtol=1e-9)
    np.testing.assert_allclose(xg.length(lines), [g.length for g in sl], rtol=1e-9)
    query = polys[0]
    ours = xg.intersects(polys, query, 0.0)
    theirs = np.array([g.intersects(sp[0]) for g in sp])
    assert (ours == theirs).all()
    ours = xg.intersects(lines, polys, 0.0)
    theirs = np.array([a.intersects(b) for a, b in zip(sl, sp)])
    assert (ours == theirs).all() and theirs.any()
