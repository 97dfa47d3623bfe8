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
show "capitals and annotation words are refused with -27"
run wkt -a @data/mixed.wkt

show "What a text names, and the size estimate that only texts without blanks get"
run wkttype -a @data/mixed.wkt
run wktsize -a "multipoint (1,2)"
run wktsize -a "multipoint (1 2,3 4)"

# Overlay
show "Two overlapping squares: only in the first, only in the second, in both"
run overlay -a "polygon ((0 0,4 0,4 4,0 4,0 0))" -b "polygon ((2 2,6 2,6 6,2 6,2 2))"
show "A square with a square hole cut out, and lines split where they overlap"
run difference -a "polygon ((0 0,10 0,10 10,0 10,0 0))" -b "polygon ((2 2,4 2,4 4,2 4,2 2))"
run symdifference -a "linestring (0 0,10 0)" -b "linestring (5 0,15 0)"

# Buffer and clipping

# Hull, distance and merge

# Linear referencing, snapping and envelope relations

# Annotations

# Coordinate codec

show "Geometries from standard input, timed over 1000 runs"
run_stdin data/lines.wkt wkt -t -r 1000

exit $status
