"""Running the vectorised functions over Dask collections of shapes, partition by partition.

Shapes pickle as their bytes, so partitions travel to workers on other machines unchanged; each
worker runs the vectorised function (with its own thread pool) on the partitions it holds.

    import dask.bag as db, xggeokit as xg, xggeokit.dask as xgd
    shapes = xgd.read_wkt("big.wkt", blocksize="64MiB")          # a bag of Shapes
    areas = xgd.map_bag(xg.area, shapes)                          # a bag of floats
    hits = xgd.map_bag(xg.intersects, shapes, query)              # query broadcast to every shape
"""
import numpy as np

from . import _text, from_wkt

# Result dtypes of the vectorised functions that do not return objects (the rest are object).
_DTYPES = {"area": float, "length": float, "distance": float, "bounds": float}


def _dtype_of(func):
    name = getattr(func, "__name__", "")
    if name in _DTYPES:
        return _DTYPES[name]
    if name.startswith(("is_", "envelope_")) and name not in ("is_valid_reason", "envelope"):
        return bool
    if name in ("intersects", "disjoint", "within", "contains", "touches", "crosses", "overlaps", "equals"):
        return bool
    return object


def _objects(items):
    arr = np.empty(len(items), dtype=object)
    arr[:] = list(items)
    return arr


def map_array(func, shapes, *args, dtype=None, **kwargs):
    """func(block, *args, **kwargs) over every block of a dask.array of shapes (dtype object)."""
    dtype = dtype or _dtype_of(func)
    if getattr(func, "__name__", "") == "bounds":
        return shapes.map_blocks(lambda b: func(b, *args, **kwargs), dtype=float, new_axis=shapes.ndim)
    return shapes.map_blocks(lambda b: func(b, *args, **kwargs), dtype=dtype)


def map_bag(func, shapes, *args, **kwargs):
    """func(partition, *args, **kwargs) over every partition of a dask.bag of shapes; a bag of
    the per-shape results."""
    def run(partition):
        # tolist() gives plain Python values, which travel far faster than numpy scalars.
        return func(_objects(partition), *args, **kwargs).tolist()
    return shapes.map_partitions(run)


def from_shapes(shapes, chunks=100_000):
    """A dask.array of dtype object from a sequence or numpy array of shapes."""
    import dask.array as da
    return da.from_array(_objects(shapes) if not isinstance(shapes, np.ndarray) else shapes,
                         chunks=chunks)


def _lines(partition):
    return [line for line in (raw.strip() for raw in partition) if line]


def read_wkt(path, blocksize="64MiB", errors="raise"):
    """A dask.bag of Shapes from files with one WKT text (dialect or OGC) per line."""
    import dask.bag as db

    def parse(partition):
        return from_wkt(_objects(_lines(partition)), errors=errors).tolist()
    return db.read_text(path, blocksize=blocksize).map_partitions(parse)


def read_geojson(path, blocksize="64MiB", errors="raise"):
    """A dask.bag of Shapes from newline-delimited GeoJSON (one geometry or Feature a line)."""
    import dask.bag as db

    def parse(partition):
        return _text.from_geojson(_objects(_lines(partition)), errors=errors).tolist()
    return db.read_text(path, blocksize=blocksize).map_partitions(parse)
