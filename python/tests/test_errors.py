"""Failures raise GeometryError with the library's code and UTF-8 message, in input order, and
leave nothing allocated behind."""
import ctypes
import gc
import os

import numpy as np
import pytest

import xggeokit as xg
from conftest import SANITIZED, random_polygons


def test_failing_operation_reports_code_index_and_message(square):
    shapes = np.array([square, xg.points([1, 2]), xg.linestrings([[0, 0], [1, 1]])], dtype=object)
    with pytest.raises(xg.GeometryError) as err:
        xg.area(shapes)
    assert err.value.code == -134
    assert "index 1" in err.value.message
    assert err.value.message.endswith(xg._xggeokit.status_message(-134))
    assert "status -134" in str(err.value)
    got = xg.area(shapes, errors="ignore")
    assert got[0] == 100.0 and np.isnan(got[1:]).all()


def test_messages_are_utf8_text():
    for code in (-1, -27, -65, -134, -204):
        message = xg._xggeokit.status_message(code)
        assert isinstance(message, str) and message and not message.startswith("status")
    assert xg._xggeokit.status_message(-12345) == "status -12345"


def test_the_first_failure_in_input_order_is_reported_with_threads():
    rng = np.random.default_rng(3)
    shapes = random_polygons(rng, 9000)
    shapes[5000] = xg.points([0, 0])
    shapes[8000] = xg.linestrings([[0, 0], [1, 1]])
    for threads in (1, 2, 4):
        with pytest.raises(xg.GeometryError) as err:
            xg.centroid(shapes, threads=threads)
        assert "index 5000" in err.value.message and err.value.code == -134


def test_envelope_predicates_refuse_shapes_that_are_not_envelopes(square):
    with pytest.raises(xg.GeometryError) as err:
        xg.envelope_intersects(square, square)
    assert err.value.code == -27


def test_bad_arguments_are_python_errors(square):
    with pytest.raises(ValueError):
        xg.area(square, errors="sometimes")
    with pytest.raises(ValueError):
        xg.intersects(np.array([square] * 3, dtype=object), np.array([square] * 2, dtype=object))
    with pytest.raises(TypeError):
        xg.move(square)  # dx and dy are required


def _allocated():
    libc = ctypes.CDLL("libc.so.6")

    class MallInfo2(ctypes.Structure):
        _fields_ = [(n, ctypes.c_size_t) for n in
                    ("arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks", "uordblks",
                     "fordblks", "keepcost")]
    libc.mallinfo2.restype = MallInfo2
    gc.collect()
    info = libc.mallinfo2()
    return info.uordblks + info.hblkhd


@pytest.mark.skipif(SANITIZED, reason="the sanitizer's allocator does not keep malloc statistics")
def test_repeated_failures_and_results_do_not_grow_the_heap(square):
    shapes = np.array([square, xg.points([1, 2])] * 500, dtype=object)

    def churn():
        for _ in range(20):
            xg.area(shapes, errors="ignore")
            with pytest.raises(xg.GeometryError):
                xg.centroid(shapes)
            with pytest.raises(xg.GeometryError):
                xg.from_wkt(["POINT (1 2)", "POINT (1"] * 100)
            xg.to_wkt(xg.intersection(shapes, square, errors="ignore"), errors="ignore")
            xg.from_wkb(xg.to_wkb(shapes[::2]))
    churn()  # warm the caches and the interpreter's free lists
    before = _allocated()
    churn()
    after = _allocated()
    assert after - before < 256 * 1024, (before, after)
