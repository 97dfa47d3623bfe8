"""Dask: area and intersects over 100,000 shapes on a two-worker LocalCluster equal the serial
results, and the batch example runs end to end."""
import os
import subprocess
import sys

import numpy as np
import pytest

import xggeokit as xg
from conftest import SANITIZED

distributed = pytest.importorskip("distributed")
import xggeokit.dask as xgd  # noqa: E402

EXAMPLE = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "dask_batch.py")


def quads(count, seed):
    """count random quadrilaterals (some crossing themselves) as OGC WKT."""
    rng = np.random.default_rng(seed)
    corners = rng.uniform(0, 100, (count, 1, 2)) + rng.uniform(-3, 3, (count, 4, 2))
    return ["POLYGON ((%s, %r %r))" % (", ".join("%r %r" % (x, y) for x, y in c), c[0, 0], c[0, 1])
            for c in corners]


@pytest.fixture(scope="module")
def client():
    # Under the sanitizers the workers run in this process: spawning more instrumented
    # interpreters would only slow the run down.
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=not SANITIZED,
                                       dashboard_address=None)
    with distributed.Client(cluster) as c:
        yield c
    cluster.close()


def test_area_and_intersects_equal_the_serial_results(client):
    shapes = xg.from_wkt(quads(100_000, 5))
    query = xg.from_wkt("POLYGON ((20 20, 80 20, 80 80, 20 80, 20 20))")
    arr = xgd.from_shapes(shapes, chunks=25_000)
    area = xgd.map_array(xg.area, arr).compute()
    hits = xgd.map_array(xg.intersects, arr, query).compute()
    assert area.dtype == float and hits.dtype == bool
    np.testing.assert_array_equal(area, xg.area(shapes))
    np.testing.assert_array_equal(hits, xg.intersects(shapes, query))
    assert 0 < hits.sum() < len(shapes)
    back = xgd.map_array(xg.move, arr, 0.0, 0.0).compute()  # shapes travel back pickled as bytes
    assert back[12345] == shapes[12345]


def test_bags_read_wkt_and_geojson_files(client, tmp_path):
    texts = quads(2000, 6)
    shapes = xg.from_wkt(texts)
    wkt = tmp_path / "shapes.wkt"
    wkt.write_text("\n".join(texts) + "\n")
    geojson = tmp_path / "shapes.geojson"
    geojson.write_text("\n".join(xg.to_geojson(shapes)) + "\n")
    for bag in (xgd.read_wkt(str(wkt), blocksize=20_000), xgd.read_geojson(str(geojson), blocksize=40_000)):
        assert bag.npartitions > 1
        assert xgd.map_bag(xg.length, bag).compute() == xg.length(shapes).tolist()


def test_batch_example_runs_on_a_local_cluster(tmp_path):
    data = tmp_path / "shapes.wkt"
    env = dict(os.environ, PYTHONPATH=os.pathsep.join(p for p in sys.path if p))
    run = subprocess.run([sys.executable, EXAMPLE, "--generate", "20000", "--blocksize", "400KiB", str(data)],
                         capture_output=True, text=True, env=env, timeout=240)
    assert run.returncode == 0, run.stderr
    figures = dict(line.rsplit(None, 1) for line in run.stdout.splitlines() if "elapsed" not in line)
    assert figures["shapes"] == "20000" and int(figures["partitions"]) > 1
    assert 0 < int(figures["valid"]) < 20000 and 0 < int(figures["intersecting query"]) < 20000
