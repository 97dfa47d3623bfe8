#!/usr/bin/env python3
"""Benchmark of the Python package: area, intersects against one polygon and from_wkt over many
small polygons, four ways:

  C loop       the same library calls from a plain C loop (bench/python_c_baseline.c, compiled here)
  vectorised   one xggeokit call over the whole array (threads=1, then every thread count up to --threads)
  xggeokit     a Python loop of scalar xggeokit calls
  Shapely      a Python loop over Shapely geometries (the Debian package)

    PYTHONPATH=build-release/python python3 bench/bench_python.py [-n 1000000] [--build build-release]

Times are the best of --repeat runs; the machine's cores may be shared, so the numbers are noisy.
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time

import numpy as np

import xggeokit as xg

QUERY = "POLYGON ((20 20, 80 20, 80 80, 20 80, 20 20))"
HERE = os.path.dirname(os.path.abspath(__file__))


def texts_of(n, seed=1):
    rng = np.random.default_rng(seed)
    corners = rng.uniform(0, 100, (n, 1, 2)) + rng.uniform(-1, 1, (n, 4, 2))
    return ["POLYGON ((%s, %r %r))" % (", ".join("%r %r" % (x, y) for x, y in c), c[0][0], c[0][1])
            for c in np.round(corners, 6).tolist()]


def best(fn, repeat):
    times = []
    for _ in range(repeat):
        t = time.perf_counter()
        fn()
        times.append(time.perf_counter() - t)
    return min(times)


def c_baseline(build, shapes, query, texts, workdir):
    exe = os.path.join(workdir, "python_c_baseline")
    lib = os.path.join(os.path.abspath(build))
    subprocess.run(["cc", "-O2", "-std=c99", "-D_POSIX_C_SOURCE=199309L", "-I", os.path.join(HERE, "..", "include"),
                    os.path.join(HERE, "python_c_baseline.c"), "-L", lib, "-Wl,-rpath," + lib, "-lxggeokit",
                    "-o", exe], check=True)
    paths = [os.path.join(workdir, name) for name in ("blobs", "query", "texts")]
    with open(paths[0], "wb") as f:
        for s in shapes:
            f.write(bytes(s))
    with open(paths[1], "wb") as f:
        f.write(bytes(query))
    with open(paths[2], "wb") as f:
        for t in texts:
            f.write(t.encode() + b"\0")
    out = subprocess.run([exe] + paths, check=True, capture_output=True, text=True).stdout
    return {k: float(v) for k, v in (line.split() for line in out.splitlines())}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-n", type=int, default=1_000_000, help="number of shapes (default 1,000,000)")
    parser.add_argument("--loop-n", type=int, default=200_000, help="shapes timed in the Python loops (scaled up)")
    parser.add_argument("--build", default="build-release", help="build tree with libxggeokit (for the C loop)")
    parser.add_argument("--threads", type=int, default=os.cpu_count(), help="largest thread count tried")
    parser.add_argument("--repeat", type=int, default=3)
    args = parser.parse_args()

    texts = texts_of(args.n)
    shapes = xg.from_wkt(texts)
    query = xg.from_wkt(QUERY)
    text_arr = np.array(texts, dtype=object)
    ops = {
        "area": lambda s, t: xg.area(s, threads=t),
        "intersects": lambda s, t: xg.intersects(s, query, threads=t),
        "from_wkt": lambda s, t: xg.from_wkt(text_arr, threads=t),
    }
    rows = {}
    for name, op in ops.items():
        rows[name] = {"vectorised": {t: best(lambda: op(shapes, t), args.repeat)
                                     for t in range(1, args.threads + 1)}}

    m = min(args.loop_n, args.n)
    scale = args.n / m
    sub, sub_texts = list(shapes[:m]), texts[:m]
    rows["area"]["xggeokit loop"] = best(lambda: [xg.area(s) for s in sub], 1) * scale
    rows["intersects"]["xggeokit loop"] = best(lambda: [xg.intersects(s, query) for s in sub], 1) * scale
    rows["from_wkt"]["xggeokit loop"] = best(lambda: [xg.from_wkt(t) for t in sub_texts], 1) * scale

    try:
        import shapely
        import shapely.wkt
        geoms = [shapely.wkt.loads(t) for t in sub_texts]
        squery = shapely.wkt.loads(QUERY)
        rows["area"]["Shapely loop"] = best(lambda: [g.area for g in geoms], 1) * scale
        rows["intersects"]["Shapely loop"] = best(lambda: [g.intersects(squery) for g in geoms], 1) * scale
        rows["from_wkt"]["Shapely loop"] = best(lambda: [shapely.wkt.loads(t) for t in sub_texts], 1) * scale
        shapely_version = shapely.__version__
    except ImportError:
        shapely_version = None

    with tempfile.TemporaryDirectory() as workdir:
        try:
            c = c_baseline(args.build, shapes, query, texts, workdir)
        except (OSError, subprocess.CalledProcessError) as e:
            print("(no C loop: %s)" % e, file=sys.stderr)
            c = {}

    print("%d shapes (Python loops timed over %d and scaled); best of %d; Shapely %s; %d cores\n"
          % (args.n, m, args.repeat, shapely_version, os.cpu_count()))
    print("| operation | C loop | vectorised (1 thread) | overhead vs C | xggeokit loop | Shapely loop"
          " | vectorised vs Shapely loop | " + " | ".join("%d threads: speed-up" % t for t in range(2, args.threads + 1)) + " |")
    print("|---" * (7 + args.threads - 1) + "|")
    for name, r in rows.items():
        one = r["vectorised"][1]
        cells = [name, "%.3f s" % c[name] if name in c else "-", "%.3f s" % one,
                 "%.2fx" % (one / c[name]) if name in c else "-", "%.2f s" % r["xggeokit loop"],
                 "%.2f s" % r["Shapely loop"] if "Shapely loop" in r else "-",
                 "%.0fx" % (r["Shapely loop"] / one) if "Shapely loop" in r else "-"]
        cells += ["%.2fx" % (one / r["vectorised"][t]) for t in range(2, args.threads + 1)]
        print("| " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
