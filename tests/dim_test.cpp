// Dimension shapes: each of the five members, the label and the further geometry against the
// same transform applied to it alone; the angle and type rules; refusals.
#include <gtest/gtest.h>

#include <functional>

#include "support/anno_blobs.h"
#include "support/edit_result.h"

using namespace xgtest;

namespace {

struct Dim {
  uint32_t type = XGWKB_TYPE_VERTDIM;
  std::vector<Bytes> parts = {  // five members, one of each simple type, then the label
      point(1, 2), linestring({{0, 0}, {3, 1}, {5, -2}}), polygon({square(0, 0, 10), square(2, 2, 1)}),
      multi(XGWKB_TYPE_MULTIPOINT, {point(0, 0), point(3, 4)}), multiline({{{0, 0}, {1, 0}}, {{5, 5}, {6, 7}}}),
      single_text_bytes(kLed, symbol_bytes(6))};
  int32_t angles[2] = {100, 0};
  Bytes further = mp({polygon({square(5, 5, 2)}), polygon({square(-3, 0, 1)})});  // empty: none

  Bytes bytes() const {
    Bytes b = header(type);
    put_u32(b, 0);
    for (const Bytes& p : parts) b.insert(b.end(), p.begin(), p.end());
    put_u32(b, 0xC0FFEE11);  // carried unchanged
    put_u32(b, static_cast<uint32_t>(angles[0]));
    put_u32(b, static_cast<uint32_t>(angles[1]));
    b.push_back(further.empty() ? 0 : 1);
    b.insert(b.end(), further.begin(), further.end());
    const uint32_t total = static_cast<uint32_t>(b.size());
    std::memcpy(b.data() + 5, &total, 4);
    return b;
  }
};

const _xgWKB_POINT kBase{2, -3}, kA{1, 1}, kB{4, 7};

Bytes in_place(Bytes b, const std::function<int32_t(unsigned char*)>& f) {
  EXPECT_EQ(f(b.data()), 0);
  return b;
}

Bytes dim_mirrored(const Bytes& b, const _xgWKB_POINT& a, const _xgWKB_POINT& c) {
  Block o;
  EXPECT_EQ(xgWKB_dim_mirror(Misaligned(b).data(), &a, &c, o.out(), 0.001), 0);
  return o.anno();
}

// One transform on a dimension, on a geometry alone and on a SingleText alone.
struct Transform {
  const char* name;
  std::function<Bytes(const Bytes&)> dim, shape, label;
};

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
    {"mirror", [](const Bytes& b) { return dim_mirrored(b, kA, kB); },
     [](const Bytes& b) { Out o; EXPECT_EQ(xgWKB_shape_mirror(b.data(), &kA, &kB, &o.p, 0.001), 0); return o.bytes(); },
     [](const Bytes& b) { Block o; EXPECT_EQ(xgWKB_anno_mirror(b.data(), &kA, &kB, o.out(), 0.001), 0); return o.anno(); }},
};

}  // namespace

TEST(Dimension, EveryPartFollowsTheSameTransformAppliedAlone) {
  for (bool with_further : {true, false}) {
    Dim src;
    if (!with_further) src.further.clear();
    for (const Transform& t : kTransforms) {
      Dim want = src;  // each part transformed alone; angles and type as the rules say
      for (std::size_t i = 0; i < 5; ++i) want.parts[i] = t.shape(src.parts[i]);
      want.parts[5] = t.label(src.parts[5]);
      if (with_further) want.further = t.shape(src.further);
      if (std::string(t.name) == "rotate") {
        want.type = XGWKB_TYPE_ALIGNEDDIM;
        want.angles[0] = 65, want.angles[1] = -34;  // 0.6 rad is 34.377 degrees, truncated
      }
      if (std::string(t.name) == "mirror") want.angles[0] = 100 - 2 * 36, want.angles[1] = 0 + 2 * 63;  // axis 63.43 degrees
      EXPECT_EQ(t.dim(src.bytes()), want.bytes()) << t.name << " " << with_further;
    }
  }
}

TEST(Dimension, AngleAndTypeRules) {
  const auto rotated = [](double a) {
    return [a](const Bytes& b) { return in_place(b, [a](unsigned char* s) { return xgWKB_dim_rotate(s, a, 0, 0); }); };
  };
  const _xgWKB_POINT o{0, 0}, x{1, 0}, d{1, 1};
  const struct {
    const char* what;
    std::function<Bytes(const Bytes&)> run;
    int32_t in[2], out[2];
    uint32_t type;
  } rows[] = {
      // pi/2 in degrees with the single-precision pi is 89.9999975...: truncated toward zero.
      {"rotate by a quarter turn", rotated(1.5707963267948966), {100, 0}, {10, -89}, XGWKB_TYPE_ALIGNEDDIM},
      {"rotate by 0 still makes it aligned", rotated(0), {100, 0}, {100, 0}, XGWKB_TYPE_ALIGNEDDIM},
      {"mirror about the x axis", [&](const Bytes& b) { return dim_mirrored(b, o, x); }, {100, 30}, {-100, -30}, XGWKB_TYPE_VERTDIM},
      // The diagonal is 44.9999988 degrees with the single-precision pi: 100 - 2 * 55, 0 + 2 * 44.
      {"mirror about the diagonal", [&](const Bytes& b) { return dim_mirrored(b, o, d); }, {100, 0}, {-10, 88}, XGWKB_TYPE_VERTDIM},
  };
  for (const auto& row : rows) {
    Dim src;
    src.angles[0] = row.in[0], src.angles[1] = row.in[1];
    const Bytes got = row.run(src.bytes());
    int32_t angles[2];
    std::memcpy(angles, got.data() + got.size() - src.further.size() - 9, 8);
    EXPECT_EQ(angles[0], row.out[0]) << row.what;
    EXPECT_EQ(angles[1], row.out[1]) << row.what;
    EXPECT_EQ(got[1], row.type) << row.what;
  }
}

TEST(Dimension, RefusalsAndTheGeneralShapeFunctions) {
  const Bytes blob = Dim{}.bytes();
  uint32_t size = 7;
  EXPECT_EQ(xgWKB_shape_get_WKB_size(blob.data(), &size), XGWKB_E_INVALID_SHAPE);
  Block copy;
  ASSERT_EQ(xgWKB_shape_duplicate(blob.data(), copy.out()), 0);  // copied by the total-size field
  EXPECT_EQ(copy.anno(), blob);
  EXPECT_EQ(xgWKB_shape_move(Bytes(blob).data(), 1, 1), XGWKB_E_INVALID_ENTITY);
  // Not a dimension; a member that is not a geometry: refused, nothing changed or allocated.
  const _xgWKB_POINT p{0, 0};
  unsigned char* out = nullptr;
  EXPECT_EQ(xgWKB_dim_move(linestring({{0, 0}, {1, 1}}).data(), 1, 1), XGWKB_E_INVALID_SHAPE);
  Dim bad;
  bad.parts[2] = single_text_bytes(kPlain);
  Bytes b = bad.bytes();
  EXPECT_EQ(xgWKB_dim_rotate(b.data(), 1, 0, 0), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(xgWKB_dim_mirror(b.data(), &p, &p, &out, 0), XGWKB_E_INVALID_ENTITY);
  EXPECT_EQ(b, bad.bytes());
  EXPECT_EQ(out, nullptr);
}
