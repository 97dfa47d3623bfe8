// coords.cpp - coordinates in and out of shapes: the nested coordinate lists behind GeoJSON and
// SVG output, and the constructors from coordinate arrays.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cstring>
#include <vector>

#include "shape.h"

namespace xgpy {

namespace {

using Coords = py::array_t<double, py::array::c_style | py::array::forcecast>;

// A walk over a blob the library made or the blob check accepted, following the layout the
// public header documents (little-endian counts and doubles at any offset).
class Reader {
 public:
  explicit Reader(const unsigned char *blob) : p_(blob) {}
  uint32_t u32() {
    uint32_t v;
    std::memcpy(&v, p_, 4);
    p_ += 4;
    return v;
  }
  void skip(std::size_t n) { p_ += n; }
  // n points as an (n, 2) array.
  py::array_t<double> points(uint32_t n) {
    py::array_t<double> a({static_cast<py::ssize_t>(n), static_cast<py::ssize_t>(2)});
    if (n != 0) std::memcpy(a.mutable_data(), p_, 16u * n);
    p_ += 16u * n;
    return a;
  }
  py::list rings() {
    py::list out;
    for (uint32_t r = u32(); r > 0; --r) out.append(points(u32()));
    return out;
  }
  // The member headers of a multi-type: byte-order byte and type.
  void member_header() { skip(5); }

