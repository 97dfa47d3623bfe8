#!/bin/sh
# demo.sh - runs the xggeo command-line tool over the example geometries in data/, echoing each
# command and what it prints (results on stdout, failures with their status code and message).
#
#   examples/demo.sh [PATH-TO-XGGEO]
#
# Without an argument the tool is looked for in ./build/tools and in the build tree next to this
# directory.  The demo exits non-zero only when the tool is missing or a run ends abnormally; the
# failures that the example data provoke on purpose are part of the show.
set -u

here=$(cd "$(dirname "$0")" && pwd)
tool=${1:-}
if [ -z "$tool" ]; then
  for candidate in ./build/tools/xggeo "$here/../build/tools/xggeo"; do
    if [ -x "$candidate" ]; then tool=$candidate; break; fi
  done
fi
if [ -z "$tool" ] || [ ! -x "$tool" ]; then
  echo "demo.sh: xggeo not found; build it (cmake --build build --target xggeo) or pass its path" >&2
  exit 2
fi
tool=$(cd "$(dirname "$tool")" && pwd)/$(basename "$tool")
cd "$here" || exit 2

# The arguments as a shell command line, quoted where needed.
quoted() {
  line=""
  for arg in "$@"; do
    case $arg in
      '' | *[!A-Za-z0-9@._/=+-]*) line="$line '$arg'" ;;
      *) line="$line $arg" ;;
    esac
  done
  printf '%s' "$line"
}

status=0
finish() {
  echo "[exit $1]"
  echo
  if [ "$1" -gt 2 ]; then status=1; fi
}

run() {
  echo "\$ xggeo$(quoted "$@")"
  "$tool" "$@" 2>&1
  finish $?
}

# run_stdin FILE ARGS...: the same with FILE on standard input.
run_stdin() {
  input=$1
  shift
  echo "\$ xggeo$(quoted "$@") < $input"
  "$tool" "$@" < "$input" 2>&1
  finish $?
}

show() {
  echo "# $1"
}

show "The operations the tool knows today"
run --help

parcel="polygon ((0 0,0 10,10 10,10 0,0 0),(4 4,6 4,6 6,4 6,4 4))"
road="linestring (-5 5,15 5)"

show "The typical request: a parcel with a courtyard, measured, checked and tested against a road"
run wkt -a "$parcel"
run area -a "$parcel"
run length -a "$parcel"
run valid -a "$parcel"
run intersects -a "$road" -b "$parcel"
run crosses -a "$road" -b "$parcel"
run within -a "$road" -b "$parcel"

show "Each line of a file against the parcel; a vertex 0.00005 off its edge touches within 0.0001"
run intersects -a @data/lines.wkt -b "$parcel"
run touches 0.0001 -a "point (10.00005 3)" -b "$parcel"

show "Shapes derived from the parcel: moved, mirrored about x = y, its rings as lines, its centroid"
run move 100 0 -a "$parcel"
run mirror 0 0 1 1 -a "$parcel"
run asline -a "$parcel"
run centroid -a "$parcel"

show "A bow-tie is refused with the rule it breaks; a circle and a rectangle built from numbers"
run valid -a "polygon ((0 0,10 10,10 0,0 10,0 0))"
run circle 0 0 1 8
run rect 0 0 4 2

show "A polygon given on the command line, read and written back in the library's dialect"
run wkt -a "polygon ((0 0,10 0,10 10,0 10,0 0))"

show "Files hold one geometry per line; the empty texts read as the nil shape, and a one-point"
show "sequence keeps its parenthesis open, as the dialect has it"
run wkt -a @data/polygons.wkt
run wkt -a @data/points.wkt

show "Type codes, blob sizes and envelopes of each line"
run type -a @data/lines.wkt
run size -a @data/lines.wkt
run extent -a @data/polygons.wkt

show "Envelope of one part: for a multipolygon, part 1 is the second member"
run extent 1 -a "multipolygon (((0 0,4 0,4 4,0 0)),((10 10,14 10,14 14,10 10)))"

