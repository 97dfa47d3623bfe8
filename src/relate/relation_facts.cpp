// relation_facts.cpp - locating points on lineal and areal shapes, and the contact walk that
// finds which parts of two shapes meet.
#include "relate/relation_facts.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "relate/planar.h"
#include "relate/segment_pairs.h"

namespace xg {

// ---- operands ----------------------------------------------------------------------------

bool RelateOperand::load(const byte* shape, double t, bool indexed) {
  const uint32_t type = shape_type(shape);
  if (type == XGWKB_TYPE_LINESTRING || type == XGWKB_TYPE_MULTILINESTRING) {
    dim_ = 1;
  } else if (type == XGWKB_TYPE_POLYGON || type == XGWKB_TYPE_MULTIPOLYGON) {
    dim_ = 2;
  } else {
    return false;
  }
  if (!runs_.load(shape, dim_ == 2, true)) return false;
  ends_.clear();
  left_.clear();
  indexes_.clear();
  if (indexed) {
    bool any = false;
    for (uint32_t r = 0; r < runs_.run_count(); ++r) any = any || runs_.run(r).n > kPlainRingPoints;
    if (any) {
      indexes_ = std::vector<RingIndex>(runs_.run_count());
      for (uint32_t r = 0; r < runs_.run_count(); ++r) indexes_[r].prepare(runs_.run(r), t);
    }
  }

  if (dim_ == 1) {
    // End points of open members; a point where an even number of ends meet is interior.
    SmallVec<_xgWKB_POINT, 8> all;
    for (uint32_t r = 0; r < runs_.run_count(); ++r) {
      const Span& run = runs_.run(r);
      if (run.n == 0) continue;
      const bool closed = run.n >= 2 && wkb_point_equal_tol(run.p[0], run.p[run.n - 1], t);
      if (closed) continue;
      all.push_back(run.p[0]);
      all.push_back(run.p[run.n - 1]);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
      std::size_t same = 0;
      for (const _xgWKB_POINT& q : all) same += wkb_point_equal_tol(all[i], q, t);
      if (same % 2 == 0) continue;
      bool listed = false;
      for (const _xgWKB_POINT& q : ends_) listed = listed || wkb_point_equal_tol(all[i], q, t);
      if (!listed) ends_.push_back(all[i]);
    }
  } else {
    // The interior lies left of an outer ring running counter-clockwise and of a hole running
    // clockwise.
    for (uint32_t part = 0; part < runs_.part_count(); ++part) {
      const ShapeRuns::Part& pr = runs_.part(part);
      for (uint32_t k = 0; k < pr.runs; ++k) {
        const Span& ring = runs_.run(pr.first_run + k);
        const bool ccw = twice_area(ring.p, ring.n) > 0;
        left_.push_back(ccw != (k > 0) ? 1 : 0);
      }
    }
  }
  return true;
}

Loc RelateOperand::locate(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  return dim_ == 1 ? locate_lineal(p, t, hit) : locate_areal(p, t, hit);
}

Loc RelateOperand::locate_on_shape(const _xgWKB_POINT& p, double t) const {
  if (dim_ == 2) return kOn;
  for (const _xgWKB_POINT& q : ends_) {
    if (wkb_point_equal_tol(p, q, t)) return kOn;
  }
  return kIn;
}

const RingIndex* RelateOperand::index_for(uint32_t r, const _xgWKB_POINT& p, double t) const {
  // The index offers the edges whose y-range grown by at least t holds p.y: every edge within t
  // of p, for t >= 0.  A negative t is left to the plain loops.
  if (indexes_.empty() || !(t >= 0) || !indexable(p) || !indexes_[r].ready(t)) return nullptr;
  return &indexes_[r];
}

Loc RelateOperand::locate_lineal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  for (uint32_t r = 0; r < runs_.run_count(); ++r) {
    const Span& run = runs_.run(r);
    if (run.n == 0 || outside_box(p, run.box, t)) continue;
    if (const RingIndex* index = index_for(r, p, t)) {
      // The plain loop below answers with the first segment near p: the lowest-numbered one.
      uint32_t best = run.n;
      index->edges_at(p.y, [&](uint32_t j) {
        if (j < best && near_segment(p, run.p[j], run.p[j + 1], t)) best = j;
        return false;
      });
      if (best == run.n) continue;
      if (hit) *hit = EdgeHit{run.p[best], run.p[best + 1], false};
      return locate_on_shape(p, t);
    }
    const uint32_t segments = run.n == 1 ? 1 : run.n - 1;  // a lone point: a segment of length 0
    for (uint32_t i = 0; i < segments; ++i) {
      const _xgWKB_POINT& a = run.p[i];
      const _xgWKB_POINT& b = run.p[run.n == 1 ? 0 : i + 1];
      if (near_segment(p, a, b, t)) {
        if (hit) *hit = EdgeHit{a, b, false};
        return locate_on_shape(p, t);
      }
    }
  }
  return kOut;
}

