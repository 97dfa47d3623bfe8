"""Shapes from coordinate arrays."""
import numpy as np

from . import _xggeokit


def _xy(coords, y=None):
    if y is not None:
        coords = np.stack([np.asarray(coords, dtype=float), np.asarray(y, dtype=float)], axis=-1)
    arr = np.asarray(coords, dtype=float)
    if arr.shape[-1:] != (2,):
        raise ValueError("coordinates need a last axis of length 2 (x, y)")
    return arr


def points(coords, y=None):
    """Points from an (..., 2) array (or x and y arrays); a single (2,) pair gives one Shape."""
    arr = _xy(coords, y)
    result = _xggeokit.make_points(arr.reshape(-1, 2))
    return result[0] if arr.ndim == 1 else result.reshape(arr.shape[:-1])


def _each(items, make):
    out = np.empty(len(items), dtype=object)
    for i, item in enumerate(items):
        out[i] = None if item is None else make(item)
    return out


def linestrings(coords):
    """A linestring from an (n, 2) array, or an array of them from (k, n, 2) or a list of (n, 2)."""
    if isinstance(coords, np.ndarray) and coords.dtype != object and coords.ndim == 2:
        return _xggeokit.make_line(_xy(coords))
    if isinstance(coords, np.ndarray) and coords.dtype != object and coords.ndim == 3:
        return _each(list(coords), lambda c: _xggeokit.make_line(_xy(c)))
    items = list(coords)
    if items and np.ndim(items[0]) == 1:  # a single list of pairs
        return _xggeokit.make_line(_xy(items))
    return _each(items, lambda c: _xggeokit.make_line(_xy(c)))


def _polygon(shell, holes=None):
    rings = [_xy(shell)] + [_xy(h) for h in (holes or [])]
    return _xggeokit.make_polygon(rings)


def polygons(shells, holes=None):
    """A polygon from a ring ((n, 2), ring 1 outer) and optional holes, or an array of polygons
    from a list (or (k, n, 2) array) of shells with a matching list of hole lists."""
    first = np.asarray(shells[0] if len(shells) else [], dtype=object)
    if np.ndim(shells) == 2 or (first.ndim == 1 and len(first) == 2 and np.isscalar(first[0])):
        return _polygon(shells, holes)
    holes = holes if holes is not None else [None] * len(shells)
    out = np.empty(len(shells), dtype=object)
    for i, (shell, hole) in enumerate(zip(shells, holes)):
        out[i] = None if shell is None else _polygon(shell, hole)
    return out


def multipoints(coords):
    """A multipoint from an (n, 2) array."""
    return _xggeokit.make_multipoint(_xy(coords))


def multilinestrings(lines):
    """A multilinestring from a list of (n, 2) arrays."""
    return _xggeokit.make_multiline([_xy(line) for line in lines])


def combine(shapes):
    """One multi-type of the given shapes; the last shape's type picks the kind."""
    return _xggeokit.combine(list(shapes))


def envelope_from_bounds(minx, miny, maxx, maxy):
    """An envelope shape (type 21): the second operand of the envelope predicates."""
    return _xggeokit.make_envelope(float(minx), float(miny), float(maxx), float(maxy))


def box(minx, miny, maxx, maxy):
    """The rectangle as a polygon (clockwise, as the library draws rectangles)."""
    return _polygon([(minx, miny), (minx, maxy), (maxx, maxy), (maxx, miny), (minx, miny)])


def nil():
    """The nil (empty) shape."""
    return _xggeokit.make_nil()


def clip_by_rect(geometry, xmin, ymin, xmax, ymax, tolerance=0.0001, *, threads=None, errors="raise"):
    """The parts of the shapes inside the rectangle."""
    from . import clip  # noqa: F401  (only present when the library clips)
    return clip(geometry, envelope_from_bounds(xmin, ymin, xmax, ymax), tolerance,
                threads=threads, errors=errors)
