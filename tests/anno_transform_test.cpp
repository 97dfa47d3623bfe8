// Annotation transforms and outlines: every geometric field of every record against the shape
// transform of a multipoint of the same points, the angle rules, and the outline polygons.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "support/anno_blobs.h"
#include "support/edit_result.h"

using namespace xgtest;

namespace {

const double kPiF = 3.1415927410125732;
const std::vector<Desc> kThree = {kPlain, kLed, kLong};

// The points a transform maps in a record: text point, leader when present, the two box corners.
std::vector<_xgWKB_POINT> fields_of(const Desc& d) {
  std::vector<_xgWKB_POINT> pts{d.at};
  if (d.leader) pts.push_back(*d.leader);
  pts.push_back({d.box.minx, d.box.miny});
  pts.push_back({d.box.maxx, d.box.maxy});
  return pts;
}

// The fields of record i (1-based) of a MultiText, or of a SingleText when i is 0, read back.
Desc read_desc(const unsigned char* s, int32_t i, const Desc& like) {
  Desc d = like;
  _xgWKB_POINT leader{};
  if (i == 0) {
    xgWKB_anno_get_text_point(s, &d.at);
    xgWKB_anno_get_angle(s, &d.angle);
    xgWKB_anno_get_extent(s, &d.box);
    if (xgWKB_anno_get_leader_point(s, &leader) == 0) d.leader = leader;
  } else {
    xgWKB_anno_get_multitext_text_point(s, i, &d.at);
    xgWKB_anno_get_multitext_angle(s, i, &d.angle);
    xgWKB_anno_get_multitext_extent(s, i, &d.box);
    if (xgWKB_anno_get_multitext_leader_point(s, i, &leader) == 0) d.leader = leader;
  }
  return d;
}

// One transform as applied to a multipoint and to an annotation (single or multi).
struct Transform {
  const char* name;
  std::function<Bytes(const Bytes&)> shape;             // on a multipoint
  std::function<Bytes(const Bytes&, bool multi)> anno;  // on a copy of an annotation
};

Bytes multipoint(const std::vector<_xgWKB_POINT>& pts) {
  std::vector<Bytes> members;
  for (const auto& p : pts) members.push_back(point(p.x, p.y));
  return multi(XGWKB_TYPE_MULTIPOINT, members);
}

std::vector<_xgWKB_POINT> points_of(const Bytes& mp) {
  std::vector<_xgWKB_POINT> pts;
  for (std::size_t at = 9; at + 21 <= mp.size(); at += 21) {
    _xgWKB_POINT p;
    std::memcpy(&p, mp.data() + at + 5, 16);
    pts.push_back(p);
  }
  return pts;
}

const _xgWKB_POINT kBase{2, -3}, kA{1, 1}, kB{4, 7};

const Transform kTransforms[] = {
    {"move", [](Bytes b) { EXPECT_EQ(xgWKB_shape_move(b.data(), 3.5, -2), 0); return b; },
     [](Bytes b, bool m) {
       EXPECT_EQ(m ? xgWKB_anno_move_multitext(b.data(), 3.5, -2) : xgWKB_anno_move(b.data(), 3.5, -2), 0);
       return b;
     }},
    {"stretch", [](Bytes b) { EXPECT_EQ(xgWKB_shape_stretch(b.data(), &kBase, -1.5, 2), 0); return b; },
     [](Bytes b, bool m) {
       EXPECT_EQ(m ? xgWKB_anno_stretch_multitext(b.data(), &kBase, -1.5, 2) : xgWKB_anno_stretch(b.data(), &kBase, -1.5, 2), 0);
       return b;
     }},
    {"mirror", [](Bytes b) { Out o; EXPECT_EQ(xgWKB_shape_mirror(b.data(), &kA, &kB, &o.p, 0.001), 0); return o.bytes(); },
     [](Bytes b, bool m) {
       Block o;
       Misaligned src(b);
       EXPECT_EQ(m ? xgWKB_anno_mirror_multitext(src.data(), &kA, &kB, o.out(), 0.001)
                   : xgWKB_anno_mirror(src.data(), &kA, &kB, o.out(), 0.001), 0);
       return o.anno();
     }},
    {"mirror about a horizontal axis (vertical-line rule)",
     [](Bytes b) { const _xgWKB_POINT h{5, 0.5}; Out o; EXPECT_EQ(xgWKB_shape_mirror(b.data(), &kA, &h, &o.p, 0.001), 0); return o.bytes(); },
     [](Bytes b, bool m) {
       const _xgWKB_POINT h{5, 0.5};
       Block o;
       EXPECT_EQ(m ? xgWKB_anno_mirror_multitext(b.data(), &kA, &h, o.out(), 0.001)
                   : xgWKB_anno_mirror(b.data(), &kA, &h, o.out(), 0.001), 0);
       return o.anno();
     }},
};

}  // namespace