namespace {

// Edge (a, b) holds p within t (a box test first: cheap, and it keeps the answers of negative t).
bool near_edge(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b, double t) {
  const bool near_box = p.y >= std::min(a.y, b.y) - t && p.y <= std::max(a.y, b.y) + t &&
                        p.x >= std::min(a.x, b.x) - t && p.x <= std::max(a.x, b.x) + t;
  return near_box && near_segment(p, a, b, t);
}

// Edge (a, b) crosses the ray from p to the right (half-open in y: a vertex counts once).
bool crosses_right(const _xgWKB_POINT& p, const _xgWKB_POINT& a, const _xgWKB_POINT& b) {
  return (a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y);
}

}  // namespace

Loc RelateOperand::locate_areal(const _xgWKB_POINT& p, double t, EdgeHit* hit) const {
  for (uint32_t part = 0; part < runs_.part_count(); ++part) {
    const ShapeRuns::Part& pr = runs_.part(part);
    if (pr.runs == 0 || outside_box(p, runs_.run(pr.first_run).box, t)) continue;
    bool inside = false;
    for (uint32_t k = 0; k < pr.runs; ++k) {
      const uint32_t r = pr.first_run + k;
      const Span& ring = runs_.run(r);
      if (outside_box(p, ring.box, t)) continue;  // neither on it nor inside it
      bool odd = false;
      if (const RingIndex* index = index_for(r, p, t)) {
        // Every edge near p or crossing its horizontal is offered.  The plain loop below stops at
        // the first edge near p (the lowest-numbered one); the parity does not depend on order.
        // Edges wholly beyond reach of p on one side are passed over, the parity mended as in
        // indexed_ring_relation (ring_index.cpp).
        uint32_t best = ring.n;
        bool crossings = false;
        bool skipped_right = false;
        index->edges_at_side(p.y, p.x, index->reach_for(p.x), &skipped_right, [&](uint32_t j) {
          const _xgWKB_POINT& a = ring.p[j];
          const _xgWKB_POINT& b = ring.p[j + 1];
          if (j < best && near_edge(p, a, b, t)) best = j;
          if (crosses_right(p, a, b)) odd = !odd;
          if ((a.y > p.y) != (b.y > p.y)) crossings = !crossings;
          return false;
        });
        if (skipped_right) {
          const bool all = (ring.p[0].y > p.y) != (ring.p[ring.n - 1].y > p.y);
          odd = all != (crossings != odd);
        }
        if (best < ring.n) {
          if (hit) *hit = EdgeHit{ring.p[best], ring.p[best + 1], interior_left(r)};
          return kOn;
        }
      } else {
        for (uint32_t i = 1; i < ring.n; ++i) {
          const _xgWKB_POINT& a = ring.p[i - 1];
          const _xgWKB_POINT& b = ring.p[i];
          if (near_edge(p, a, b, t)) {
            if (hit) *hit = EdgeHit{a, b, interior_left(r)};
            return kOn;
          }
          if (crosses_right(p, a, b)) odd = !odd;
        }
      }
      if (k == 0) {
        if (!odd) break;  // outside this polygon's outer ring, so off its holes as well
        inside = true;
      } else if (odd) {
        inside = false;  // in a hole
        break;
      }
    }
    if (inside) return kIn;
  }
  return kOut;
}

// ---- the contact walk --------------------------------------------------------------------

