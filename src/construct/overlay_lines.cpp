// overlay_lines.cpp - the line kernels of the overlay operations.
//
// A line operand is split at its meetings with the other operand (found by the relation layer's
// segment pairing and segment meeting test, within the tolerance): a crossing cuts both at the
// meeting point, a collinear overlap cuts each line where the other's segment ends inside it, and
// a meeting within the tolerance of a vertex cuts at that vertex.  Each piece is then classed by
// the midpoint of its first segment of non-zero length (on the other line or not; inside or on
// the polygon or not), and the kept pieces that follow each other along a line are joined again.
#include <algorithm>
#include <memory>
#include <vector>

#include "construct/overlay_kernels.h"
#include "core/construct.h"
#include "relate/planar.h"
#include "relate/point_runs.h"
#include "relate/ring_index.h"
#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"

namespace xg {
namespace {

using Points = std::vector<_xgWKB_POINT>;

// A place where a run is cut: vertex `seg` (param 0), or inside segment `seg` at param.
struct Cut {
  uint32_t seg;
  double param;
  _xgWKB_POINT at;
};

struct Piece {
  uint32_t run;
  Points pts;
  bool cut_end = false;  // the last point was put in by a cut (not a vertex of the run)
  bool keep = false;
};

class CutRun {
 public:
  explicit CutRun(const Span& s) : span_(s) {}

  const Span& span() const { return span_; }

  void cut_at(uint32_t seg, const _xgWKB_POINT& at, double t) {
    const _xgWKB_POINT& a = span_.p[seg];
    const _xgWKB_POINT& b = span_.p[seg + 1];
    if (wkb_point_equal_tol(at, a, t)) return vertex(seg);
    if (wkb_point_equal_tol(at, b, t)) return vertex(seg + 1);
    const double len2 = dist2(a, b);
    const double u = len2 > 0 ? dot3(a, b, at) / len2 : 0;
    if (u > 0 && u < 1) cuts_.push_back(Cut{seg, u, at});
  }

  // Cuts segment seg where p lies strictly inside it (a collinear neighbour's end).
  void cut_inside(uint32_t seg, const _xgWKB_POINT& p, double t) {
    const _xgWKB_POINT& a = span_.p[seg];
    const _xgWKB_POINT& b = span_.p[seg + 1];
    const double len2 = dist2(a, b);
    if (len2 == 0) return;
    const double u = dot3(a, b, p) / len2;
    if (u > 0 && u < 1) cut_at(seg, lerp(a, b, u), t);
  }

  // The run's pieces in order along it (pieces of fewer than two points are dropped).
  void pieces(uint32_t run, std::vector<Piece>& out) {
    if (span_.n < 2) return;
    std::sort(cuts_.begin(), cuts_.end(), [](const Cut& l, const Cut& r) {
      return l.seg != r.seg ? l.seg < r.seg : l.param < r.param;
    });
    Points cur{span_.p[0]};
    std::size_t c = 0;
    for (uint32_t i = 0; i + 1 < span_.n; ++i) {
      for (; c < cuts_.size() && cuts_[c].seg == i; ++c) {
        const bool inside = cuts_[c].param != 0;
        if (inside) cur.push_back(cuts_[c].at);
        flush(run, cur, inside, out);
        cur.assign(1, cuts_[c].param == 0 ? span_.p[i] : cuts_[c].at);
      }
      cur.push_back(span_.p[i + 1]);
    }
    flush(run, cur, false, out);
  }

 private:
  void vertex(uint32_t k) {
    if (k > 0 && k + 1 < span_.n) cuts_.push_back(Cut{k, 0, span_.p[k]});
  }

  static void flush(uint32_t run, const Points& cur, bool cut_end, std::vector<Piece>& out) {
    // Two cuts at one place leave a piece of no length: nothing to keep.
    const auto moves = [&cur](const _xgWKB_POINT& q) { return q.x != cur[0].x || q.y != cur[0].y; };
    if (std::any_of(cur.begin() + 1, cur.end(), moves)) out.push_back(Piece{run, cur, cut_end, false});
  }

  Span span_;
  std::vector<Cut> cuts_;
};

// Where a piece is classed: the midpoint of its first segment of non-zero length (its first
// point when it has none).
_xgWKB_POINT probe(const Points& pts) {
  for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
    if (pts[i].x != pts[i + 1].x || pts[i].y != pts[i + 1].y) return lerp(pts[i], pts[i + 1], 0.5);
  }
  return pts[0];
}

// The runs of a line shape with an edge index on the large ones.
struct IndexedRuns {
  ShapeRuns runs;
  std::vector<std::unique_ptr<IndexedSpan>> spans;

  bool load(const byte* shape, bool close_rings, double t) {
    if (!runs.load(shape, close_rings)) return false;
    for (uint32_t i = 0; i < runs.run_count(); ++i) spans.push_back(std::make_unique<IndexedSpan>(runs.run(i), t));
    return true;
  }
  bool holds(const _xgWKB_POINT& p, double t) const {
    for (const auto& s : spans)
      if (locate_on_run(p, s->span(), t) != 0) return true;
    return false;
  }
};

// Kept pieces joined where one ends and the next of the same run begins.
void join_kept(const std::vector<Piece>& pieces, std::vector<Points>& lines) {
  bool open = false;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const Piece& p = pieces[i];
    if (!p.keep) {
      open = false;
      continue;
    }
    if (open && pieces[i - 1].run == p.run) {
      if (pieces[i - 1].cut_end) lines.back().pop_back();  // the joint was no vertex of the line
      lines.back().insert(lines.back().end(), p.pts.begin() + 1, p.pts.end());
    } else {
      lines.push_back(p.pts);
    }
    open = true;
  }
}