// Move, stretch and mirror map the text point, the leader and both box corners exactly as the
// shape transform maps the same points; mirror leaves the source alone.
TEST(AnnoTransform, EveryFieldFollowsTheShapeTransformOfTheSamePoints) {
  const Bytes sym = symbol_bytes(5);
  for (const Transform& t : kTransforms) {
    for (bool m : {false, true}) {
      const std::vector<Desc> ds = m ? kThree : std::vector<Desc>{kLed};
      const Bytes src = m ? multi_text_bytes(ds, sym) : single_text_bytes(ds[0], sym);
      const Bytes got = t.anno(src, m);
      ASSERT_EQ(got.size(), src.size()) << t.name;
      for (std::size_t i = 0; i < ds.size(); ++i) {
        const Desc d = read_desc(got.data(), m ? static_cast<int32_t>(i + 1) : 0, ds[i]);
        const std::vector<_xgWKB_POINT> want = points_of(t.shape(multipoint(fields_of(ds[i]))));
        const std::vector<_xgWKB_POINT> have = fields_of(d);
        ASSERT_EQ(have.size(), want.size());
        for (std::size_t k = 0; k < want.size(); ++k) {
          EXPECT_TRUE(have[k].x == want[k].x && have[k].y == want[k].y) << t.name << " field " << k;
        }
        // Only the single-text mirror changes the angle; the text and symbol never change.
        if (!(std::string(t.name).rfind("mirror", 0) == 0 && !m)) {
          EXPECT_EQ(d.angle, ds[i].angle) << t.name;
        }
      }
      Block text;
      ASSERT_EQ(m ? xgWKB_anno_get_multitext_symbol(got.data(), text.out()) : xgWKB_anno_get_symbol(got.data(), text.out()), 0);
      EXPECT_EQ(text.bytes(sym.size()), sym);
    }
  }
}

TEST(AnnoTransform, RotationTurnsPointsLowersAnglesAndCarriesTheBox) {
  const double angle = 0.7, cx = -1, cy = 2;
  for (bool m : {false, true}) {
    const std::vector<Desc> ds = m ? kThree : std::vector<Desc>{kLed};
    Bytes got = m ? multi_text_bytes(ds) : single_text_bytes(ds[0]);
    ASSERT_EQ(m ? xgWKB_anno_rotate_multitext(got.data(), angle, cx, cy) : xgWKB_anno_rotate(got.data(), angle, cx, cy), 0);
    for (std::size_t i = 0; i < ds.size(); ++i) {
      const Desc d = read_desc(got.data(), m ? static_cast<int32_t>(i + 1) : 0, ds[i]);
      std::vector<_xgWKB_POINT> pts{ds[i].at};
      if (ds[i].leader) pts.push_back(*ds[i].leader);
      Bytes mp = multipoint(pts);
      ASSERT_EQ(xgWKB_shape_rotate(mp.data(), angle, cx, cy), 0);
      const std::vector<_xgWKB_POINT> want = points_of(mp);
      EXPECT_TRUE(d.at.x == want[0].x && d.at.y == want[0].y);
      if (ds[i].leader) {
        EXPECT_TRUE(d.leader->x == want[1].x && d.leader->y == want[1].y);
      }
      EXPECT_EQ(d.angle, ds[i].angle - angle);
      const double dx = want[0].x - ds[i].at.x, dy = want[0].y - ds[i].at.y;
      EXPECT_EQ(d.box.minx, ds[i].box.minx + dx);
      EXPECT_EQ(d.box.maxy, ds[i].box.maxy + dy);
      EXPECT_DOUBLE_EQ(d.box.maxx - d.box.minx, ds[i].box.maxx - ds[i].box.minx);  // size kept
    }
  }
}