namespace {

// A place where the second shape comes within t of segment seg of the first: at parameter u
// along the segment; on_second is the matching point of the second shape.
struct Contact {
  uint32_t seg;
  double u;
  _xgWKB_POINT on_second;
};

class ContactWalk {
 public:
  ContactWalk(const RelateOperand& x, const RelateOperand& y, double t, bool transposed,
              FactQuery q, FactBits* facts)
      : x_(x), y_(y), t_(t), transposed_(transposed), q_(q), facts_(facts) {}

  // Walks x's segments against y; returns true once the query is decided.
  bool run() {
    if (x_.dim() == 1) {
      for (const _xgWKB_POINT& e : x_.boundary_points()) {
        if (note(kOn, y_.locate(e, t_, nullptr))) return true;
      }
    }
    if (collect_contacts()) return true;
    return walk();
  }

 private:
  bool decided() const {
    return (*facts_ & q_.stop_any) != 0 ||
           (q_.stop_all != 0 && (*facts_ & q_.stop_all) == q_.stop_all);
  }

  bool note(Loc lx, Loc ly) {
    *facts_ |= transposed_ ? fact(ly, lx) : fact(lx, ly);
    return decided();
  }

  // Gathers the contacts, noting where each lies on both shapes as it is found (the walk notes
  // the same again in order); true, and the gathering stops, once that decides the query.
  bool collect_contacts() {
    const ShapeRuns& xs = x_.runs();
    const ShapeRuns& ys = y_.runs();
    const _xgWKB_POINT* pts = xs.points();
    std::size_t noted = 0;
    auto settled = [&]() {
      for (; noted < contacts_.size(); ++noted) {
        const Contact& c = contacts_[noted];
        const _xgWKB_POINT& p = pts[c.seg];
        const _xgWKB_POINT& q = pts[c.seg + 1];
        const _xgWKB_POINT at = c.u == 0 ? p : (c.u == 1 ? q : lerp(p, q, c.u));
        if (note(x_.locate_on_shape(at, t_), y_.locate_on_shape(c.on_second, t_))) return true;
      }
      return false;
    };
    for (uint32_t ry = 0; ry < ys.run_count(); ++ry) {
      const Span& b = ys.run(ry);
      if (b.n != 1) continue;  // a lone point of a degenerate member
      for (uint32_t rx = 0; rx < xs.run_count(); ++rx) {
        const Span& a = xs.run(rx);
        const uint32_t base = xs.run_offset(rx);
        for (uint32_t i = 0; i + 1 < a.n; ++i) {
          add_point_contact(base + i, a.p[i], a.p[i + 1], b.p[0], contacts_.size());
        }
        if (settled()) return true;
      }
    }
    const bool done = any_run_segment_pair(xs, ys, t_, [&](uint32_t rx, uint32_t i, uint32_t ry, uint32_t j) {
      const Span& a = xs.run(rx);
      const Span& b = ys.run(ry);
      add_contacts(xs.run_offset(rx) + i, a.p[i], a.p[i + 1], b.p[j], b.p[j + 1]);
      return settled();
    });
    if (done) return true;
    std::sort(contacts_.begin(), contacts_.end(), [](const Contact& l, const Contact& r) {
      return l.seg != r.seg ? l.seg < r.seg : l.u < r.u;
    });
    return false;
  }

  // Adds c unless one of the contacts from `from` on is the very same (the walk would pass over
  // it without effect: a stretch of length 0 and facts already noted).  A segment meeting its
  // twin or a neighbour finds each shared end twice, once from either segment.
  void push_contact(const Contact& c, std::size_t from) {
    for (std::size_t i = from; i < contacts_.size(); ++i) {
      const Contact& o = contacts_[i];
      if (o.seg == c.seg && std::memcmp(&o.u, &c.u, sizeof c.u) == 0 &&
          std::memcmp(&o.on_second, &c.on_second, sizeof c.on_second) == 0) {
        return;
      }
    }
    contacts_.push_back(c);
  }

  void add_point_contact(uint32_t seg, const _xgWKB_POINT& p, const _xgWKB_POINT& q,
                         const _xgWKB_POINT& c, std::size_t from) {
    if (near_segment(c, p, q, t_)) push_contact(Contact{seg, project(c, p, q), c}, from);
  }

