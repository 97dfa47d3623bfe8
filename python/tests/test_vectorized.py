"""Every table operation: vectorised results equal an element-by-element loop of scalar calls,
with broadcasting, None entries and any thread count."""
import math

import numpy as np
import pytest

import xggeokit as xg
from conftest import mixed, random_polygons

# Scalar parameters for the operations that take them (the others take none).
PARAMS = {"move": (3.0, -2.0), "rotate": (0.5, 1.0, 2.0), "stretch": (2.0, 0.5, 1.0, 1.0),
          "mirror": (0.0, 0.0, 1.0, 3.0), "to_ogc_wkt": (6,), "buffer": (1.5,),
          "line_interpolate": (0.3,), "snap": (1.0, 1.0, 2.0)}
UNARY = [op for kind, op, _, _ in xg._xggeokit.OPS if kind.startswith("unary")]
BINARY = [op for kind, op, _, _ in xg._xggeokit.OPS if kind.startswith("binary")]
ENVELOPE_OPS = {op for op in BINARY if op.startswith("envelope_") or op == "clip"}


def same(x, y):
    """Equality that treats nan as equal to nan and compares tuples and arrays item by item."""
    if isinstance(x, float) and isinstance(y, float):
        return x == y or (math.isnan(x) and math.isnan(y))
    if isinstance(x, (tuple, np.ndarray)):
        return len(x) == len(y) and all(same(float(a), float(b)) for a, b in zip(x, y))
    return type(x) is type(y) and x == y


def missing(v):
    """None, False or nan: what a None input gives."""
    if v is None or isinstance(v, (bool, np.bool_)):
        return not v
    return bool(np.isnan(np.asarray(v, dtype=float)).all())


def loop(function, *args, **kwargs):
    """The plain loop: one scalar call per element, a failure giving the missing value."""
    def one(*xs):
        return function(*xs, **kwargs)
    return [one(*xs) for xs in zip(*args)]


@pytest.fixture(scope="module")
def data():
    rng = np.random.default_rng(7)
    return mixed(rng, 300), random_polygons(rng, 300)


@pytest.mark.parametrize("name", UNARY)
def test_unary_matches_loop(name, data):
    shapes, _ = data
    f = getattr(xg, name)
    params = PARAMS.get(name, ())
    vector = f(shapes, *params, errors="ignore")
    scalar = loop(lambda s: f(s, *params, errors="ignore"), shapes)
    assert len(vector) == len(scalar)
    assert all(same(v if not isinstance(v, np.generic) else v.item(), s) or
               (isinstance(v, np.ndarray) and same(v, s)) for v, s in zip(vector, scalar)), name
    # None in, missing value out.
    assert all(missing(vector[i]) for i in range(3, len(shapes), 7))


def operands(name, data):
    shapes, polys = data
    if name in ENVELOPE_OPS:
        return shapes, xg.envelope(polys, errors="ignore")
    return shapes, polys


@pytest.mark.parametrize("name", BINARY)
def test_binary_matches_loop_and_broadcasts(name, data):
    f = getattr(xg, name)
    a, b = operands(name, data)
    vector = f(a, b, errors="ignore")
    assert all(same(v.item() if isinstance(v, np.generic) else v, s)
               for v, s in zip(vector, loop(lambda x, y: f(x, y, errors="ignore"), a, b))), name
    # scalar x array and array x scalar
    assert all(same(v.item() if isinstance(v, np.generic) else v, f(a[0], y, errors="ignore"))
               for v, y in zip(f(a[0], b, errors="ignore"), b))
    assert all(same(v.item() if isinstance(v, np.generic) else v, f(x, b[1], errors="ignore"))
               for v, x in zip(f(a, b[1], errors="ignore"), a))
    # (n, 1) against (m,) gives (n, m)
    grid = f(a[:4].reshape(4, 1), b[:5], errors="ignore")
    assert grid.shape == (4, 5)
    assert same(grid[2, 3].item() if isinstance(grid[2, 3], np.generic) else grid[2, 3],
                f(a[2], b[3], errors="ignore"))


@pytest.mark.parametrize("name", ["area", "bounds", "to_wkt", "convex_hull", "move", "intersects",
                                  "distance", "intersection", "union", "is_valid_reason"])
def test_threads_give_identical_results(name):
    rng = np.random.default_rng(11)
    shapes = random_polygons(rng, 6000)  # above the size that starts threads
    f = getattr(xg, name)
    params = PARAMS.get(name, ())
    if name in BINARY:
        one, four = f(shapes, shapes[::-1], threads=1), f(shapes, shapes[::-1], threads=4)
    else:
        one, four = f(shapes, *params, threads=1), f(shapes, *params, threads=4)
    assert one.shape == four.shape
    assert all(same(x.item() if isinstance(x, np.generic) else x, y.item() if isinstance(y, np.generic) else y)
               for x, y in zip(one.ravel(), four.ravel()))


def test_results_keep_the_input_shape(square):
    grid = np.array([[square, None], [square, square]], dtype=object)
    assert xg.area(grid).shape == (2, 2)
    assert xg.bounds(grid).shape == (2, 2, 4)
    assert np.isnan(xg.area(grid)[0, 1])
    assert xg.area([]).shape == (0,)
    assert xg.area(square) == 100.0 and isinstance(xg.area(square), float)
    assert xg.intersects(square, None) is False
    assert xg.intersection(None, square) is None


