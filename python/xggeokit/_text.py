"""Text and binary forms: WKT (both forms), WKB (bytes or hex) and GeoJSON."""
import json
import math

import numpy as np

from . import _xggeokit
from ._vectorize import as_objects, finish
from ._xggeokit import GeometryError, Shape

_TYPES = {1: "Point", 2: "LineString", 3: "Polygon", 4: "MultiPoint", 5: "MultiLineString",
          6: "MultiPolygon"}


def from_wkt(text, *, threads=None, errors="raise"):
    """Shapes from text: the library's WKT dialect (lower-case keywords) or OGC WKT."""
    from . import _from_wkt
    return _from_wkt(text, threads=threads, errors=errors)


def _unhex(value):
    return bytes.fromhex(value) if isinstance(value, str) else value


def from_wkb(data, *, threads=None, errors="raise"):
    """Shapes from standard WKB given as bytes or as hex text."""
    from . import _from_wkb
    if isinstance(data, (str, bytes)) or data is None:
        return _from_wkb(_unhex(data), threads=threads, errors=errors)
    arr = np.asarray(data, dtype=object)
    if any(isinstance(v, str) for v in arr.flat):
        arr = np.frompyfunc(_unhex, 1, 1)(arr).astype(object)
    return _from_wkb(arr, threads=threads, errors=errors)


def to_hex(geometry, big_endian=False, *, threads=None, errors="raise"):
    """Standard WKB as upper-case hex text."""
    from . import to_wkb
    raw = to_wkb(geometry, int(big_endian), threads=threads, errors=errors)
    if raw is None or isinstance(raw, bytes):
        return None if raw is None else raw.hex().upper()
    return np.frompyfunc(lambda b: None if b is None else b.hex().upper(), 1, 1)(raw).astype(object)


# ---- GeoJSON ---------------------------------------------------------------------------------

def _coords(arr):
    return [[float(x), float(y)] for x, y in arr]


def _geojson_dict(shape):
    code, parts = _xggeokit.parts(shape)
    if code == 0:
        return {"type": "Point", "coordinates": []}
    if code not in _TYPES:
        raise GeometryError("GeoJSON has no form for shape type %d" % code, -134)
    if code == 1:
        coords = _coords(parts)[0]
    elif code in (2, 4):
        coords = _coords(parts)
    elif code in (3, 5):
        coords = [_coords(ring) for ring in parts]
    else:
        coords = [[_coords(ring) for ring in poly] for poly in parts]
    return {"type": _TYPES[code], "coordinates": coords}


def to_geojson(geometry, indent=None):
    """GeoJSON geometry text of each shape (None stays None)."""
    def one(shape):
        return None if shape is None else json.dumps(_geojson_dict(shape), indent=indent)
    flat, shape = as_objects(geometry)
    out = np.empty(len(flat), dtype=object)
    for i, s in enumerate(flat):
        out[i] = one(s)
    return finish(out, shape)


def _num(v):
    v = float(v)
    if not math.isfinite(v):
        raise GeometryError("GeoJSON coordinate is not a finite number", -66)
    return repr(v)  # the shortest digits that read back to the same double


def _pt(c):
    if len(c) < 2:
        raise GeometryError("GeoJSON position needs two numbers", -204)
    return _num(c[0]) + " " + _num(c[1])


def _seq(cs):
    return "(" + ", ".join(_pt(c) for c in cs) + ")" if cs else "EMPTY"


def _geojson_wkt(obj):
    if not isinstance(obj, dict):
        raise GeometryError("GeoJSON text is not an object", -204)
    kind = obj.get("type")
    if kind == "Feature":
        return None if obj.get("geometry") is None else _geojson_wkt(obj["geometry"])
    c = obj.get("coordinates")
    if kind == "GeometryCollection":
        raise GeometryError("geometry collections have no shape", -207)
    if kind not in _TYPES.values() or c is None:
        raise GeometryError("not a GeoJSON geometry: %r" % (kind,), -204)
    if kind == "Point":
        body = "(" + _pt(c) + ")" if c else "EMPTY"
    elif kind in ("LineString", "MultiPoint"):
        body = _seq(c)
    elif kind in ("Polygon", "MultiLineString"):
        body = "(" + ", ".join(_seq(r) for r in c) + ")" if c else "EMPTY"
    else:
        body = ("(" + ", ".join("(" + ", ".join(_seq(r) for r in p) + ")" for p in c) + ")"
                if c else "EMPTY")
    return kind.upper() + " " + body


def from_geojson(text, *, errors="raise"):
    """Shapes from GeoJSON geometry (or Feature) texts or parsed dicts."""
    from . import _from_wkt

    def one(item):
        if item is None:
            return None
        try:
            obj = json.loads(item) if isinstance(item, (str, bytes)) else item
            wkt = _geojson_wkt(obj)
        except (ValueError, TypeError) as e:
            if isinstance(e, GeometryError):
                if errors == "raise":
                    raise
                return None
            if errors == "raise":
                raise GeometryError("GeoJSON text does not parse: %s" % e, -204) from None
            return None
        return None if wkt is None else _from_wkt(wkt, errors=errors)

    if text is None or isinstance(text, (str, bytes, dict)):
        return one(text)
    items = list(np.asarray(text, dtype=object).flat)
    arr = np.asarray(text, dtype=object)
    out = np.empty(len(items), dtype=object)
    for i, item in enumerate(items):
        out[i] = one(item)
    return out.reshape(arr.shape)


Shape.__geo_interface__ = property(_geojson_dict)