  // Everything segment (p, q) of x and segment (c, d) of y have within t of each other: ends of
  // either near the other, and a crossing of their interiors.
  void add_contacts(uint32_t seg, const _xgWKB_POINT& p, const _xgWKB_POINT& q,
                    const _xgWKB_POINT& c, const _xgWKB_POINT& d) {
    const std::size_t from = contacts_.size();
    add_point_contact(seg, p, q, c, from);
    add_point_contact(seg, p, q, d, from);
    if (near_segment(p, c, d, t_)) push_contact(Contact{seg, 0, lerp(c, d, project(p, c, d))}, from);
    if (near_segment(q, c, d, t_)) push_contact(Contact{seg, 1, lerp(c, d, project(q, c, d))}, from);
    const double s1 = cross3(p, q, c);
    const double s2 = cross3(p, q, d);
    const double s3 = cross3(c, d, p);
    const double s4 = cross3(c, d, q);
    if (((s1 > 0 && s2 < 0) || (s1 < 0 && s2 > 0)) && ((s3 > 0 && s4 < 0) || (s3 < 0 && s4 > 0))) {
      const double u = s3 / (s3 - s4);
      push_contact(Contact{seg, u, lerp(p, q, u)}, from);
    }
  }

  // How stretch (a, b), found within t of segment hit, runs along it: 1 in its direction, -1
  // against it, 0 not along it.  Running along takes a direction within 60 degrees of the
  // segment's and an advance along it of more than the band around it is wide (2t); a shorter
  // stretch is a spot of contact (a crossing or a touch within t), not a shared stretch.
  int runs_along(const EdgeHit& hit, const _xgWKB_POINT& a, const _xgWKB_POINT& b) const {
    const double ux = b.x - a.x, uy = b.y - a.y, vx = hit.b.x - hit.a.x, vy = hit.b.y - hit.a.y;
    const double along = ux * vx + uy * vy;
    const double vv = vx * vx + vy * vy;
    if (std::fabs(along) < 0.5 * std::sqrt((ux * ux + uy * uy) * vv)) return 0;
    if (!(std::fabs(along) > 2 * t_ * std::sqrt(vv))) return 0;
    return along > 0 ? 1 : -1;
  }

  // The stretch (a, b) of a boundary segment of areal x lies at ly in areal y.
  bool boundary_stretch(Loc ly, const EdgeHit& hit, const _xgWKB_POINT& a, const _xgWKB_POINT& b,
                        bool x_left) {
    if (note(kOn, ly)) return true;
    if (ly == kIn) return note(kIn, kIn) || note(kOut, kIn);  // x's two sides both inside y
    if (ly == kOut) return note(kIn, kOut);                   // x's interior side outside y
    if (y_.dim() != 2) return false;
    // A shared stretch: the interiors lie on the same side or on opposite sides of it.
    const int along = runs_along(hit, a, b);
    if (along == 0) return false;
    const bool y_left = along > 0 ? hit.interior_left : !hit.interior_left;
    if (y_left == x_left) return note(kIn, kIn);
    return note(kIn, kOut) || note(kOut, kIn);
  }

  // The stretch (a, b) of a segment of x lies at ly in y.
  bool stretch(Loc ly, const EdgeHit& hit, const _xgWKB_POINT& a, const _xgWKB_POINT& b, bool x_left) {
    if (x_.dim() == 2) return boundary_stretch(ly, hit, a, b, x_left);
    if (ly == kIn && y_.dim() == 1 && runs_along(hit, a, b) != 0) *facts_ |= kSharedStretch;
    return note(kIn, ly);
  }

  // A segment of x being walked, with the length below which a stretch carries no location.
  struct Segment {
    const _xgWKB_POINT& p;
    const _xgWKB_POINT& q;
    double len;
    double shortest;
    bool x_left;
  };

