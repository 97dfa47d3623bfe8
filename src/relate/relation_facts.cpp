// relation_facts.cpp - the contact walk that finds which parts of two shapes meet.
#include "relate/relation_facts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <tuple>

#include "relate/planar.h"
#include "relate/segment_pairs.h"

namespace xg {

// ---- the contact walk --------------------------------------------------------------------

namespace {

// A place where the second shape comes within t of segment seg of the first: at parameter u
// along the segment; on_second is the matching point of the second shape.
struct Contact {
  uint32_t seg;
  double u;
  _xgWKB_POINT on_second;
};

using Contacts = SmallVec<Contact, 32>;

// Segments found crossing that are walked on their own before the doubling budget applies.
constexpr std::size_t kFirstLocalWalks = 4;
// Segments sampled before the gathering, for shapes of at least kProbeFrom segments.
constexpr uint64_t kProbeWalks = 64;
constexpr uint64_t kProbeFrom = 1024;

// The box holds only coordinates the edge index takes (no NaN, no overflow in the contact
// arithmetic); the empty box of a shape without points passes.
bool box_indexable(const _xgWKB_BOX& b) {
  return (b.minx > b.maxx && b.miny > b.maxy) ||
         (indexable(_xgWKB_POINT{b.minx, b.miny}) && indexable(_xgWKB_POINT{b.maxx, b.maxy}));
}

uint64_t bits_of(double v) {
  uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

// Drops contacts identical to another one (same segment, parameter and point on the second
// shape, bit for bit): the walk passes over such a repeat without effect.  One point of the
// second shape shared by many of its segments (a fan of members meeting at a vertex, a ring
// that returns to one point) is otherwise found once per segment pair.
void drop_repeated_contacts(Contacts& contacts) {
  // Any total order does: the walk sorts again.  Bit patterns give one even for NaN.
  auto key = [](const Contact& c) {
    return std::make_tuple(c.seg, bits_of(c.u), bits_of(c.on_second.x), bits_of(c.on_second.y));
  };
  std::sort(contacts.begin(), contacts.end(),
            [&](const Contact& l, const Contact& r) { return key(l) < key(r); });
  Contact* last = std::unique(contacts.begin(), contacts.end(),
                              [&](const Contact& l, const Contact& r) { return key(l) == key(r); });
  contacts.truncate(static_cast<std::size_t>(last - contacts.begin()));
}

class ContactWalk {
 public:
  ContactWalk(const RelateOperand& x, const RelateOperand& y, double t, bool transposed,
              FactQuery q, FactSearch* search, FactBits* facts)
      : x_(x), y_(y), t_(t), transposed_(transposed), q_(q), search_(search), facts_(facts) {
    // Local walks need finite contact parameters (the sort of a segment's contacts must be a
    // strict order, as the full walk's is) and an edge index that can take the numbers.
    local_ok_ = search->shortcuts && t >= 0 && t < kIndexedRange &&
                box_indexable(x.runs().box()) && box_indexable(y.runs().box());
    std::size_t points = 0;
    for (const ShapeRuns* s : {&x.runs(), &y.runs()}) {
      for (uint32_t r = 0; r < s->run_count(); ++r) points += s->run(r).n;
    }
    compact_floor_ = search->shortcuts ? 4 * points + 1024 : SIZE_MAX;
  }

  // Walks x's segments against y; returns true once the query is decided.
  bool run() {
    if (x_.dim() == 1) {
      for (const _xgWKB_POINT& e : x_.boundary_points()) {
        if (note(kOn, y_.locate(e, t_, nullptr))) return true;
      }
    }
    if (probe()) return true;
    if (collect_contacts()) return true;
    return walk();
  }

 private:
  bool note(Loc lx, Loc ly) {
    *facts_ |= transposed_ ? fact(ly, lx) : fact(lx, ly);
    return decides(*facts_, q_);
  }

  // Gathers the contacts, noting where each lies on both shapes as it is found (the walk notes
  // the same again in order); true, and the gathering stops, once that decides the query.  A
  // segment found crossing y may be walked on its own meanwhile (local_walk).  Repeated
  // contacts are dropped once the list holds four per input point, and again each time it has
  // doubled since, so that it holds O(n + k) contacts for k distinct ones.
  bool collect_contacts() {
    const ShapeRuns& xs = x_.runs();
    const ShapeRuns& ys = y_.runs();
    const _xgWKB_POINT* pts = xs.points();
    std::size_t noted = 0;
    std::size_t compact_at = compact_floor_;
    auto settled = [&]() {
      for (; noted < contacts_.size(); ++noted) {
        const Contact& c = contacts_[noted];
        const _xgWKB_POINT& p = pts[c.seg];
        const _xgWKB_POINT& q = pts[c.seg + 1];
        const _xgWKB_POINT at = c.u == 0 ? p : (c.u == 1 ? q : lerp(p, q, c.u));
        if (note(x_.locate_on_shape(at, t_), y_.locate_on_shape(c.on_second, t_))) return true;
      }
      if (contacts_.size() >= compact_at) {
        drop_repeated_contacts(contacts_);
        noted = contacts_.size();
        compact_at = std::max(compact_floor_, 2 * contacts_.size());
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
          add_point_contact(contacts_, base + i, a.p[i], a.p[i + 1], b.p[0], contacts_.size());
        }
        if (settled()) return true;
      }
    }
    const bool done = any_run_segment_pair(xs, ys, t_, [&](uint32_t rx, uint32_t i, uint32_t ry, uint32_t j) {
      const Span& a = xs.run(rx);
      const Span& b = ys.run(ry);
      const uint32_t base = xs.run_offset(rx);
      const bool crossed = add_contacts(contacts_, base + i, a.p[i], a.p[i + 1], b.p[j], b.p[j + 1]);
      if (settled()) return true;
      if (!crossed || !may_walk(base + i)) return false;
      if (++crossing_walks_ >= kFirstLocalWalks) next_walk_at_ = 2 * contacts_.size();
      return local_walk(rx, i);
    });
    if (done) return true;
    std::sort(contacts_.begin(), contacts_.end(), [](const Contact& l, const Contact& r) {
      return l.seg != r.seg ? l.seg < r.seg : l.u < r.u;
    });
    return false;
  }

  // Adds c to `to` unless one of its contacts from `from` on is the very same (the walk would
  // pass over it without effect: a stretch of length 0 and facts already noted).  A segment
  // meeting its twin or a neighbour finds each shared end twice, once from either segment.
  static void push_contact(Contacts& to, const Contact& c, std::size_t from) {
    for (std::size_t i = from; i < to.size(); ++i) {
      const Contact& o = to[i];
      if (o.seg == c.seg && std::memcmp(&o.u, &c.u, sizeof c.u) == 0 &&
          std::memcmp(&o.on_second, &c.on_second, sizeof c.on_second) == 0) {
        return;
      }
    }
    to.push_back(c);
  }

  void add_point_contact(Contacts& to, uint32_t seg, const _xgWKB_POINT& p, const _xgWKB_POINT& q,
                         const _xgWKB_POINT& c, std::size_t from) const {
    if (near_segment(c, p, q, t_)) push_contact(to, Contact{seg, project(c, p, q), c}, from);
  }

  // Adds to `to` everything segment (p, q) of x and segment (c, d) of y have within t of each
  // other: ends of either near the other, and a crossing of their interiors.  True when the
  // interiors cross.
  bool add_contacts(Contacts& to, uint32_t seg, const _xgWKB_POINT& p, const _xgWKB_POINT& q,
                    const _xgWKB_POINT& c, const _xgWKB_POINT& d) const {
    const std::size_t from = to.size();
    add_point_contact(to, seg, p, q, c, from);
    add_point_contact(to, seg, p, q, d, from);
    if (near_segment(p, c, d, t_)) push_contact(to, Contact{seg, 0, lerp(c, d, project(p, c, d))}, from);
    if (near_segment(q, c, d, t_)) push_contact(to, Contact{seg, 1, lerp(c, d, project(q, c, d))}, from);
    const double s1 = cross3(p, q, c);
    const double s2 = cross3(p, q, d);
    const double s3 = cross3(c, d, p);
    const double s4 = cross3(c, d, q);
    if (((s1 > 0 && s2 < 0) || (s1 < 0 && s2 > 0)) && ((s3 > 0 && s4 < 0) || (s3 < 0 && s4 > 0))) {
      const double u = s3 / (s3 - s4);
      push_contact(to, Contact{seg, u, lerp(p, q, u)}, from);
      return true;
    }
    return false;
  }

  // Before any contact is gathered, walks a sample of x's segments spread evenly along it on
  // their own; true when that decides the query.  Where one interior contact settles the query
  // but the first crossing lies deep in the pairing's order (two large shapes overlapping in a
  // corner of their boxes), a sampled segment across the other's boundary settles it at once.
  // Only done for large shapes, and only when no single contact point can settle the query
  // (the gathering then stops at the first one anyway).
  bool probe() {
    if (!local_ok_ || contact_may_decide()) return false;
    const ShapeRuns& xs = x_.runs();
    uint64_t segments = 0;
    for (uint32_t r = 0; r < xs.run_count(); ++r) segments += xs.run(r).segments();
    if (segments < kProbeFrom) return false;
    const _xgWKB_BOX ybox = y_.runs().box();
    uint32_t r = 0;
    uint64_t before = 0;  // segments of the runs before r
    for (uint64_t k = 0; k < kProbeWalks; ++k) {
      const uint64_t g = (2 * k + 1) * segments / (2 * kProbeWalks);
      while (g >= before + xs.run(r).segments()) before += xs.run(r++).segments();
      const uint32_t i = static_cast<uint32_t>(g - before);
      const Span& a = xs.run(r);
      if (!boxes_meet(segment_box(a.p[i], a.p[i + 1]), ybox, t_)) continue;
      if (local_walk(r, i)) return true;
    }
    return false;
  }

  // Whether the facts of one contact point (noted by the gathering as it finds them) can decide
  // the query: a contact lies on the boundary of an areal shape, anywhere on a lineal one.
  bool contact_may_decide() const {
    FactBits possible = 0;
    for (Loc lx : {kIn, kOn}) {
      if (x_.dim() == 2 && lx == kIn) continue;
      for (Loc ly : {kIn, kOn}) {
        if (y_.dim() == 2 && ly == kIn) continue;
        possible |= transposed_ ? fact(ly, lx) : fact(lx, ly);
      }
    }
    return (possible & q_.stop_any) != 0 ||
           (q_.stop_all != 0 && (possible & q_.stop_all) == q_.stop_all);
  }

  // Whether segment seg, just found crossing y, is walked on its own now.  The first few such
  // segments are; after them one more each time the gathered contacts have doubled, so that a
  // search these walks do not end costs little more than the gathering itself.
  bool may_walk(uint32_t seg) const {
    if (!local_ok_) return false;
    if (crossing_walks_ >= kFirstLocalWalks && contacts_.size() < next_walk_at_) return false;
    for (uint32_t w : walked_) {
      if (w == seg) return false;
    }
    return true;
  }

  // Walks segment i of x's run rx alone: gathers its contacts with every run of y (through
  // y's edge index where it has one, by the same box test the pairing applies), sorts them and
  // walks its stretches as walk() does.  True when the facts so noted decide the query.
  //
  // The facts are facts the full walk notes as well.  The full walk over a segment depends on
  // the segments before it only through the location it carries into the segment's first
  // stretch (known / loc / hit: a stretch between cuts may reuse the location of the previous
  // one, across a vertex that is no cut).  Every cut clears that carry, so from the segment's
  // first cut on, the full walk runs through the very steps made here over the same cuts: the
  // contacts of one segment are the same whichever pairing found them, repeats of a contact
  // pass without effect, and cuts at the same parameter give stretches of length 0 in either
  // order.  Only the stretch before the first cut may differ (located afresh here, carried
  // there, and the two can disagree where rounding or a vertex of y lying exactly on x at
  // t = 0 leaves no cut), so it is passed over unless the segment starts its run, where the
  // full walk carries nothing either.
  bool local_walk(uint32_t rx, uint32_t i) {
    const Span& a = x_.runs().run(rx);
    const uint32_t seg = x_.runs().run_offset(rx) + i;
    walked_.push_back(seg);
    ++search_->local_walks;
    const _xgWKB_POINT& p = a.p[i];
    const _xgWKB_POINT& q = a.p[i + 1];
    const _xgWKB_BOX box = segment_box(p, q);
    const ShapeRuns& ys = y_.runs();
    local_.clear();
    for (uint32_t ry = 0; ry < ys.run_count(); ++ry) {
      const Span& b = ys.run(ry);
      if (b.n == 1) {
        add_point_contact(local_, seg, p, q, b.p[0], local_.size());
        continue;
      }
      if (b.n < 2 || !boxes_meet(box, b.box, t_)) continue;
      auto pair = [&](uint32_t j) {
        if (boxes_meet(box, segment_box(b.p[j], b.p[j + 1]), t_)) {
          add_contacts(local_, seg, p, q, b.p[j], b.p[j + 1]);
        }
        return false;
      };
      if (const RingIndex* index = y_.segment_index(ry, t_)) {
        // The index offers every edge whose box comes within the margin of the segment's;
        // the margin exceeds t by more than the rounding of either box comparison.
        index->edges_near(box, 2 * t_ + 2e-12 * detail::boxes_reach(box, b.box), pair);
      } else {
        for (uint32_t j = 0; j + 1 < b.n; ++j) pair(j);
      }
    }
    std::sort(local_.begin(), local_.end(),
              [](const Contact& l, const Contact& r) { return l.u < r.u; });
    WalkState state;
    state.skip_first = i > 0;
    const bool x_left = x_.dim() == 2 && x_.interior_left(rx);
    return walk_segment(seg, x_left, local_.begin(), local_.end(), state);
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

  // What the walk along a run carries from one stretch to the next: loc / hit hold the
  // location since the last cut when known.  With skip_first, the stretch before the first cut
  // is passed over (see local_walk).
  struct WalkState {
    bool known = false;
    Loc loc = kOut;
    EdgeHit hit{};
    bool skip_first = false;
  };

  // Walks segment seg of x through its contacts [c, end) (sorted by parameter): the stretches
  // between them and the contacts themselves.  True once the query is decided.
  bool walk_segment(uint32_t seg, bool x_left, const Contact* c, const Contact* end, WalkState& st) {
    const _xgWKB_POINT* pts = x_.runs().points();
    const _xgWKB_POINT& p = pts[seg];
    const _xgWKB_POINT& q = pts[seg + 1];
    const double len = std::sqrt(dist2(p, q));
    // Stretches this short carry no location of their own (cuts closer than t are one).
    const double shortest = std::max(t_, 1e-13 * (len + std::fabs(p.x) + std::fabs(p.y)));
    const Segment s{p, q, len, shortest, x_left};
    double from = 0;
    auto finish_stretch = [&](double to) {
      if ((to - from) * len <= shortest || st.skip_first) return false;
      if (st.known) return stretch(st.loc, st.hit, lerp(p, q, from), lerp(p, q, to), x_left);
      return locate_stretch(s, from, to, &st.loc, &st.hit, &st.known);
    };
    for (; c != end; ++c) {
      if (finish_stretch(c->u)) return true;
      st.skip_first = false;
      const _xgWKB_POINT at = c->u == 0 ? p : (c->u == 1 ? q : lerp(p, q, c->u));
      if (note(x_.locate_on_shape(at, t_), y_.locate_on_shape(c->on_second, t_))) return true;
      st.known = false;
      from = std::max(from, c->u);
    }
    return len > 0 && finish_stretch(1.0);
  }

  bool walk() {
    const ShapeRuns& xs = x_.runs();
    const Contact* c = contacts_.begin();
    const Contact* const end = contacts_.end();
    for (uint32_t r = 0; r < xs.run_count(); ++r) {
      const Span& run = xs.run(r);
      const uint32_t base = xs.run_offset(r);
      const bool x_left = x_.dim() == 2 && x_.interior_left(r);
      WalkState state;
      for (uint32_t i = 0; i + 1 < run.n; ++i) {
        const uint32_t seg = base + i;
        const Contact* next = c;
        while (next != end && next->seg == seg) ++next;
        if (walk_segment(seg, x_left, c, next, state)) return true;
        c = next;
      }
    }
    return false;
  }

  const RelateOperand& x_;
  const RelateOperand& y_;
  const double t_;
  const bool transposed_;
  const FactQuery q_;
  FactSearch* search_;
  FactBits* facts_;
  bool local_ok_ = false;
  std::size_t compact_floor_ = 0;
  std::size_t next_walk_at_ = 0;
  std::size_t crossing_walks_ = 0;  // segments walked on their own for a crossing
  SmallVec<uint32_t, 16> walked_;  // segments walked on their own
  Contacts contacts_;
  Contacts local_;  // the contacts of the segment walked on its own
};

}  // namespace

FactBits relate_facts(const RelateOperand& a, const RelateOperand& b, double t, FactQuery q,
                      FactSearch* search) {
  FactSearch plain_search;
  if (search == nullptr) search = &plain_search;
  FactBits facts = 0;
  if (ContactWalk(a, b, t, false, q, search, &facts).run()) return facts;
  // The walk over b is needed for two areal shapes (b's boundary inside a), and for two lineal
  // ones only when the query asks where b's interior leaves a.
  const FactBits first_exterior = fact(kOut, kIn) | fact(kOut, kOn) | fact(kOut, kOut);
  const bool second_walk =
      a.dim() == b.dim() && (a.dim() == 2 || ((q.stop_any | q.stop_all) & first_exterior) != 0);
  if (second_walk) ContactWalk(b, a, t, true, q, search, &facts).run();
  return facts;
}

}  // namespace xg
