"""Turns the extension's operation tables into vectorised module-level functions."""
import inspect

import numpy as np

from . import _xggeokit
from ._xggeokit import Shape

DEFAULT_TOLERANCE = 0.0001  # the library's own tolerance for shapes that share vertices


def as_objects(value, scalar_types=(Shape,)):
    """(flat object array, result shape); the shape is None for a scalar (or None)."""
    if value is None or isinstance(value, scalar_types):
        flat = np.empty(1, dtype=object)
        flat[0] = value
        return flat, None
    arr = np.asarray(value, dtype=object)
    return np.ascontiguousarray(arr.ravel()), arr.shape


def threads_arg(threads):
    return 0 if threads is None else int(threads)


def raise_arg(errors):
    if errors not in ("raise", "ignore"):
        raise ValueError('errors must be "raise" or "ignore"')
    return errors == "raise"


def finish(result, shape, trailing=()):
    """Reshapes a flat result to the broadcast shape, or unwraps a scalar."""
    if shape is None:
        value = result[0]
        return value.item() if isinstance(value, np.generic) else value
    return result.reshape(tuple(shape) + trailing)


def pair(a, b):
    """Two operands as flat arrays the kernels broadcast (each n long or of length 1)."""
    fa, sa = as_objects(a)
    fb, sb = as_objects(b)
    if sa is None or sb is None or sa == sb:
        return fa, fb, (sb if sa is None else sa)
    ba, bb = np.broadcast_arrays(np.asarray(a, dtype=object), np.asarray(b, dtype=object))
    return np.ascontiguousarray(ba.ravel()), np.ascontiguousarray(bb.ravel()), ba.shape


def parse_params(arg_text):
    """"dx, dy=0.0" -> [("dx", Parameter.empty), ("dy", 0.0)]."""
    params = []
    for item in filter(None, (s.strip() for s in arg_text.split(","))):
        name, _, default = item.partition("=")
        params.append((name.strip(), float(default) if default else inspect.Parameter.empty))
    return params


def signature(first, params, extra):
    p = [inspect.Parameter(n, inspect.Parameter.POSITIONAL_OR_KEYWORD) for n in first]
    p += [inspect.Parameter(n, inspect.Parameter.POSITIONAL_OR_KEYWORD, default=d) for n, d in params]
    p += [inspect.Parameter(n, inspect.Parameter.KEYWORD_ONLY, default=d) for n, d in extra]
    return inspect.Signature(p)


def unary(kind, name, arg_text):
    kernel = getattr(_xggeokit.kernels, name)
    params = parse_params(arg_text)
    sig = signature(["geometry"], params, [("threads", None), ("errors", "raise")])
    trailing = (4,) if name == "bounds" else ()

    def function(geometry, *args, threads=None, errors="raise", **kwargs):
        if len(args) == len(params) and not kwargs:
            values = [float(v) for v in args]  # the common case: every parameter by position
        else:
            bound = sig.bind(geometry, *args, **kwargs)
            bound.apply_defaults()
            values = [float(bound.arguments[n]) for n, _ in params]
        flat, shape = as_objects(geometry)
        result = kernel(flat, values, threads_arg(threads), raise_arg(errors))
        if shape is None and trailing:
            return tuple(result[0])
        return finish(result, shape, trailing)

    function.__signature__ = sig
    return function


def binary(kind, name, arg_text):
    kernel = getattr(_xggeokit.kernels, name)

    def function(a, b, tolerance=DEFAULT_TOLERANCE, *, threads=None, errors="raise"):
        fa, fb, shape = pair(a, b)
        return finish(kernel(fa, fb, float(tolerance), threads_arg(threads), raise_arg(errors)), shape)

    return function


def reader(kind, name, arg_text):
    kernel = getattr(_xggeokit.kernels, name)

    def function(data, *, threads=None, errors="raise"):
        flat, shape = as_objects(data, (str, bytes))
        return finish(kernel(flat, threads_arg(threads), raise_arg(errors)), shape)

    return function


_MAKERS = {"unary_f64": unary, "unary_bool": unary, "unary_shape": unary, "unary_text": unary,
           "binary_bool": binary, "binary_f64": binary, "binary_shape": binary, "read": reader}


def install(namespace):
    """Defines one function per table row in namespace; returns the public names."""
    names = []
    for kind, name, arg_text, doc in _xggeokit.OPS:
        function = _MAKERS[kind](kind, name, arg_text)
        function.__name__ = function.__qualname__ = name
        function.__module__ = "xggeokit"
        function.__doc__ = doc
        if kind == "read":
            # The readers are wrapped again in _text (hex WKB, GeoJSON); the raw ones stay private.
            namespace["_" + name] = function
        else:
            namespace[name] = function
            names.append(name)
    return names
