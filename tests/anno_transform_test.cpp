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
const _xgWKB_POINT kBase{2, -3}, kA{1, 1}, kB{4, 7};

// A multipoint of the points a transform maps in a record: text point, leader, box corners.
Bytes fields_of(const Desc& d) {
  std::vector<Bytes> pts{point(d.at.x, d.at.y)};
  if (d.leader) pts.push_back(point(d.leader->x, d.leader->y));
  pts.push_back(point(d.box.minx, d.box.miny));
  pts.push_back(point(d.box.maxx, d.box.maxy));
  return multi(XGWKB_TYPE_MULTIPOINT, pts);
}

_xgWKB_POINT member(const Bytes& mp, std::size_t i) {
  _xgWKB_POINT p;
  std::memcpy(&p, mp.data() + 9 + 21 * i + 5, 16);
  return p;
}

// A transform on a multipoint (the oracle) and on an annotation, with its rule for angles.
struct Transform {
  const char* name;
  std::function<Bytes(Bytes)> shape;
  std::function<Bytes(Bytes, bool multi)> anno;
  std::function<double(double angle, bool multi)> angle;
  bool box_follows_text_point = false;  // rotation carries the box instead of mapping it
};

const Transform kTransforms[] = {
    {"move", [](Bytes b) { EXPECT_EQ(xgWKB_shape_move(b.data(), 3.5, -2), 0); return b; },
     [](Bytes b, bool m) { EXPECT_EQ((m ? xgWKB_anno_move_multitext : xgWKB_anno_move)(b.data(), 3.5, -2), 0); return b; },
     [](double a, bool) { return a; }},
    {"stretch", [](Bytes b) { EXPECT_EQ(xgWKB_shape_stretch(b.data(), &kBase, -1.5, 2), 0); return b; },
     [](Bytes b, bool m) { EXPECT_EQ((m ? xgWKB_anno_stretch_multitext : xgWKB_anno_stretch)(b.data(), &kBase, -1.5, 2), 0); return b; },
     [](double a, bool) { return a; }},
    {"rotate", [](Bytes b) { EXPECT_EQ(xgWKB_shape_rotate(b.data(), 0.7, -1, 2), 0); return b; },
     [](Bytes b, bool m) { EXPECT_EQ((m ? xgWKB_anno_rotate_multitext : xgWKB_anno_rotate)(b.data(), 0.7, -1, 2), 0); return b; },
     [](double a, bool) { return a - 0.7; }, true},
    // Intended angle rules: the single-text mirror counts the old angle three times, the multitext
    // mirror keeps it.
    {"mirror", [](Bytes b) { Out o; EXPECT_EQ(xgWKB_shape_mirror(b.data(), &kA, &kB, &o.p, 0.001), 0); return o.bytes(); },
     [](Bytes b, bool m) {
       Block o;
       EXPECT_EQ((m ? xgWKB_anno_mirror_multitext : xgWKB_anno_mirror)(Misaligned(b).data(), &kA, &kB, o.out(), 0.001), 0);
       return o.anno();
     },
     [](double a, bool m) { return m ? a : 2 * (xgWKB_baseGeo_point_calculate_angle(&kA, &kB) - a) - a + kPiF; }},
};

Desc expected(const Transform& t, const Desc& d, bool multi) {
  const Bytes mp = t.shape(fields_of(d));
  Desc w = d;
  w.at = member(mp, 0);
  if (d.leader) w.leader = member(mp, 1);
  const std::size_t c = d.leader ? 2 : 1;
  w.box = {member(mp, c).x, member(mp, c).y, member(mp, c + 1).x, member(mp, c + 1).y};
  if (t.box_follows_text_point) {
    const double dx = w.at.x - d.at.x, dy = w.at.y - d.at.y;
    w.box = {d.box.minx + dx, d.box.miny + dy, d.box.maxx + dx, d.box.maxy + dy};
  }
  w.angle = t.angle(d.angle, multi);
  return w;
}

Bytes outline(const Desc& d) {
  Out o;
  EXPECT_EQ(xgWKB_anno_get_outline(Misaligned(single_text_bytes(d)).data(), &o.p), 0);
  return o.bytes();
}

}  // namespace

