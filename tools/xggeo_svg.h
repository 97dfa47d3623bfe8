// xggeo_svg.h - one SVG picture of the geometries of a run: -a, -b and the results.
#ifndef XGGEO_TOOLS_XGGEO_SVG_H
#define XGGEO_TOOLS_XGGEO_SVG_H

#include <string>
#include <vector>

#include "xggeo_geom.h"

namespace xggeo {

struct SvgLayer {
  std::string name;    // the group's id: "a", "b", "result"
  std::string colour;  // stroke and fill colour
  std::vector<Geom> geoms;
};

// A standalone SVG document drawing the layers in order, y up, the stroke scaled to the extent.
std::string svg_document(const std::vector<SvgLayer>& layers);

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_SVG_H