 private:
  const unsigned char *p_;
};

// (type code, coordinates): point a (1, 2) array, linestring and multipoint (n, 2) arrays, polygon
// a list of ring arrays, multilinestring a list of arrays, multipolygon a list of ring lists, nil
// None, envelope (minx, miny, maxx, maxy).
py::tuple parts(py::object shape) {
  const unsigned char *blob = blob_of(shape.ptr());
  if (blob == nullptr) throw py::type_error("parts: expected a Shape");
  Reader r(blob);
  r.skip(1);
  uint32_t type = r.u32();
  py::object coords = py::none();
  switch (type) {
    case XGWKB_TYPE_POINT: coords = r.points(1); break;
    case XGWKB_TYPE_LINESTRING: coords = r.points(r.u32()); break;
    case XGWKB_TYPE_POLYGON: coords = r.rings(); break;
    case XGWKB_TYPE_MULTIPOINT: {
      uint32_t k = r.u32();
      py::array_t<double> a({static_cast<py::ssize_t>(k), static_cast<py::ssize_t>(2)});
      for (uint32_t i = 0; i < k; ++i) {
        r.member_header();
        py::array_t<double> pt = r.points(1);
        a.mutable_at(i, 0) = pt.at(0, 0);
        a.mutable_at(i, 1) = pt.at(0, 1);
      }
      coords = a;
      break;
    }
    case XGWKB_TYPE_MULTILINESTRING: {
      py::list lines;
      for (uint32_t k = r.u32(); k > 0; --k) {
        r.member_header();
        lines.append(r.points(r.u32()));
      }
      coords = lines;
      break;
    }
    case XGWKB_TYPE_MULTIPOLYGON: {
      py::list polys;
      for (uint32_t k = r.u32(); k > 0; --k) {
        r.member_header();
        polys.append(r.rings());
      }
      coords = polys;
      break;
    }
    case XGWKB_TYPE_ENVELOPE: coords = py::tuple(r.points(2).attr("ravel")()); break;
    default: break;
  }
  return py::make_tuple(type, coords);
}

const _xgWKB_POINT *as_points(const Coords &xy, const char *what) {
  if (xy.ndim() != 2 || xy.shape(1) != 2) throw py::value_error(std::string(what) + ": expected an (n, 2) array");
  // Two packed doubles per point, as the C structure lays them out.
  return reinterpret_cast<const _xgWKB_POINT *>(xy.data());
}

py::object checked(int32_t status, unsigned char *blob, const char *what) {
  if (status != XGWKB_OK) {
    xgWKB_shape_free(blob);
    raise_status(status, what);
  }
  return wrap(blob);
}

// Points from an (n, 2) array, as an object array of n shapes.
py::array make_points(Coords xy) {
  const _xgWKB_POINT *pts = as_points(xy, "points");
  std::size_t n = static_cast<std::size_t>(xy.shape(0));
  py::array out = py::module_::import("numpy").attr("empty")(n, py::arg("dtype") = "object");
  auto **items = static_cast<PyObject **>(out.mutable_data());
  for (std::size_t i = 0; i < n; ++i) {
    unsigned char *blob = nullptr;
    int32_t status = xgWKB_shape_generate_point(&pts[i], &blob);
    py::object s = checked(status, blob, "points");
    Py_XDECREF(items[i]);
    items[i] = s.release().ptr();
  }
  return out;
}

py::object make_line(Coords xy) {
  const _xgWKB_POINT *pts = as_points(xy, "linestring");
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_generate_line(static_cast<int32_t>(xy.shape(0)), pts, &blob);
  return checked(status, blob, "linestring");
}

py::object make_multipoint(Coords xy) {
  const _xgWKB_POINT *pts = as_points(xy, "multipoint");
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_generate_multipoint(static_cast<int32_t>(xy.shape(0)), pts, &blob);
  return checked(status, blob, "multipoint");
}

// Rings (or lines) laid end to end, with their point counts.
struct Runs {
  std::vector<_xgWKB_POINT> points;
  std::vector<int32_t> counts;
};

Runs runs_of(const std::vector<Coords> &parts, const char *what) {
  Runs runs;
  for (const Coords &xy : parts) {
    const _xgWKB_POINT *pts = as_points(xy, what);
    runs.points.insert(runs.points.end(), pts, pts + xy.shape(0));
    runs.counts.push_back(static_cast<int32_t>(xy.shape(0)));
  }
  return runs;
}

py::object make_polygon(const std::vector<Coords> &rings) {
  Runs runs = runs_of(rings, "polygon");
  if (runs.counts.empty()) raise_status(XGWKB_E_TOO_FEW_POINTS, "polygon");
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_generate_polygon(static_cast<int32_t>(runs.points.size()),
                                                static_cast<int32_t>(runs.counts.size()), runs.counts.data(),
                                                runs.points.data(), &blob);
  return checked(status, blob, "polygon");
}

py::object make_multiline(const std::vector<Coords> &lines) {
  Runs runs = runs_of(lines, "multilinestring");
  unsigned char *blob = nullptr;
  static const _xgWKB_POINT kNoPoint{0, 0};
  int32_t status = xgWKB_shape_generate_multiline(
      static_cast<int32_t>(runs.points.size()), static_cast<int32_t>(runs.counts.size()), runs.counts.data(),
      runs.points.empty() ? &kNoPoint : runs.points.data(), &blob);
  return checked(status, blob, "multilinestring");
}

// A multi-type of the given shapes, through the library's combine.
py::object combine(py::list shapes) {
  std::vector<const unsigned char *> blobs;
  for (py::handle h : shapes) {
    const unsigned char *b = blob_of(h.ptr());
    if (b == nullptr) throw py::type_error("combine: None among the shapes");
    blobs.push_back(b);
  }
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_combine(blobs.data(), static_cast<int32_t>(blobs.size()), &blob);
  return checked(status, blob, "combine");
}

py::object make_envelope(double minx, double miny, double maxx, double maxy) {
  _xgWKB_BOX box{minx, miny, maxx, maxy};
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_generate_envelope(&box, &blob);
  return checked(status, blob, "envelope");
}

py::object make_nil() {
  unsigned char *blob = nullptr;
  int32_t status = xgWKB_shape_make_nil(1, &blob);
  return checked(status, blob, "nil");
}

}  // namespace

void register_coords(py::module_ &m) {
  m.def("parts", &parts, py::arg("shape"), "(type code, nested coordinate arrays) of one shape.");
  m.def("make_points", &make_points, py::arg("xy"));
  m.def("make_line", &make_line, py::arg("xy"));
  m.def("make_multipoint", &make_multipoint, py::arg("xy"));
  m.def("make_polygon", &make_polygon, py::arg("rings"));
  m.def("make_multiline", &make_multiline, py::arg("lines"));
  m.def("combine", &combine, py::arg("shapes"));
  m.def("make_envelope", &make_envelope, py::arg("minx"), py::arg("miny"), py::arg("maxx"), py::arg("maxy"));
  m.def("make_nil", &make_nil);
}

}  // namespace xgpy