TEST(AnnoTransform, AngleRulesAndFieldsLeftAlone) {
  Desc flat = kPlain;
  flat.angle = 0;
  Bytes s = single_text_bytes(flat);
  ASSERT_EQ(xgWKB_anno_rotate(s.data(), 1.5707963267948966, 0, 0), 0);
  EXPECT_EQ(read_desc(s.data(), 0, flat).angle, -1.5707963267948966);  // no normalisation
  // Mirror about the x axis: 2(0 - 0) - 0 + pi, pi being the single-precision value.
  const _xgWKB_POINT o{0, 0}, x{1, 0}, diag{1, 1};
  Block m1, m2;
  ASSERT_EQ(xgWKB_anno_mirror(single_text_bytes(flat).data(), &o, &x, m1.out(), 0.001), 0);
  EXPECT_EQ(read_desc(m1.p, 0, flat).angle, kPiF);
  // Intended rule: the old angle counts three times.  Axis at 45 degrees, old angle 0.5.
  ASSERT_EQ(xgWKB_anno_mirror(single_text_bytes(kPlain).data(), &o, &diag, m2.out(), 0.001), 0);
  EXPECT_DOUBLE_EQ(read_desc(m2.p, 0, kPlain).angle, 2 * (std::atan(1.0) - 0.5) - 0.5 + kPiF);
  // Moving a text without a leader moves the text point and the box and writes no leader.
  Bytes moved = single_text_bytes(kPlain);
  ASSERT_EQ(xgWKB_anno_move(moved.data(), 1, 1), 0);
  Desc want = kPlain;
  want.at = {2, 3}, want.box = {1, 2, 11, 4};
  EXPECT_EQ(moved, single_text_bytes(want));
  // A MultiText of more than 2560 bytes mirrors whole.
  const std::vector<Desc> many(40, kLed);
  const Bytes big = multi_text_bytes(many, symbol_bytes(4));
  ASSERT_GT(big.size(), 2560u);
  Block m3;
  ASSERT_EQ(xgWKB_anno_mirror_multitext(big.data(), &o, &diag, m3.out(), 0.001), 0);
  EXPECT_EQ(m3.anno().size(), big.size());
  EXPECT_EQ(read_desc(m3.p, 40, kLed).at.x, kLed.at.y);
}

TEST(AnnoTransform, OutlinesOfUnrotatedAndRotatedTexts) {
  const auto outline = [](const Desc& d) {
    Out o;
    EXPECT_EQ(xgWKB_anno_get_outline(Misaligned(single_text_bytes(d)).data(), &o.p), 0);
    return o.bytes();
  };
  Desc d{"t", {1, 1}, 0.00005, std::nullopt, {0, 0, 4, 2}};
  EXPECT_EQ(outline(d), polygon({{{0, 0}, {0, 2}, {4, 2}, {4, 0}, {0, 0}}}));  // the box's rectangle
  d.angle = -0.00005;
  EXPECT_EQ(outline(d), polygon({{{0, 0}, {0, 2}, {4, 2}, {4, 0}, {0, 0}}}));
  // A quarter turn counter-clockwise about (1, 1): (X, Y) -> (2 - Y, X).
  d.angle = 1.5707963267948966;
  const Bytes turned = outline(d);
  const Ring want = {{0, 0}, {0, 4}, {2, 4}, {2, 0}, {0, 0}};  // from (minx,maxy) clockwise round
  ASSERT_EQ(turned.size(), 93u);
  for (std::size_t i = 0; i < want.size(); ++i) {
    double x, y;
    std::memcpy(&x, turned.data() + 13 + 16 * i, 8);
    std::memcpy(&y, turned.data() + 21 + 16 * i, 8);
    EXPECT_NEAR(x, want[i].x, 1e-12) << i;
    EXPECT_NEAR(y, want[i].y, 1e-12) << i;
  }
  d.angle = 0.0001;  // the threshold itself turns
  EXPECT_NE(outline(d), polygon({{{0, 0}, {0, 2}, {4, 2}, {4, 0}, {0, 0}}}));
  // MultiText: one record, all records as a multipolygon, an index above N refused.
  const Bytes three = multi_text_bytes(kThree);
  Out all, second, none;
  ASSERT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 0, &all.p), 0);
  ASSERT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 2, &second.p), 0);
  EXPECT_EQ(second.bytes(), outline(kLed));
  EXPECT_EQ(all.bytes(), marked(mp({outline(kPlain), outline(kLed), outline(kLong)}), {}));
  EXPECT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 4, &none.p), XGWKB_E_INVALID_INDEX);
  EXPECT_EQ(xgWKB_anno_get_multitext_outline(three.data(), -1, &none.p), XGWKB_E_INVALID_INDEX);
  EXPECT_EQ(none.p, nullptr);
}

TEST(AnnoTransform, NullShapesAreRefused) {
  const _xgWKB_POINT p{0, 0};
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_anno_move(nullptr, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_anno_rotate_multitext(nullptr, 1, 0, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_anno_stretch(nullptr, &p, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_anno_mirror(nullptr, &p, &p, &out, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_anno_mirror_multitext(nullptr, &p, &p, &out, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_anno_get_outline(nullptr, &out), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(out, nullptr);
}
