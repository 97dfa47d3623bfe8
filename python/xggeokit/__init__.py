"""xggeokit: planar vector geometry over numpy arrays.

Every function takes a Shape, None, or an array (or list) of them, broadcasts two operands
against each other as numpy does, and returns a scalar for scalar input or a numpy array of the
broadcast shape.  None gives None, nan or False.  A failing library call raises GeometryError
with the library's status code and message (errors="ignore" gives a missing value instead).
Large arrays run without the GIL on threads= threads (default: every core); results do not
depend on the number of threads.
"""
from ._xggeokit import GeometryError, Shape
from . import _xggeokit
from ._vectorize import install as _install

# Module-level functions for every operation the extension's tables list (area, intersects,
# intersection, to_wkt, ...); OPERATIONS holds their names.
OPERATIONS = _install(globals())
line_merge = merge  # noqa: F821  (defined by _install)


def overlay(a, b, tolerance=0.0001, *, threads=None, errors="raise"):
    """(only in a, only in b, in both) for points and multipoints, or polygons and multipolygons;
    parts the library does not write for a pair are None."""
    from ._vectorize import finish, pair, raise_arg, threads_arg
    fa, fb, shape = pair(a, b)
    parts = _xggeokit.kernels.overlay(fa, fb, float(tolerance), threads_arg(threads), raise_arg(errors))
    return tuple(finish(p, shape) for p in parts)

from ._constructors import (points, linestrings, polygons, multipoints, multilinestrings,  # noqa: E402
                            combine, envelope_from_bounds, box, nil)
from ._text import from_wkt, from_wkb, from_geojson, to_geojson, to_hex  # noqa: E402
from ._interop import from_shapely, to_shapely  # noqa: E402
from . import _svg  # noqa: E402,F401  (gives Shape its _repr_svg_)

__version__ = "0.1.0"

__all__ = ["Shape", "GeometryError", "points", "linestrings", "polygons", "multipoints",
           "multilinestrings", "combine", "envelope_from_bounds", "box", "nil", "from_wkt",
           "from_wkb", "from_geojson", "to_geojson", "to_hex", "from_shapely", "to_shapely",
           "line_merge", "overlay"] + OPERATIONS
if "clip" in OPERATIONS:
    from ._constructors import clip_by_rect  # noqa: E402,F401  (there once the library clips)
    __all__.append("clip_by_rect")