std::vector<CutRun> cut_runs(const ShapeRuns& runs) {
  std::vector<CutRun> out;
  out.reserve(runs.run_count());
  for (uint32_t i = 0; i < runs.run_count(); ++i) out.emplace_back(runs.run(i));
  return out;
}

// Cuts a's runs (and b's, when cut_b) at their meetings; true when the two meet at all.
bool cut_at_meetings(std::vector<CutRun>& a, std::vector<CutRun>& b, bool cut_b, double t) {
  bool met = false;
  for (CutRun& ra : a) {
    for (CutRun& rb : b) {
      const Span& sa = ra.span();
      const Span& sb = rb.span();
      any_segment_pair(sa, sb, t, [&](uint32_t i, uint32_t j) {
        _xgWKB_POINT at{};
        switch (segment_meet(sa.p[i], sa.p[i + 1], sb.p[j], sb.p[j + 1], t, &at)) {
          case 1:
            met = true;
            ra.cut_at(i, at, t);
            if (cut_b) rb.cut_at(j, at, t);
            break;
          case 2:
            met = true;
            ra.cut_inside(i, sb.p[j], t);
            ra.cut_inside(i, sb.p[j + 1], t);
            if (cut_b) {
              rb.cut_inside(j, sa.p[i], t);
              rb.cut_inside(j, sa.p[i + 1], t);
            }
            break;
          default:
            break;
        }
        return false;
      });
    }
  }
  return met;
}

std::vector<Piece> all_pieces(std::vector<CutRun>& runs) {
  std::vector<Piece> pieces;
  for (uint32_t r = 0; r < runs.size(); ++r) runs[r].pieces(r, pieces);
  return pieces;
}

}  // namespace

int32_t write_multiline(const std::vector<std::vector<_xgWKB_POINT>>& lines, byte** out) {
  if (lines.empty()) return nil_into(out);
  std::size_t size = kCountedHeaderSize;
  for (const std::vector<_xgWKB_POINT>& l : lines) size += kCountedHeaderSize + kCoordSize * l.size();
  byte* blob = blob_alloc(size);
  if (blob == nullptr) return XGWKB_E_FAILED;
  BlobWriter w(blob);
  w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(lines.size()));
  for (const std::vector<_xgWKB_POINT>& l : lines) w.header(XGWKB_TYPE_LINESTRING).u32(static_cast<uint32_t>(l.size())).points(l.data(), l.size());
  *out = blob;
  return XGWKB_OK;
}

int32_t line_line_kernel(gpc_op op, const byte* a, const byte* b, double t, byte** out) {
  IndexedRuns la, lb;
  if (!la.load(a, false, t) || !lb.load(b, false, t)) return XGWKB_E_INVALID_SHAPE;
  std::vector<CutRun> ca = cut_runs(la.runs);
  std::vector<CutRun> cb = cut_runs(lb.runs);
  const bool met = cut_at_meetings(ca, cb, true, t);
  if (op == GPC_INT && !met) {
    *out = nullptr;
    return XGWKB_OK;
  }
  std::vector<Piece> pa = all_pieces(ca);
  for (Piece& p : pa) {
    const bool on_b = lb.holds(probe(p.pts), t);
    p.keep = op == GPC_UNION || (op == GPC_INT ? on_b : !on_b);
  }
  std::vector<Points> lines;
  join_kept(pa, lines);
  if (op == GPC_UNION || op == GPC_XOR) {
    std::vector<Piece> pb = all_pieces(cb);
    for (Piece& p : pb) p.keep = !la.holds(probe(p.pts), t);
    join_kept(pb, lines);
  }
  return write_multiline(lines, out);
}

int32_t line_polygon_kernel(const byte* line, const byte* polygon, bool keep_inside, double t, byte** out) {
  IndexedRuns l;
  ShapeRuns rings;
  if (!l.load(line, false, t) || !rings.load(polygon, true)) return XGWKB_E_INVALID_SHAPE;
  std::vector<std::unique_ptr<IndexedPolygon>> parts;
  for (uint32_t i = 0; i < rings.part_count(); ++i) {
    if (rings.part(i).runs > 0) parts.push_back(std::make_unique<IndexedPolygon>(rings.polygon(i), t));
  }
  // The boundary lines: every ring of every member.
  std::vector<CutRun> cl = cut_runs(l.runs);
  std::vector<CutRun> boundary = cut_runs(rings);
  cut_at_meetings(cl, boundary, false, t);
  std::vector<Piece> pieces = all_pieces(cl);
  for (Piece& p : pieces) {
    const _xgWKB_POINT q = probe(p.pts);
    bool inside = false;
    for (const auto& part : parts) {
      if (!point_outside_polygon(q, part->spans(), t)) {
        inside = true;
        break;
      }
    }
    p.keep = inside == keep_inside;
  }
  std::vector<Points> lines;
  join_kept(pieces, lines);
  return write_multiline(lines, out);
}

}  // namespace xg
