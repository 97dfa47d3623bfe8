// Deterministic corpus run over the interchange readers: every prefix and seeded byte flips of
// valid inputs of every type.  Each input sits in its own exactly sized heap buffer, so the
// sanitizer build catches any read past it; whatever a reader accepts must pass the blob check.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "support/blob_builder.h"

using namespace xgtest;

namespace {

const char* const kTexts[] = {
    "POINT (1.5 -2)", "POINT Z (1 2 3)", "SRID=4326;POINTM(1 2 3)", "LINESTRING (1 2, 3 4, 5e1 -6E-2)",
    "POLYGON ((0 0, 10 0, 10 10, 0 0), (1 1, 2 1, 1 1))", "MULTIPOINT (1 2, (3 4))",
    "MULTILINESTRING ((0 0, 1 1), EMPTY, (2 2, 3 3, 4 4))",
    "MULTIPOLYGON (((0 0, 1 0, 0 0), (2 2, 3 3, 2 2)), EMPTY, ((9 9, 8 8, 7 7)))", "LINESTRING ZM EMPTY",
};

std::vector<Bytes> blobs() {
  return {point(1, 2), linestring({{0, 0}, {1, 1}, {2, 0}}), polygon({square(0, 0, 4), square(1, 1, 1)}),
          multi(XGWKB_TYPE_MULTIPOINT, {point(1, 2), point(3, 4)}), multiline({{{0, 0}, {1, 1}}, {}, {{5, 5}, {6, 6}}}),
          multi(XGWKB_TYPE_MULTIPOLYGON, {polygon({square(0, 0, 1)}), polygon({}), polygon({square(5, 5, 2), square(6, 6, 1)})})};
}

// The structural check must pass whatever a reader accepted.
void expect_sound(unsigned char* out) {
  uint32_t size = 5;
  if (out[1] != XGWKB_TYPE_NIL) {
    ASSERT_EQ(xgWKB_shape_get_WKB_size(out, &size), 0);
  }
  EXPECT_EQ(xgWKB_shape_check_blob(out, size), 0);
  xgWKB_shape_free(out);
}

// Runs f on a copy of bytes[0, n) in a buffer of exactly n bytes.
template <class F>
void exact(const unsigned char* bytes, std::size_t n, F&& f) {
  std::unique_ptr<unsigned char[]> copy(new unsigned char[n == 0 ? 1 : n]);
  if (n != 0) std::memcpy(copy.get(), bytes, n);
  f(copy.get(), n);
}

// 1-3 flips: a random bit, or a whole byte set to a random value.
Bytes flipped(Bytes b, std::mt19937& rng) {
  for (int k = 1 + static_cast<int>(rng() % 3); k > 0; --k) {
    const std::size_t at = rng() % b.size();
    b[at] = rng() % 2 ? static_cast<unsigned char>(b[at] ^ (1u << rng() % 8)) : static_cast<unsigned char>(rng());
  }
  return b;
}

}  // namespace

TEST(InteropCorpus, WkbEveryPrefixIsTruncatedAndFlipsStaySound) {
  std::mt19937 rng(2024);
  for (const Bytes& blob : blobs()) {
    for (int big : {0, 1}) {
      unsigned char* wkb = nullptr;
      uint32_t size = 0;
      ASSERT_EQ(xgWKB_shape_to_wkb(blob.data(), big, &wkb, &size), 0);
      const Bytes valid(wkb, wkb + size);
      xgWKB_shape_free(wkb);
      for (std::size_t n = 0; n < valid.size(); ++n) {
        exact(valid.data(), n, [&](const unsigned char* p, std::size_t len) {
          unsigned char* out = nullptr;
          EXPECT_EQ(xgWKB_shape_from_wkb(p, len, &out), XGWKB_E_WKB_TRUNCATED) << n;
          EXPECT_EQ(out, nullptr);
        });
      }
      for (int i = 0; i < 400; ++i) {
        const Bytes bad = flipped(valid, rng);
        exact(bad.data(), bad.size(), [&](const unsigned char* p, std::size_t len) {
          unsigned char* out = nullptr;
          if (xgWKB_shape_from_wkb(p, len, &out) == 0) expect_sound(out);
          else EXPECT_EQ(out, nullptr);
        });
      }
    }
  }
}

TEST(InteropCorpus, BlobCheckRefusesEveryPrefixAndSurvivesFlips) {
  std::mt19937 rng(7);
  for (const Bytes& blob : blobs()) {
    for (std::size_t n = 0; n < blob.size(); ++n)
      exact(blob.data(), n, [&](const unsigned char* p, std::size_t len) {
        EXPECT_EQ(xgWKB_shape_check_blob(p, len), XGWKB_E_BLOB_TOO_SMALL) << n;
      });
    for (int i = 0; i < 600; ++i) {
      const Bytes bad = flipped(blob, rng);
      exact(bad.data(), bad.size(), [&](const unsigned char* p, std::size_t len) {
        if (xgWKB_shape_check_blob(p, len) != 0 || p[1] == XGWKB_TYPE_NIL || p[1] == XGWKB_TYPE_ENVELOPE) return;
        char* text = nullptr;  // a passed blob is walkable by the unbounded writers
        ASSERT_EQ(xgWKB_shape_to_ogc_wkt(p, -1, &text), 0);
        xgWKB_shape_free_WKT(text);
      });
    }
  }
}

