// xggeo_geom.cpp - blobs to plain vectors and back (see xggeo_geom.h).
#include "xggeo_geom.h"

#include <cstring>

#include "xggeokit.h"

namespace xggeo {
namespace {

uint32_t u32_at(const unsigned char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);  // blobs are little-endian, as is every host the tool is built for
  return v;
}

double f64_at(const unsigned char* p) {
  double v;
  std::memcpy(&v, p, 8);
  return v;
}

const unsigned char* path_at(const unsigned char* at, Path* path) {
  const uint32_t n = u32_at(at);
  at += 4;
  for (uint32_t i = 0; i < n; ++i, at += 16) path->push_back({f64_at(at), f64_at(at + 8)});
  return at;
}

// Decodes the single geometry at `at` (type 1-3) into part; returns the end of it.
const unsigned char* single_at(const unsigned char* at, Part* part) {
  const uint32_t type = u32_at(at + 1);
  if (type == XGWKB_TYPE_POINT) {
    part->push_back({{f64_at(at + 5), f64_at(at + 13)}});
    return at + 21;
  }
  if (type == XGWKB_TYPE_LINESTRING) {
    part->emplace_back();
    return path_at(at + 5, &part->back());
  }
  const uint32_t rings = u32_at(at + 5);
  at += 9;
  for (uint32_t i = 0; i < rings; ++i) {
    part->emplace_back();
    at = path_at(at, &part->back());
  }
  return at;
}

void put_u32(std::string& b, uint32_t v) { b.append(reinterpret_cast<const char*>(&v), 4); }
void put_f64(std::string& b, double v) { b.append(reinterpret_cast<const char*>(&v), 8); }

void put_single(std::string& b, uint32_t type, const Part& part) {
  b += '\1';
  put_u32(b, type);
  auto path = [&](const Path& p) {
    put_u32(b, static_cast<uint32_t>(p.size()));
    for (const Pt& q : p) put_f64(b, q.x), put_f64(b, q.y);
  };
  if (type == XGWKB_TYPE_POINT) {
    put_f64(b, part.at(0).at(0).x);
    put_f64(b, part.at(0).at(0).y);
  } else if (type == XGWKB_TYPE_LINESTRING) {
    path(part.empty() ? Path{} : part[0]);
  } else {
    put_u32(b, static_cast<uint32_t>(part.size()));
    for (const Path& p : part) path(p);
  }
}

}  // namespace

bool decode_shape(const unsigned char* blob, Geom* g) {
  g->type = u32_at(blob + 1);
  g->parts.clear();
  if (g->type == XGWKB_TYPE_NIL) return true;
  if (g->type < XGWKB_TYPE_POINT || g->type > XGWKB_TYPE_MULTIPOLYGON) return false;
  if (g->type <= XGWKB_TYPE_POLYGON) {
    g->parts.emplace_back();
    single_at(blob, &g->parts.back());
    return true;
  }
  const uint32_t members = u32_at(blob + 5);
  const unsigned char* at = blob + 9;
  for (uint32_t i = 0; i < members; ++i) {
    g->parts.emplace_back();
    at = single_at(at, &g->parts.back());
  }
  return true;
}

int32_t encode_shape(const Geom& g, unsigned char** shape) {
  std::string b;
  if (g.type >= XGWKB_TYPE_MULTIPOINT) {
    b += '\1';
    put_u32(b, g.type);
    put_u32(b, static_cast<uint32_t>(g.parts.size()));
    for (const Part& p : g.parts) put_single(b, g.type - 3, p);
  } else {
    put_single(b, g.type, g.parts.empty() ? Part{} : g.parts[0]);
  }
  return xgWKB_shape_from_wkb(reinterpret_cast<const unsigned char*>(b.data()), b.size(), shape);
}

}  // namespace xggeo
