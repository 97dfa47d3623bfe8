"""Seeded random shapes shared by the tests."""
import os

import numpy as np
import pytest

import xggeokit as xg

SANITIZED = os.environ.get("XGGEO_SANITIZED") == "1"


def star_polygon(rng, cx, cy, radius, n):
    """A simple closed ring around (cx, cy): angles sorted, radii random."""
    angles = np.sort(rng.uniform(0, 2 * np.pi, n))
    radii = rng.uniform(0.3 * radius, radius, n)
    ring = np.column_stack([cx + radii * np.cos(angles), cy + radii * np.sin(angles)])
    return np.vstack([ring, ring[:1]])


def random_polygons(rng, count, extent=100.0, radius=8.0):
    out = np.empty(count, dtype=object)
    for i in range(count):
        cx, cy = rng.uniform(0, extent, 2)
        out[i] = xg.polygons(star_polygon(rng, cx, cy, radius, int(rng.integers(3, 9))))
    return out


def random_lines(rng, count, extent=100.0, step=6.0):
    out = np.empty(count, dtype=object)
    for i in range(count):
        start = rng.uniform(0, extent, 2)
        walk = start + np.cumsum(rng.uniform(-step, step, (int(rng.integers(2, 7)), 2)), axis=0)
        out[i] = xg.linestrings(walk)
    return out


def random_points(rng, count, extent=100.0):
    return xg.points(rng.uniform(0, extent, (count, 2)))


def mixed(rng, count):
    """Polygons, lines and points interleaved, with None every seventh entry."""
    kinds = [random_polygons(rng, count), random_lines(rng, count), random_points(rng, count)]
    out = np.empty(count, dtype=object)
    for i in range(count):
        out[i] = None if i % 7 == 3 else kinds[i % 3][i]
    return out


@pytest.fixture
def rng():
    return np.random.default_rng(20261124)


@pytest.fixture
def square():
    return xg.from_wkt("POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0))")
