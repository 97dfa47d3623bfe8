"""An SVG picture of a shape, so that notebooks draw it."""
from . import _xggeokit
from ._xggeokit import Shape


def _path(rings):
    d = []
    for ring in rings:
        if len(ring):
            d.append("M " + " L ".join("%r %r" % (float(x), float(y)) for x, y in ring) + " Z")
    return " ".join(d)


def _line(xy):
    return " ".join("%r,%r" % (float(x), float(y)) for x, y in xy)


def _body(code, parts, width):
    if code in (1, 4):
        return "".join('<circle cx="%r" cy="%r" r="%r" fill="#66cc99" stroke="#555555"/>'
                       % (float(x), float(y), 3 * width) for x, y in parts)
    if code == 2:
        return '<polyline fill="none" stroke="#66cc99" points="%s"/>' % _line(parts)
    if code == 5:
        return "".join(_body(2, line, width) for line in parts)
    if code == 3:
        return ('<path fill-rule="evenodd" fill="#66cc99" fill-opacity="0.6" stroke="#555555" d="%s"/>'
                % _path(parts))
    if code == 6:
        return "".join(_body(3, poly, width) for poly in parts)
    return ""


def repr_svg(shape):
    code, parts = _xggeokit.parts(shape)
    if code not in range(1, 7):
        return '<svg xmlns="http://www.w3.org/2000/svg" width="100" height="100"/>'
    minx, miny, maxx, maxy = shape.bounds
    span = max(maxx - minx, maxy - miny) or 1.0
    pad = span * 0.05
    minx, miny, w, h = minx - pad, miny - pad, (maxx - minx) + 2 * pad or 1.0, (maxy - miny) + 2 * pad or 1.0
    width = max(w, h) / 100.0
    # y grows downwards in SVG: flip about the centre of the box.
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="300" height="300" viewBox="%r %r %r %r" '
            'preserveAspectRatio="xMinYMin meet"><g transform="matrix(1,0,0,-1,0,%r)" stroke-width="%r">%s</g>'
            '</svg>' % (minx, miny, w, h, 2 * miny + h, width, _body(code, parts, width)))


Shape._repr_svg_ = repr_svg
