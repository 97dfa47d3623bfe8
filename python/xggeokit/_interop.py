"""Shapely interoperation through WKB."""
import numpy as np

from ._vectorize import as_objects, finish


def from_shapely(geometry, *, threads=None, errors="raise"):
    """xggeokit shapes from Shapely geometries (or an array of them); empty points give nil."""
    from ._text import from_wkb
    if geometry is None or hasattr(geometry, "wkb"):
        return None if geometry is None else from_wkb(geometry.wkb, errors=errors)
    arr = np.asarray(geometry, dtype=object)
    wkb = np.frompyfunc(lambda g: None if g is None else g.wkb, 1, 1)(arr).astype(object)
    return from_wkb(wkb, threads=threads, errors=errors)


def to_shapely(geometry, *, threads=None, errors="raise"):
    """Shapely geometries of xggeokit shapes; the nil shape becomes an empty point."""
    import shapely.wkb
    from shapely.geometry import Point
    from . import to_wkb, is_empty

    flat, shape = as_objects(geometry)
    empty = is_empty(flat)
    present = np.array([s is not None and not e for s, e in zip(flat, empty)], dtype=bool)
    wkb = np.empty(len(flat), dtype=object)
    if present.any():
        wkb[present] = to_wkb(flat[present], threads=threads, errors=errors)
    out = np.empty(len(flat), dtype=object)
    for i, s in enumerate(flat):
        if s is None:
            continue
        out[i] = Point() if empty[i] else (None if wkb[i] is None else shapely.wkb.loads(wkb[i]))
    return finish(out, shape)