  // Locates stretch [from, to] of segment s by its midpoint and records it.  A location resting
  // on nearness to a segment of y holds only where the stretch stays within t of that segment
  // (a segment nearly parallel to it can come within t along one part and not along the rest):
  // the parts beyond that band are located on their own.  *loc, *hit and *known receive the
  // location of the stretch's last part when it may be carried on to the next stretch.
  bool locate_stretch(const Segment& s, double from, double to, Loc* loc, EdgeHit* hit, bool* known) {
    if ((to - from) * s.len <= s.shortest) return false;
    const double mid = 0.5 * (from + to);
    EdgeHit near{};
    const Loc here = y_.locate(lerp(s.p, s.q, mid), t_, &near);
    if (!y_.near_location(here)) {
      *loc = here;
      *hit = near;
      *known = true;
      return stretch(here, near, lerp(s.p, s.q, from), lerp(s.p, s.q, to), s.x_left);
    }
    *known = false;
    double lo = 0, hi = 0;
    if (!band_interval(s.p, s.q, near.a, near.b, t_, &lo, &hi) || !(lo <= mid && mid <= hi)) {
      lo = from;  // rounding put the midpoint beside the band: the stretch stays one piece
      hi = to;
    }
    lo = std::max(lo, from);
    hi = std::min(hi, to);
    // The parts beyond the band hold at most half the stretch each (the midpoint is in it).
    if (lo > from && locate_stretch(s, from, lo, loc, hit, known)) return true;
    *known = false;
    if ((hi - lo) * s.len > s.shortest &&
        stretch(here, near, lerp(s.p, s.q, lo), lerp(s.p, s.q, hi), s.x_left)) {
      return true;
    }
    return hi < to && locate_stretch(s, hi, to, loc, hit, known);
  }

  bool walk() {
    const ShapeRuns& xs = x_.runs();
    const _xgWKB_POINT* pts = xs.points();
    std::size_t ci = 0;
    for (uint32_t r = 0; r < xs.run_count(); ++r) {
      const Span& run = xs.run(r);
      const uint32_t base = xs.run_offset(r);
      const bool x_left = x_.dim() == 2 && x_.interior_left(r);
      bool known = false;  // loc / hit hold the location since the last cut
      Loc loc = kOut;
      EdgeHit hit{};
      for (uint32_t i = 0; i + 1 < run.n; ++i) {
        const uint32_t seg = base + i;
        const _xgWKB_POINT& p = pts[seg];
        const _xgWKB_POINT& q = pts[seg + 1];
        const double len = std::sqrt(dist2(p, q));
        // Stretches this short carry no location of their own (cuts closer than t are one).
        const double shortest =
            std::max(t_, 1e-13 * (len + std::fabs(p.x) + std::fabs(p.y)));
        const Segment s{p, q, len, shortest, x_left};
        double from = 0;
        auto finish_stretch = [&](double to) {
          if ((to - from) * len <= shortest) return false;
          if (known) return stretch(loc, hit, lerp(p, q, from), lerp(p, q, to), x_left);
          return locate_stretch(s, from, to, &loc, &hit, &known);
        };
        while (ci < contacts_.size() && contacts_[ci].seg == seg) {
          const Contact& c = contacts_[ci++];
          if (finish_stretch(c.u)) return true;
          const _xgWKB_POINT at = c.u == 0 ? p : (c.u == 1 ? q : lerp(p, q, c.u));
          if (note(x_.locate_on_shape(at, t_), y_.locate_on_shape(c.on_second, t_))) return true;
          known = false;
          from = std::max(from, c.u);
        }
        if (len > 0 && finish_stretch(1.0)) return true;
      }
    }
    return false;
  }

  const RelateOperand& x_;
  const RelateOperand& y_;
  const double t_;
  const bool transposed_;
  const FactQuery q_;
  FactBits* facts_;
  SmallVec<Contact, 32> contacts_;
};

}  // namespace

FactBits relate_facts(const RelateOperand& a, const RelateOperand& b, double t, FactQuery q) {
  FactBits facts = 0;
  if (ContactWalk(a, b, t, false, q, &facts).run()) return facts;
  // The walk over b is needed for two areal shapes (b's boundary inside a), and for two lineal
  // ones only when the query asks where b's interior leaves a.
  const FactBits first_exterior = fact(kOut, kIn) | fact(kOut, kOn) | fact(kOut, kOut);
  const bool second_walk =
      a.dim() == b.dim() && (a.dim() == 2 || ((q.stop_any | q.stop_all) & first_exterior) != 0);
  if (second_walk) ContactWalk(b, a, t, true, q, &facts).run();
  return facts;
}

}  // namespace xg
