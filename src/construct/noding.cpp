// noding.cpp - splitting the members of a multilinestring where they meet each other.
//
// The members' segments are paired by the relation layer's segment pairing (monotone chains,
// swept), so that only segments of different members whose boxes overlap within the tolerance
// are given to the segment intersection test.  Every meeting is computed once, for the pair, and
// the same point cuts both members, so the pieces of the two members share their end points
// exactly.  A stretch of repeated points is one segment for the pairing, and what meets it is
// recorded once for the whole stretch (vertex cuts as ranges), so n copies of a point cost a few
// records rather than one per copy.
#include "construct/noding.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "relate/segment_pairs.h"
#include "relate/segment_tests.h"

namespace xg {
namespace {

// A segment of a member as the pairing sees it.
struct Segment {
  uint32_t member;
  uint32_t index;  // segment i runs from vertex i to vertex i + 1
  // Segments index .. index + copies - 1 are this same segment of length 0 (a stretch of
  // repeated points): they meet everything alike, so they are met once, for all of them.
  uint32_t copies;
};

bool same_bits(const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Vertices first .. last - 1 of a member are cut at.  Cutting twice at a vertex is cutting
// once, so a run of copies met by a segment takes one record, not one per copy.
struct VertexCuts {
  uint32_t member;
  uint32_t first;
  uint32_t last;
};

// A cut inside segments index .. index + span - 1 of a member (more than one for a run of
// copies, all cut alike), at param along each, made `times` times over.
struct Cut {
  uint32_t member;
  uint32_t index;
  uint32_t span;
  uint32_t times;
  double param;
  _xgWKB_POINT at;
};

// Along the member: by segment, then by param.  Cuts at one param but at different points
// (rounding makes them) go by their coordinates, so that the pieces do not depend on the order
// in which the meetings were found.
bool cut_order(const Cut& l, const Cut& r) {
  if (l.member != r.member) return l.member < r.member;
  if (l.index != r.index) return l.index < r.index;
  if (l.param != r.param) return l.param < r.param;
  if (l.at.x != r.at.x) return l.at.x < r.at.x;
  return l.at.y < r.at.y;
}

bool vertex_cut_order(const VertexCuts& l, const VertexCuts& r) {
  return l.member != r.member ? l.member < r.member : l.first < r.first;
}

class Noder {
 public:
  Noder(const byte* multiline, double t) : t_(t) {
    for_each_member(multiline, [&](const byte* member, uint32_t) {
      runs_.push_back(line_run(member));
    });
  }

  int32_t run(byte** out) {
    collect_segments();
    find_cuts();
    std::stable_sort(cuts_.begin(), cuts_.end(), cut_order);
    std::sort(vertex_cuts_.begin(), vertex_cuts_.end(), vertex_cut_order);
    return write(out);
  }

 private:
  // The segments of each member in order, a stretch of copies of one point as one segment,
  // and each member's segments as a run of aligned points for the pairing: segment k of the run
  // is segments_[first_[m] + k] (a stretch of copies stands as one segment of length 0).
  void collect_segments() {
    std::size_t total = 0;
    for (const PointRun& r : runs_) total += r.size() > 1 ? r.size() - 1 : 0;
    segments_.reserve(total);
    points_.reserve(total + runs_.size());
    first_.reserve(runs_.size());
    std::vector<uint32_t> starts;  // of each member's points in points_
    starts.reserve(runs_.size() + 1);
    for (uint32_t m = 0; m < runs_.size(); ++m) {
      const PointRun& r = runs_[m];
      const uint32_t n = r.size();
      first_.push_back(static_cast<uint32_t>(segments_.size()));
      starts.push_back(static_cast<uint32_t>(points_.size()));
      if (n < 2) continue;
      _xgWKB_POINT prev = r.point(0);
      for (uint32_t i = 0; i + 1 < n; ++i) {
        const _xgWKB_POINT next = r.point(i + 1);
        if (i > 0 && same_bits(prev, next) && segments_.size() > first_.back()) {
          Segment& last = segments_.back();
          if (last.index + last.copies == i && same_bits(r.point(last.index), prev) &&
              same_bits(r.point(last.index + 1), prev)) {
            ++last.copies;
            continue;
          }
        }
        segments_.push_back(Segment{m, i, 1});
        points_.push_back(prev);
        prev = next;
      }
      points_.push_back(r.point(n - 1));
    }
    starts.push_back(static_cast<uint32_t>(points_.size()));
    spans_.reserve(runs_.size());
    for (uint32_t m = 0; m < runs_.size(); ++m) {
      spans_.push_back(make_span(points_.data() + starts[m], starts[m + 1] - starts[m]));
    }
  }

  // Pairs of segments of different members whose boxes meet within t.  The segment whose box
  // starts further left is taken first (ties: the earlier member), as the meeting point is
  // computed in its frame.
  void find_cuts() {
    any_segment_pair_between(spans_.data(), static_cast<uint32_t>(spans_.size()), t_,
                             [&](uint32_t ma, uint32_t i, uint32_t mb, uint32_t j) {
                               const Span& a = spans_[ma];
                               const Span& b = spans_[mb];
                               const double left_a = std::min(a.p[i].x, a.p[i + 1].x);
                               const double left_b = std::min(b.p[j].x, b.p[j + 1].x);
                               const Segment& s = segments_[first_[ma] + i];
                               const Segment& o = segments_[first_[mb] + j];
                               if (left_b < left_a) {
                                 meet(o, s);
                               } else {
                                 meet(s, o);
                               }
                               return false;
                             });
  }

  // Every copy of s meets every copy of o: a cut of s is made once per copy of o (repeated
  // cuts at a vertex change nothing, but repeated cuts inside a segment do where t is 0).
  void meet(const Segment& s, const Segment& o) {
    const Ends se = ends(s);
    const Ends oe = ends(o);
    _xgWKB_POINT at{};
    switch (segment_meet(se.a, se.b, oe.a, oe.b, t_, &at)) {
      case 1:
        cut(s, se, at, o.copies);
        cut(o, oe, at, s.copies);
        return;
      case 2:
        // Running along each other: each is cut where the other one ends inside it.
        cut_inside(s, se, oe.a, o.copies);
        cut_inside(s, se, oe.b, o.copies);
        cut_inside(o, oe, se.a, s.copies);
        cut_inside(o, oe, se.b, s.copies);
        return;
      default:
        return;
    }
  }

  // The end points of segment s (for a stretch of copies, its first one).
  struct Ends {
    _xgWKB_POINT a;
    _xgWKB_POINT b;
  };
  Ends ends(const Segment& s) const {
    const PointRun& r = runs_[s.member];
    return Ends{r.point(s.index), r.point(s.index + 1)};
  }

  // Position of p along segment e, 0 at a and 1 at b.
  static double param_of(const Ends& e, const _xgWKB_POINT& p) {
    const double dx = e.b.x - e.a.x;
    const double dy = e.b.y - e.a.y;
    const double len2 = dx * dx + dy * dy;
    if (len2 == 0) return 0;
    return ((p.x - e.a.x) * dx + (p.y - e.a.y) * dy) / len2;
  }

  // A cut of s at p (times over) when p lies strictly between s's end points.
  void cut_inside(const Segment& s, const Ends& e, const _xgWKB_POINT& p, uint32_t times) {
    const double param = param_of(e, p);
    if (param > 0 && param < 1) cut(s, e, p, times);
  }

  void cut(const Segment& s, const Ends& e, const _xgWKB_POINT& at, uint32_t times) {
    const uint32_t last = runs_[s.member].size() - 1;
    // A meeting at a vertex cuts there; a member's own end points cut nothing.  Each copy of a
    // repeated segment is cut as it would be on its own: copy k at vertex k (at a) or k + 1
    // (at b).
    if (wkb_point_equal_tol(at, e.a, t_)) {
      cut_vertices(s.member, std::max<uint32_t>(s.index, 1), s.index + s.copies);
      return;
    }
    if (wkb_point_equal_tol(at, e.b, t_)) {
      cut_vertices(s.member, s.index + 1, std::min(s.index + s.copies + 1, last));
      return;
    }
    cuts_.push_back({s.member, s.index, s.copies, times, param_of(e, at), at});
  }

  void cut_vertices(uint32_t member, uint32_t first, uint32_t last) {
    if (first < last) vertex_cuts_.push_back({member, first, last});
  }

  // Walks member m's pieces: begin(first point), point(p), end() for each piece.  The cursors
  // move through the sorted cuts member by member.
  template <class Sink>
  void walk_member(uint32_t m, std::size_t& next_vertex, std::size_t& next_cut, Sink& sink) const {
    while (next_vertex < vertex_cuts_.size() && vertex_cuts_[next_vertex].member < m) ++next_vertex;
    while (next_cut < cuts_.size() && cuts_[next_cut].member < m) ++next_cut;
    const PointRun& r = runs_[m];
    const uint32_t n = r.size();
    if (n < 2) {
      sink.begin();
      for (uint32_t i = 0; i < n; ++i) sink.point(r.point(i));
      sink.end();
      return;
    }
    uint32_t cut_until = 0;  // vertices below it are cut at
    _xgWKB_POINT last_written = r.point(0);
    sink.begin();
    sink.point(last_written);
    for (uint32_t i = 0; i + 1 < n; ++i) {
      for (; next_vertex < vertex_cuts_.size() && vertex_cuts_[next_vertex].member == m &&
             vertex_cuts_[next_vertex].first <= i;
           ++next_vertex) {
        cut_until = std::max(cut_until, vertex_cuts_[next_vertex].last);
      }
      // At vertex i, already written as the last point of the current piece.
      if (i < cut_until && sink.count() >= 2) {
        sink.end();
        sink.begin();
        sink.point(last_written);
      }
      // The cuts inside segment i are those of the one stretch of segments holding it.
      while (next_cut < cuts_.size() && cuts_[next_cut].member == m &&
             cuts_[next_cut].index + cuts_[next_cut].span <= i) {
        ++next_cut;
      }
      for (std::size_t c = next_cut; c < cuts_.size() && cuts_[c].member == m &&
                                     cuts_[c].index == cuts_[next_cut].index &&
                                     cuts_[c].index <= i;
           ++c) {
        const _xgWKB_POINT at = cuts_[c].at;
        // Once a cut is made (or passed over) at a point that equals itself within t, its
        // repeats all fall within t of the piece's last point: one round does for all.
        const uint32_t times = wkb_point_equal_tol(at, at, t_) ? 1 : cuts_[c].times;
        for (uint32_t k = 0; k < times; ++k) {
          if (wkb_point_equal_tol(at, last_written, t_)) continue;  // met twice at one place
          sink.point(at);
          sink.end();
          sink.begin();
          sink.point(at);
          last_written = at;
        }
      }
      last_written = r.point(i + 1);
      sink.point(last_written);
    }
    sink.end();
  }

  // First pass: how many pieces and points.
  struct Counter {
    std::size_t pieces = 0;
    std::size_t points = 0;
    uint32_t current = 0;
    void begin() { current = 0; }
    void point(const _xgWKB_POINT&) { ++current; }
    uint32_t count() const { return current; }
    void end() {
      ++pieces;
      points += current;
    }
  };

  // Second pass: the pieces as linestring blobs, each count stored once its piece is done.
  struct Writer {
    BlobWriter& w;
    byte* count_at = nullptr;
    uint32_t current = 0;
    void begin() {
      current = 0;
      w.header(XGWKB_TYPE_LINESTRING);
      count_at = w.position();
      w.u32(0);
    }
    void point(const _xgWKB_POINT& p) {
      ++current;
      w.point(p);
    }
    uint32_t count() const { return current; }
    void end() { store_u32(count_at, current); }
  };

  template <class Sink>
  void walk(Sink& sink) const {
    std::size_t next_vertex = 0, next_cut = 0;
    for (uint32_t m = 0; m < runs_.size(); ++m) walk_member(m, next_vertex, next_cut, sink);
  }

  int32_t write(byte** out) {
    Counter counter;
    walk(counter);
    const std::size_t size = kCountedHeaderSize + counter.pieces * (kHeaderSize + kCountSize) +
                             counter.points * kCoordSize;
    byte* blob = blob_alloc(size);
    if (blob == nullptr) return XGWKB_E_FAILED;
    BlobWriter w(blob);
    w.header(XGWKB_TYPE_MULTILINESTRING).u32(static_cast<uint32_t>(counter.pieces));
    Writer writer{w};
    walk(writer);
    *out = blob;
    return XGWKB_OK;
  }

  double t_;
  std::vector<PointRun> runs_;
  std::vector<Segment> segments_;
  std::vector<_xgWKB_POINT> points_;  // each member's segments as aligned points
  std::vector<uint32_t> first_;       // of each member's segments in segments_
  std::vector<Span> spans_;
  std::vector<VertexCuts> vertex_cuts_;
  std::vector<Cut> cuts_;
};

}  // namespace

int32_t node_multiline(const byte* multiline, double t, byte** out) {
  return Noder(multiline, t).run(out);
}

}  // namespace xg
