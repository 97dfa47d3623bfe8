// Dimension shapes: each of the five members, the label and the further geometry against the
// same transform applied to it alone; the angle and type rules; refusals.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"
#include "support/edit_result.h"

using namespace xgtest;

namespace {

struct Dim {
  uint32_t type = XGWKB_TYPE_HORIDIM;
  std::vector<Bytes> members = {
      point(1, 2),
      linestring({{0, 0}, {3, 1}, {5, -2}}),
      polygon({square(0, 0, 10), square(2, 2, 1)}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(3, 4)}),
      multiline({{{0, 0}, {1, 0}}, {{5, 5}, {6, 7}}})};
  Bytes label = single_text_bytes(kLed, symbol_bytes(6));
  uint32_t carried = 0xC0FFEE11;
  int32_t angles[2] = {100, 0};
  Bytes further = mp({polygon({square(5, 5, 2)}), polygon({square(-3, 0, 1)})});  // empty: none
};

Bytes dim_bytes(const Dim& d) {
  Bytes body;
  for (const Bytes& m : d.members) body.insert(body.end(), m.begin(), m.end());
  body.insert(body.end(), d.label.begin(), d.label.end());
  put_u32(body, d.carried);
  put_u32(body, static_cast<uint32_t>(d.angles[0]));
  put_u32(body, static_cast<uint32_t>(d.angles[1]));
  body.push_back(d.further.empty() ? 0 : 1);
  body.insert(body.end(), d.further.begin(), d.further.end());
  Bytes b = header(d.type);
  put_u32(b, static_cast<uint32_t>(9 + body.size()));
  b.insert(b.end(), body.begin(), body.end());
  return b;
}

const _xgWKB_POINT kBase{2, -3}, kA{1, 1}, kB{4, 7};

// One transform on a dimension, on a geometry alone and on a SingleText alone.
struct Transform {
  const char* name;
  std::function<Bytes(const Bytes&)> dim, shape, label;
};

Bytes in_place(Bytes b, const std::function<int32_t(unsigned char*)>& f) {
  EXPECT_EQ(f(b.data()), 0);
  return b;
}

const Transform kTransforms[] = {
    {"move", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_move(s, 3.5, -2); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_shape_move(s, 3.5, -2); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_anno_move(s, 3.5, -2); }); }},
    {"rotate", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_rotate(s, 0.6, 1, -1); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_shape_rotate(s, 0.6, 1, -1); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_anno_rotate(s, 0.6, 1, -1); }); }},
    {"stretch", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_strecth(s, &kBase, -1.5, 2); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_shape_stretch(s, &kBase, -1.5, 2); }); },
     [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_anno_stretch(s, &kBase, -1.5, 2); }); }},
    {"mirror",
     [](const Bytes& b) {
       Block o;
       EXPECT_EQ(xgWKB_dim_mirror(Misaligned(b).data(), &kA, &kB, o.out(), 0.001), 0);
       return o.anno();
     },
     [](const Bytes& b) { Out o; EXPECT_EQ(xgWKB_shape_mirror(b.data(), &kA, &kB, &o.p, 0.001), 0); return o.bytes(); },
     [](const Bytes& b) { Block o; EXPECT_EQ(xgWKB_anno_mirror(b.data(), &kA, &kB, o.out(), 0.001), 0); return o.anno(); }},
};

// The parts of a dimension blob built like d, cut at the sizes d's parts have.
Dim parts_of(const Bytes& blob, const Dim& like) {
  Dim d = like;
  std::size_t at = 9;
  d.type = blob[1];
  for (Bytes& m : d.members) {
    m.assign(blob.begin() + at, blob.begin() + at + m.size());
    at += m.size();
  }
  d.label.assign(blob.begin() + at, blob.begin() + at + d.label.size());
  at += d.label.size();
  std::memcpy(&d.carried, blob.data() + at, 4);
  std::memcpy(d.angles, blob.data() + at + 4, 8);
  EXPECT_EQ(blob[at + 12], like.further.empty() ? 0 : 1);
  d.further.assign(blob.begin() + at + 13, blob.end());
  return d;
}

}  // namespace