TEST(InteropCorpus, OgcWktPrefixesAndFlipsStaySound) {
  std::mt19937 rng(99);
  for (const char* seed : kTexts) {
    const Bytes valid(seed, seed + std::strlen(seed) + 1);
    for (std::size_t n = 0; n < valid.size(); ++n) {
      Bytes prefix(valid.begin(), valid.begin() + n);
      prefix.push_back(0);
      exact(prefix.data(), prefix.size(), [&](const unsigned char* p, std::size_t) {
        unsigned char* out = nullptr;
        if (xgWKB_shape_from_ogc_wkt(reinterpret_cast<const char*>(p), 0, &out) == 0) expect_sound(out);
      });
    }
    for (int i = 0; i < 400; ++i) {
      Bytes bad = flipped(Bytes(valid.begin(), valid.end() - 1), rng);
      bad.push_back(0);
      exact(bad.data(), bad.size(), [&](const unsigned char* p, std::size_t) {
        unsigned char* out = nullptr;
        if (xgWKB_shape_from_ogc_wkt(reinterpret_cast<const char*>(p), XGWKB_REFUSE_M, &out) == 0) expect_sound(out);
        else EXPECT_EQ(out, nullptr);
      });
    }
  }
}

// The reporting dialect reader agrees with the original export on every prefix and flip: a
// shape from both or from neither, the same bytes, and a stopping offset inside the text.
TEST(InteropCorpus, DialectPrefixesStopAtTheEndAndFlipsAgreeWithTheOriginalReader) {
  const char* const seeds[] = {"point (1.5 -2)", "linestring (0 0,1 1,2e1 0)", "polygon ((0 0,4 0,4 3,0 0),(1 1,2 1,1 1))",
                               "multipoint (1 2,3 4)", "multilinestring ((0 0,1 1),(2 2,3 3,4 4))",
                               "multipolygon (((0 0,1 0,0 0)),((5 5,6 6,5 5),(1 1,2 2,1 1)))", "point empty"};
  std::mt19937 rng(17);
  auto agree = [](const char* text, std::size_t len) -> int32_t {
    unsigned char *ours = nullptr, *old = nullptr;
    std::size_t offset = len + 1;
    const int32_t status = xgWKB_shape_from_WKT_ex(text, &ours, &offset);
    const int32_t old_status = xgWKB_shape_generate_from_WKT(text, &old);
    if (status == 0) {
      uint32_t size = 5;
      if (ours[1] != XGWKB_TYPE_NIL) {
        EXPECT_EQ(xgWKB_shape_get_WKB_size(ours, &size), 0);
      }
      EXPECT_EQ(old_status, 0);
      EXPECT_TRUE(old != nullptr && std::memcmp(ours, old, size) == 0) << text;
      expect_sound(ours);
    } else {
      EXPECT_EQ(ours, nullptr);
      EXPECT_EQ(old, nullptr) << text;
      EXPECT_EQ(old_status, status == XGWKB_E_TEXT_SYNTAX ? 0 : status) << text;
      EXPECT_LE(offset, len) << text;
    }
    xgWKB_shape_free(old);
    return status;
  };
  for (const char* seed : seeds) {
    const Bytes valid(seed, seed + std::strlen(seed) + 1);
    for (std::size_t n = 0; n < valid.size(); ++n) {
      Bytes prefix(valid.begin(), valid.begin() + n);
      prefix.push_back(0);
      exact(prefix.data(), prefix.size(), [&](const unsigned char* p, std::size_t) {
        const char* text = reinterpret_cast<const char*>(p);
        const int32_t status = agree(text, n);
        if (n + 1 == valid.size()) {
          EXPECT_EQ(status, 0) << text;
        } else if (status == XGWKB_E_TEXT_SYNTAX) {  // a truncated text is read to its end
          std::size_t offset = 0;
          unsigned char* out = nullptr;
          xgWKB_shape_from_WKT_ex(text, &out, &offset);
          EXPECT_EQ(offset, n) << text;
        } else {
          EXPECT_EQ(status, XGWKB_E_INVALID_ENTITY) << text;  // the keyword itself cut short
        }
      });
    }
    for (int i = 0; i < 400; ++i) {
      Bytes bad = flipped(Bytes(valid.begin(), valid.end() - 1), rng);
      bad.push_back(0);
      const std::size_t len = std::strlen(reinterpret_cast<const char*>(bad.data()));  // a flip may put a zero in
      exact(bad.data(), bad.size(), [&](const unsigned char* p, std::size_t) { agree(reinterpret_cast<const char*>(p), len); });
    }
  }
}
