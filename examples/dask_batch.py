#!/usr/bin/env python3
"""Batch job over a large file of shapes on a Dask cluster.

Reads a file of WKT (dialect or OGC) or newline-delimited GeoJSON in partitions, computes the
validity and area of every shape and its intersection with a query polygon, and prints a summary.

    python3 examples/dask_batch.py shapes.wkt                          # a LocalCluster here
    python3 examples/dask_batch.py --generate 1000000 shapes.wkt       # write a test file first
    python3 examples/dask_batch.py --scheduler tcp://host:8786 /shared/shapes.wkt   # a real cluster

With --scheduler the same code runs on every worker of an existing cluster; the file must then be
readable by the workers (a shared file system, or an s3:// / hdfs:// URL Dask understands).
"""
import argparse
import os
import time

import numpy as np

import xggeokit as xg
import xggeokit.dask as xgd

QUERY = "POLYGON ((20 20, 80 20, 80 80, 20 80, 20 20))"


def generate(path, count, seed=1):
    """count random quadrilaterals (some self-crossing, so some are invalid) as OGC WKT lines."""
    rng = np.random.default_rng(seed)
    centres = rng.uniform(0, 100, (count, 2))
    corners = centres[:, None, :] + rng.uniform(-3, 3, (count, 4, 2))
    with open(path, "w") as out:
        for ring in corners:
            pts = ", ".join("%r %r" % (x, y) for x, y in ring)
            out.write("POLYGON ((%s, %r %r))\n" % (pts, ring[0, 0], ring[0, 1]))


def partition_summary(partition, query):
    """The figures of one partition, computed on the worker that holds it."""
    shapes = np.empty(len(partition), dtype=object)
    shapes[:] = partition
    valid = xg.is_valid(shapes)
    area = xg.area(shapes, errors="ignore")          # nan where a shape has no area
    hits = xg.intersects(shapes, query)
    inside = xg.area(xg.intersection(shapes[hits], query, errors="ignore"), errors="ignore")
    return [{"shapes": len(shapes), "valid": int(valid.sum()), "total area": float(np.nansum(area)),
             "intersecting query": int(hits.sum()), "area inside query": float(np.nansum(inside))}]


def summarise(path, query, blocksize):
    read = xgd.read_geojson if path.endswith((".geojson", ".json", ".ndjson")) else xgd.read_wkt
    shapes = read(path, blocksize=blocksize)
    # Only the small per-partition summaries come back to this process.
    parts = shapes.map_partitions(partition_summary, query).compute()
    total = {key: sum(p[key] for p in parts) for key in parts[0]}
    total["partitions"] = shapes.npartitions
    return total


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("path", help="WKT lines, or GeoJSON lines when named *.geojson / *.ndjson")
    parser.add_argument("--generate", type=int, metavar="N", help="first write N random polygons to path")
    parser.add_argument("--query", default=QUERY, help="the query polygon (WKT)")
    parser.add_argument("--scheduler", help="address of an existing Dask scheduler (default: a LocalCluster)")
    parser.add_argument("--workers", type=int, default=2, help="LocalCluster workers (default 2)")
    parser.add_argument("--blocksize", default="16MiB", help="bytes of the file per partition")
    args = parser.parse_args()

    if args.generate:
        generate(args.path, args.generate)
    query = xg.from_wkt(args.query)

    from distributed import Client, LocalCluster
    started = time.perf_counter()
    if args.scheduler:
        client, cluster = Client(args.scheduler), None
    else:
        cluster = LocalCluster(n_workers=args.workers, threads_per_worker=1, dashboard_address=None)
        client = Client(cluster)
    try:
        summary = summarise(os.path.abspath(args.path) if "://" not in args.path else args.path, query,
                            args.blocksize)
    finally:
        client.close()
        if cluster is not None:
            cluster.close()
    for key, value in summary.items():
        print("%-20s %s" % (key, value))
    print("%-20s %.2f s" % ("elapsed", time.perf_counter() - started))


if __name__ == "__main__":
    main()