TEST(Dimension, EveryPartFollowsTheSameTransformAppliedAlone) {
  for (bool with_further : {true, false}) {
    Dim src;
    if (!with_further) src.further.clear();
    const Bytes blob = dim_bytes(src);
    for (const Transform& t : kTransforms) {
      const Bytes got = t.dim(blob);
      ASSERT_EQ(got.size(), blob.size()) << t.name;
      const Dim d = parts_of(got, src);
      for (std::size_t i = 0; i < src.members.size(); ++i) {
        EXPECT_EQ(d.members[i], t.shape(src.members[i])) << t.name << " member " << i;
      }
      EXPECT_EQ(d.label, t.label(src.label)) << t.name;
      if (with_further) {
        EXPECT_EQ(d.further, t.shape(src.further)) << t.name;
      }
      EXPECT_EQ(d.carried, src.carried) << t.name;
      EXPECT_EQ(d.type, std::string(t.name) == "rotate" ? 13u : src.type) << t.name;
    }
  }
}

TEST(Dimension, AngleAndTypeRules) {
  Dim src;
  src.angles[0] = 100, src.angles[1] = 0;
  const struct {
    const char* what;
    std::function<Bytes(const Bytes&)> run;
    uint32_t type;
    int32_t a0, a1;
    int32_t in1 = 0;  // the second angle before
  } rows[] = {
      // pi/2 in degrees with the single-precision pi is 89.9999975...: truncated toward zero.
      {"rotate by a quarter turn", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_rotate(s, 1.5707963267948966, 0, 0); }); },
       13, 10, -89},
      {"rotate by 0 still makes it aligned", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_rotate(s, 0, 0, 0); }); },
       13, 100, 0},
      {"rotate by -0.5 rad (-28.6 degrees)", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_rotate(s, -0.5, 0, 0); }); },
       13, 128, 28},
      {"mirror about the x axis", [](const Bytes& b) {
         const _xgWKB_POINT o{0, 0}, x{1, 0};
         Block out;
         EXPECT_EQ(xgWKB_dim_mirror(b.data(), &o, &x, out.out(), 0.001), 0);
         return out.anno();
       }, XGWKB_TYPE_VERTDIM, -100, -30, 30},
      // The axis angle is 44.9999988 degrees with the single-precision pi: 100 - 2 * 55, 0 + 2 * 44.
      {"mirror about the diagonal: A - 2 trunc(A - axis angle)", [](const Bytes& b) {
         const _xgWKB_POINT o{0, 0}, d{1, 1};
         Block out;
         EXPECT_EQ(xgWKB_dim_mirror(b.data(), &o, &d, out.out(), 0.001), 0);
         return out.anno();
       }, XGWKB_TYPE_VERTDIM, -10, 88},
      {"move keeps the angles", [](const Bytes& b) { return in_place(b, [](unsigned char* s) { return xgWKB_dim_move(s, 1, 1); }); },
       XGWKB_TYPE_VERTDIM, 100, 0},
  };
  for (const auto& row : rows) {
    Dim d = src;
    d.type = XGWKB_TYPE_VERTDIM;
    d.angles[1] = row.in1;
    const Dim got = parts_of(row.run(dim_bytes(d)), d);
    EXPECT_EQ(got.type, row.type) << row.what;
    EXPECT_EQ(got.angles[0], row.a0) << row.what;
    EXPECT_EQ(got.angles[1], row.a1) << row.what;
  }
}

TEST(Dimension, RefusalsAndTheGeneralShapeFunctions) {
  const Bytes blob = dim_bytes(Dim{});
  uint32_t size = 7;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(blob.data(), &size), XGWKB_E_INVALID_SHAPE);
  Block copy;
  ASSERT_EQ(xgWKB_shape_duplicate(blob.data(), copy.out()), 0);  // copied by the total-size field
  EXPECT_EQ(copy.anno(), blob);
  EXPECT_EQ(xgWKB_shape_move(Bytes(blob).data(), 1, 1), XGWKB_E_INVALID_ENTITY);
  const _xgWKB_POINT p{0, 0};
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_dim_move(nullptr, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_dim_rotate(nullptr, 1, 0, 0), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_dim_strecth(nullptr, &p, 1, 1), XGWKB_E_NULL_POINTER);
  EXPECT_EQ(xgWKB_dim_mirror(nullptr, &p, &p, &out, 0), XGWKB_E_NULL_POINTER);
  // Not a dimension; a member that is not a geometry: refused, nothing changed or allocated.
  Bytes line = linestring({{0, 0}, {1, 1}});
  EXPECT_EQ(xgWKB_dim_move(line.data(), 1, 1), XGWKB_E_INVALID_SHAPE);
  Dim bad;
  bad.members[2] = single_text_bytes(kPlain);
  Bytes b = dim_bytes(bad);
  const Bytes before = b;
  EXPECT_EQ(xgWKB_dim_rotate(b.data(), 1, 0, 0), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(xgWKB_dim_mirror(b.data(), &p, &p, &out, 0), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(b, before);
  EXPECT_EQ(out, nullptr);
}