def test_operations_give_expected_values(square):
    inner = xg.box(2, 2, 4, 4)
    assert xg.contains(square, inner) and xg.within(inner, square)
    assert xg.area(xg.intersection(square, xg.box(5, 5, 20, 20))) == pytest.approx(25.0)
    assert xg.area(xg.union(square, xg.box(5, 5, 20, 20))) == pytest.approx(100 + 225 - 25)
    assert xg.area(xg.difference(square, inner)) == pytest.approx(96.0)
    assert xg.distance(square, xg.points([13.0, 14.0])) == pytest.approx(5.0)
    assert xg.bounds(xg.move(square, 1, 2)) == (1.0, 2.0, 11.0, 12.0)
    assert xg.length(xg.linestrings([[0, 0], [3, 4]])) == 5.0
    merged = xg.line_merge(xg.linestrings([[0, 0], [1, 0]]), xg.linestrings([[1, 0], [2, 0]]))
    assert merged.type == "LineString" and xg.length(merged) == 2.0
    assert xg.envelope_contains(square, xg.envelope_from_bounds(1, 1, 2, 2))
    assert xg.is_valid_reason(square) == "Valid Geometry"


def test_overlay_splits_into_three_parts(square, data):
    only_a, only_b, common = xg.overlay(square, xg.box(5, 5, 20, 20))
    assert [xg.area(p) for p in (only_a, only_b, common)] == pytest.approx([75.0, 200.0, 25.0])
    _, polys = data
    parts = xg.overlay(polys, polys[::-1], errors="ignore")
    loop_parts = [xg.overlay(x, y, errors="ignore") for x, y in zip(polys, polys[::-1])]
    for k in range(3):
        assert all(same(v, p[k]) for v, p in zip(parts[k], loop_parts))
    with pytest.raises(xg.GeometryError):
        xg.overlay(xg.linestrings([[0, 0], [1, 1]]), square)


def test_the_nil_shape_measures_zero_and_has_no_bounds(square):
    empty = xg.intersection(square, xg.box(50, 50, 60, 60))
    assert empty.type == "Nil"
    assert xg.area(empty) == 0.0 and xg.length(empty) == 0.0
    assert all(np.isnan(xg.bounds(empty)))


def test_the_gil_is_released_during_a_call():
    import threading
    shapes = random_polygons(np.random.default_rng(5), 20000)
    count, running = [0], [True]

    def spin():
        while running[0]:
            count[0] += 1
    spinner = threading.Thread(target=spin)
    spinner.start()
    try:
        best = 0
        for _ in range(3):
            before = count[0]
            xg.convex_hull(np.concatenate([shapes] * 10), threads=1)  # a call of a good fraction of a second
            best = max(best, count[0] - before)
    finally:
        running[0] = False
        spinner.join()
    # With the GIL held the other thread could only run between the two reads of the counter.
    assert best > 10000


@pytest.mark.parametrize("name, params, expected", [
    ("move", (1.0, -1.0), (1.0, -1.0, 11.0, 9.0)),
    ("stretch", (2.0, 0.5, 0.0, 0.0), (0.0, 0.0, 20.0, 5.0)),
    ("rotate", (math.pi, 5.0, 5.0), (0.0, 0.0, 10.0, 10.0)),
    ("mirror", (20.0, 0.0, 20.0, 1.0, 0.0001), (30.0, 0.0, 40.0, 10.0)),
])
def test_transforms_move_the_bounds_and_leave_the_input(square, name, params, expected):
    before = bytes(square)
    moved = getattr(xg, name)(square, *params)
    assert xg.bounds(moved) == pytest.approx(expected, abs=1e-9)
    assert xg.area(moved) == pytest.approx(100.0 * (2.0 * 0.5 if name == "stretch" else 1.0))
    assert bytes(square) == before  # shapes are immutable: transforms work on copies


def test_dialect_and_ogc_text_read_to_the_same_shape():
    assert xg.from_wkt("point (1 2)") == xg.from_wkt("POINT (1 2)") == xg.points([1, 2])
    assert xg.from_wkt("  Polygon((0 0,1 0,1 1,0 0))") == xg.from_wkt("polygon ((0 0, 1 0, 1 1, 0 0))")


def test_buffer_and_clip_by_rect(square):
    circle = xg.buffer(xg.points([0, 0]), 1.0)
    assert xg.area(circle) == pytest.approx(20 * math.sin(2 * math.pi / 40), rel=1e-6)  # a 40-gon
    assert xg.buffer(xg.points([0, 0]), 1.0, 2.0) is None  # below min_radius nothing is made
    assert xg.area(xg.buffer(square, 1.0)) > 100.0 > xg.area(xg.buffer(square, -1.0))
    assert xg.area(xg.clip_by_rect(square, 5, 5, 20, 20)) == pytest.approx(25.0)
    assert xg.clip_by_rect(square, 50, 50, 60, 60).type == "Nil"
    clipped = xg.clip_by_rect(np.array([square, None, xg.linestrings([[-5, 1], [15, 1]])]), 0, 0, 10, 10)
    assert clipped[1] is None and xg.length(clipped[2]) == pytest.approx(10.0, abs=2e-4)
    with pytest.raises(xg.GeometryError) as err:
        xg.clip(square, square)  # the box must be an envelope shape
    assert err.value.code == -27


def test_line_interpolate_and_snap():
    line = xg.from_wkt("linestring (0 0,1 0,3 0)")
    assert xg.to_wkt(xg.line_interpolate(line, 0.75)) == "point (1.500000 0.000000)"
    with pytest.raises(xg.GeometryError):
        xg.line_interpolate(xg.from_wkt("linestring (0 0,1 0,2 0)"), 0.5)  # on an interior vertex: not found
    assert xg.to_wkt(xg.snap(line, 2.9, 0.05, 0.2)) == "point (3.000000 0.000000)"  # the end point wins
    assert xg.to_wkt(xg.snap(line, 2.0, 0.05, 0.2, 2)) == "point (2.000000 0.000000)"  # edges only