show "Parts and points; a linestring has no parts to count (-27)"
run parts -a @data/polygons.wkt
run points -a @data/polygons.wkt
run points 2 -a "polygon ((0 0,20 0,20 20,0 20,0 0),(5 5,5 10,10 10,10 5,5 5))"
run parts -a "linestring (0 0,3 4,6 0)"

show "Texts off the dialect: a blank after a comma makes no shape (the reader still answers 0),"
show "unknown and annotation keywords are refused with -27"
run wkt -a @data/mixed.wkt

show "What a text names, and the size estimate that only texts without blanks get"
run wkttype -a @data/mixed.wkt
run wktsize -a "multipoint (1,2)"
run wktsize -a "multipoint (1 2,3 4)"

show "Standard forms: OGC WKT, hex WKB and GeoJSON are recognised per line and written with --of"
run area -a "POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0))"
run convert --of geojson -a "01020000000200000000000000000000000000000000000000000000000000F03F000000000000F03F"
run convert --of wkt -a '{"type":"Feature","geometry":{"type":"MultiPoint","coordinates":[[1,2],[3,4]]}}'
run convert --of wkb -a "POINT Z (1 2 3"

# Overlay
show "Two overlapping squares: only in the first, only in the second, in both"
run overlay -a "polygon ((0 0,4 0,4 4,0 4,0 0))" -b "polygon ((2 2,6 2,6 6,2 6,2 2))"
show "A square with a square hole cut out, and lines split where they overlap"
run difference -a "polygon ((0 0,10 0,10 10,0 10,0 0))" -b "polygon ((2 2,4 2,4 4,2 4,2 2))"
run symdifference -a "linestring (0 0,10 0)" -b "linestring (5 0,15 0)"

# Buffer and clipping
show "Buffer: a square shrunk by 1; a point below the minimum radius 2 gets none"
run buffer -1 -a "polygon ((0 0,10 0,10 10,0 10,0 0))"
run buffer 1 2 -a "point (0 0)"
show "Clip to the box 0 0 10 10: a line leaving and re-entering comes back in two parts"
run clip 0 0 10 10 -a "linestring (1 1,5 15,9 1)"
show "A line cut by a square: the pieces inside (boundary included), then those outside"
run cutline -a "linestring (-5 5,15 5)" -b "polygon ((0 0,10 0,10 10,0 10,0 0))"

# Hull, distance and merge

show "Convex hull: counter-clockwise from the leftmost point; three points in a row give a line"
run hull -a "multipoint (3 1,0 0,4 4,1 3,2 2)"
run hull -a "multipoint (0 0,1 0,2 0)"

show "Distance: 0 inside a polygon, the way to the hole's ring inside a hole"
run distance -a "point (5 5.5)" -b "polygon ((0 0,10 0,10 10,0 10,0 0),(4 4,6 4,6 6,4 6,4 4))"
run distance -a "point (1 1)" -b "polygon ((0 0,10 0,10 10,0 10,0 0),(4 4,6 4,6 6,4 6,4 4))"

show "Merge: lines sharing an end become one line; polygons are collected"
run merge -a "linestring (1 0,0 0)" -b "linestring (1 0,2 0)"
run merge -a "polygon ((0 0,1 0,1 1,0 0))" -b "polygon ((5 5,6 5,6 6,5 5))"

# Linear referencing, snapping and envelope relations
show "The point three quarters along a line, and a point snapped onto a line's end"
run along 0.75 -a "linestring (0 0,1 0,3 0)"
run snap 0.05 0.01 0.1 7 -a "linestring (0 0,10 0,10 10)"
show "A line entering a box crosses it"
run envelope crosses 0 0 10 10 -a "linestring (-5 5,5 5)"

# Annotations
show "A text annotation built from its fields and read back, and its outline turned by its angle"
run text "ab" 1 2 0.5 0 1 10 3 5 5
run outline "ab" 1 1 0.5 0 0 4 2

# Coordinate codec
show "A polygon packed into the codec's stream (hex) with its size against the blob, and back"
run encode -t -a "polygon ((0 0,10 0,10 10,0 10,0 0))"
run decode -a 01132700001b000000050000000000a80f0000a80fe80f0000e80f

show "Geometries from standard input, timed over 1000 runs"
run_stdin data/lines.wkt wkt -t -r 1000

exit $status
