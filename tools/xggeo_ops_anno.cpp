// xggeo_ops_anno.cpp - operations on text annotations.  Annotations have no WKT of their own, so
// the tool builds a SingleText from its fields given as arguments and prints fields back.
#include <cstdlib>
#include <string>

#include "xggeo_ops.h"
#include "xggeokit.h"

namespace xggeo {
namespace {

// Frees a SingleText when it goes out of scope.
struct Anno {
  unsigned char* p = nullptr;
  ~Anno() { xgWKB_anno_free(p); }
};

// Arguments TEXT X Y ANGLE MINX MINY MAXX MAXY [LX LY]; without a leader the leader argument is
// the text point itself, which the library stores as no leader.
int32_t build(const Args& args, Anno& anno) {
  if (args.size() == 9) throw UsageError("a leader point needs both LX and LY");
  const _xgWKB_POINT at{args.real(1), args.real(2)};
  const _xgWKB_BOX box{args.real(4), args.real(5), args.real(6), args.real(7)};
  const _xgWKB_POINT leader = args.size() >= 10 ? _xgWKB_POINT{args.real(8), args.real(9)} : at;
  return xgWKB_anno_create(&at, &leader, &box, args.real(3), args.text(0).c_str(), nullptr, &anno.p);
}

}  // namespace

int32_t op_text(const Operands&, const Args& args, Output& out) {
  Anno anno;
  int32_t status = build(args, anno);
  if (status != XGWKB_OK) return status;
  // Text, text point, angle, leader point (or "none"), box.  The stored text has the argument's
  // length and no terminator.
  char* text = nullptr;
  if ((status = xgWKB_anno_get_text(anno.p, &text)) != XGWKB_OK) return status;
  const std::string stored(text, args.text(0).size());
  std::free(text);
  _xgWKB_POINT at{}, leader{};
  double angle = 0;
  _xgWKB_BOX box{};
  xgWKB_anno_get_text_point(anno.p, &at);
  xgWKB_anno_get_angle(anno.p, &angle);
  xgWKB_anno_get_extent(anno.p, &box);
  out.text(stored);
  out.real(at.x);
  out.real(at.y);
  out.real(angle);
  if (xgWKB_anno_get_leader_point(anno.p, &leader) == XGWKB_OK) {
    out.real(leader.x);
    out.real(leader.y);
  } else {
    out.text("none");
  }
  for (double v : {box.minx, box.miny, box.maxx, box.maxy}) out.real(v);
  return XGWKB_OK;
}

int32_t op_outline(const Operands&, const Args& args, Output& out) {
  Anno anno;
  int32_t status = build(args, anno);
  if (status != XGWKB_OK) return status;
  unsigned char* polygon = nullptr;
  if ((status = xgWKB_anno_get_outline(anno.p, &polygon)) != XGWKB_OK) return status;
  return out.shape(polygon);
}

}  // namespace xggeo