TEST(AnnoTransform, EveryFieldFollowsTheShapeTransformOfTheSamePoints) {
  const Bytes sym = symbol_bytes(5);
  for (const Transform& t : kTransforms) {
    for (bool m : {false, true}) {
      const std::vector<Desc> ds = m ? kThree : std::vector<Desc>{kLed};
      std::vector<Desc> want;
      for (const Desc& d : ds) want.push_back(expected(t, d, m));
      const Bytes got = t.anno(m ? multi_text_bytes(ds, sym) : single_text_bytes(ds[0], sym), m);
      // Compared as whole blobs: text, symbol and sizes unchanged, the fields as the oracle says.
      const Bytes wanted = m ? multi_text_bytes(want, sym) : single_text_bytes(want[0], sym);
      if (got == wanted) continue;
      for (std::size_t i = 0; i < ds.size(); ++i) {
        EXPECT_EQ(read_desc(got.data(), m ? static_cast<int32_t>(i + 1) : 0, ds[i]), want[i]) << t.name << " " << i;
      }
      ADD_FAILURE() << t.name << (m ? " multi" : " single");
    }
  }
}

// The copy is sized by the blob, not by the u32 at offset 0 (2560 for any MultiText).
TEST(AnnoTransform, MultiTextsOfMoreThan2560BytesMirrorWhole) {
  const _xgWKB_POINT o{0, 0}, diag{1, 1};
  const Bytes big = multi_text_bytes(std::vector<Desc>(40, kLed), symbol_bytes(4));
  ASSERT_GT(big.size(), 2560u);
  Block m2;
  ASSERT_EQ(xgWKB_anno_mirror_multitext(big.data(), &o, &diag, m2.out(), 0.001), 0);
  EXPECT_EQ(m2.anno().size(), big.size());
  EXPECT_EQ(read_desc(m2.p, 40, kLed).at, (_xgWKB_POINT{kLed.at.y, kLed.at.x}));
}

TEST(AnnoTransform, OutlinesOfUnrotatedAndRotatedTexts) {
  const Bytes box = polygon({{{0, 0}, {0, 2}, {4, 2}, {4, 0}, {0, 0}}});  // the rectangle polygon
  for (double small : {0.00005, -0.00005, 0.0}) EXPECT_EQ(outline(Desc{"t", {1, 1}, small, {}, {0, 0, 4, 2}}), box);
  // A quarter turn counter-clockwise about (1, 1) takes (X, Y) to (2 - Y, X); from the upper left.
  const Bytes turned = outline(Desc{"t", {1, 1}, 1.5707963267948966, {}, {0, 0, 4, 2}});
  const Ring want = {{0, 0}, {0, 4}, {2, 4}, {2, 0}, {0, 0}};
  ASSERT_EQ(turned.size(), 93u);
  for (std::size_t i = 0; i < want.size(); ++i) {
    double xy[2];
    std::memcpy(xy, turned.data() + 13 + 16 * i, 16);
    EXPECT_NEAR(xy[0], want[i].x, 1e-12) << i;
    EXPECT_NEAR(xy[1], want[i].y, 1e-12) << i;
  }
  EXPECT_NE(outline(Desc{"t", {1, 1}, 0.0001, {}, {0, 0, 4, 2}}), box);  // the threshold itself turns
  // MultiText: one record, all records as one multipolygon, an index above N refused.
  const Bytes three = multi_text_bytes(kThree);
  Out all, second, none;
  ASSERT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 0, &all.p), 0);
  ASSERT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 2, &second.p), 0);
  EXPECT_EQ(second.bytes(), outline(kLed));
  EXPECT_EQ(all.bytes(), mp({outline(kPlain), outline(kLed), outline(kLong)}));
  EXPECT_EQ(xgWKB_anno_get_multitext_outline(three.data(), 4, &none.p), XGWKB_E_INVALID_INDEX);
  EXPECT_EQ(xgWKB_anno_get_multitext_outline(three.data(), -1, &none.p), XGWKB_E_INVALID_INDEX);
  EXPECT_EQ(none.p, nullptr);
}
