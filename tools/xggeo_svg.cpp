// xggeo_svg.cpp - drawing geometries as SVG (see xggeo_svg.h).
//
// Map coordinates go into the picture unchanged; one group flips the y axis (scale(1,-1)) so
// north is up, and the viewBox covers the extent of everything drawn plus a margin.  Stroke width
// and point radius are fractions of the extent, so a picture of kilometres and one of millimetres
// look alike.
#include "xggeo_svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "xggeokit.h"

namespace xggeo {
namespace {

void num(std::string& out, double v) {
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

void path_data(std::string& out, const Path& p, bool close) {
  for (std::size_t i = 0; i < p.size(); ++i) {
    out += i == 0 ? 'M' : 'L';
    num(out, p[i].x);
    out += ' ';
    num(out, p[i].y);
  }
  if (close && !p.empty()) out += 'Z';
}

}  // namespace

std::string svg_document(const std::vector<SvgLayer>& layers) {
  double minx = INFINITY, miny = INFINITY, maxx = -INFINITY, maxy = -INFINITY;
  for (const SvgLayer& l : layers)
    for (const Geom& g : l.geoms)
      for (const Part& part : g.parts)
        for (const Path& p : part)
          for (const Pt& q : p) {
            if (!std::isfinite(q.x) || !std::isfinite(q.y)) continue;
            minx = std::min(minx, q.x), maxx = std::max(maxx, q.x);
            miny = std::min(miny, q.y), maxy = std::max(maxy, q.y);
          }
  if (minx > maxx) minx = miny = 0, maxx = maxy = 1;  // nothing to draw
  double size = std::max(maxx - minx, maxy - miny);
  if (size <= 0) size = 1;
  const double margin = size * 0.05, stroke = size / 250;
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"";
  num(out, minx - margin);
  out += ' ';
  num(out, -maxy - margin);
  out += ' ';
  num(out, maxx - minx + 2 * margin);
  out += ' ';
  num(out, maxy - miny + 2 * margin);
  out += "\" width=\"800\" height=\"800\" preserveAspectRatio=\"xMidYMid meet\">\n<g transform=\"scale(1,-1)\" stroke-width=\"";
  num(out, stroke);
  out += "\" stroke-linejoin=\"round\">\n";
  for (const SvgLayer& l : layers) {
    out += "<g id=\"" + l.name + "\" stroke=\"" + l.colour + "\" fill=\"" + l.colour + "\">\n";
    for (const Geom& g : l.geoms) {
      const bool area = g.type == XGWKB_TYPE_POLYGON || g.type == XGWKB_TYPE_MULTIPOLYGON;
      const bool dots = g.type == XGWKB_TYPE_POINT || g.type == XGWKB_TYPE_MULTIPOINT;
      for (const Part& part : g.parts) {
        if (dots) {
          for (const Path& p : part) {
            if (p.empty()) continue;
            out += "<circle cx=\"";
            num(out, p[0].x);
            out += "\" cy=\"";
            num(out, p[0].y);
            out += "\" r=\"";
            num(out, 2 * stroke);
            out += "\"/>\n";
          }
          continue;
        }
        out += area ? "<path fill-opacity=\"0.25\" fill-rule=\"evenodd\" d=\"" : "<path fill=\"none\" d=\"";
        for (const Path& p : part) path_data(out, p, area);
        out += "\"/>\n";
      }
    }
    out += "</g>\n";
  }
  out += "</g>\n</svg>\n";
  return out;
}

}  // namespace xggeo
