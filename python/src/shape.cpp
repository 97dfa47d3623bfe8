// shape.cpp - the Shape class, the GeometryError exception and the blob helpers.
#include "shape.h"

#include <pybind11/eval.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace xgpy {

namespace {

// Set once when the module is imported and never changed afterwards.
PyTypeObject *g_shape_type = nullptr;
PyObject *g_error_type = nullptr;

uint32_t load_u32(const unsigned char *p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

double load_f64(const unsigned char *p) {
  double v;
  std::memcpy(&v, p, 8);
  return v;
}

const char *type_name(uint32_t type) {
  switch (type) {
    case XGWKB_TYPE_NIL: return "Nil";
    case XGWKB_TYPE_POINT: return "Point";
    case XGWKB_TYPE_LINESTRING: return "LineString";
    case XGWKB_TYPE_POLYGON: return "Polygon";
    case XGWKB_TYPE_MULTIPOINT: return "MultiPoint";
    case XGWKB_TYPE_MULTILINESTRING: return "MultiLineString";
    case XGWKB_TYPE_MULTIPOLYGON: return "MultiPolygon";
    case XGWKB_TYPE_ENVELOPE: return "Envelope";
    default: return "Unknown";
  }
}

// Text from the library (released with xgWKB_shape_free_WKT) as a Python string.
std::string take_text(char *text) {
  std::string s(text);
  xgWKB_shape_free_WKT(text);
  return s;
}

}  // namespace

Shape *Shape::adopt(unsigned char *blob) {
  std::size_t size = blob_size(blob);
  if (size == 0) {
    xgWKB_shape_free(blob);
    raise_status(XGWKB_E_INVALID_GEOMETRY_TYPE, "result is not a geometry");
  }
  return new Shape(blob, size);
}

Shape *Shape::from_bytes(const std::string &bytes) {
  const auto *raw = reinterpret_cast<const unsigned char *>(bytes.data());
  int32_t status = xgWKB_shape_check_blob(raw, bytes.size());
  if (status != XGWKB_OK) raise_status(status, "bad shape blob");
  auto *copy = static_cast<unsigned char *>(std::malloc(bytes.size()));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, raw, bytes.size());
  return new Shape(copy, bytes.size());
}

Shape::~Shape() { xgWKB_shape_free(data_); }

uint32_t Shape::type() const { return load_u32(data_ + 1); }

std::size_t blob_size(const unsigned char *blob) {
  uint32_t type = load_u32(blob + 1);
  if (type == XGWKB_TYPE_NIL) return 5;
  if (type == XGWKB_TYPE_ENVELOPE) return 37;
  uint32_t size = 0;
  if (type < XGWKB_TYPE_POINT || type > XGWKB_TYPE_MULTIPOLYGON) return 0;
  if (xgWKB_shape_get_WKB_size(blob, &size) != XGWKB_OK) return 0;
  return size;
}

std::string status_message(int32_t code) {
  char *msg = nullptr;
  if (xgWKB_shape_get_error_description_utf8(code, &msg) && msg != nullptr) {
    std::string s(msg);
    xgWKB_shape_free(msg);
    return s;
  }
  return "status " + std::to_string(code);
}

void raise_status(int32_t code, const std::string &context) {
  std::string msg = status_message(code);
  if (!context.empty()) msg = context + ": " + msg;
  py::object exc = py::reinterpret_borrow<py::object>(g_error_type)(msg, code);
  PyErr_SetObject(g_error_type, exc.ptr());
  throw py::error_already_set();
}

const unsigned char *blob_of(PyObject *obj) {
  if (obj == Py_None) return nullptr;
  if (Py_TYPE(obj) == g_shape_type) {
    auto *inst = reinterpret_cast<py::detail::instance *>(obj);
    if (inst->simple_layout) return static_cast<Shape *>(inst->simple_value_holder[0])->data();
  }
  if (PyObject_TypeCheck(obj, g_shape_type)) return py::handle(obj).cast<const Shape &>().data();
  throw py::type_error(std::string("expected an xggeokit.Shape or None, got ") + Py_TYPE(obj)->tp_name);
}

py::object wrap(unsigned char *blob) {
  return py::cast(Shape::adopt(blob), py::return_value_policy::take_ownership);
}

void register_shape(py::module_ &m) {
  py::dict scope;
  py::exec(R"PY(
class GeometryError(ValueError):
    """A library call failed: code is its status, message the library's text for it."""
    def __init__(self, message, code):
        super().__init__(message, code)
        self.message = message
        self.code = code
    def __str__(self):
        return "%s (status %d)" % (self.message, self.code)
)PY", scope);
  py::object error = scope["GeometryError"];
  error.attr("__module__") = "xggeokit";
  m.attr("GeometryError") = error;
  g_error_type = error.release().ptr();  // kept for the life of the process

  py::class_<Shape> cls(m, "Shape", R"(One immutable shape: a little-endian blob of the library.

Shape(blob) checks the bytes with the bounded blob check and raises GeometryError on a bad one;
bytes(shape) gives the blob back.)");
  cls.def(py::init([](py::bytes blob) { return Shape::from_bytes(std::string(blob)); }), py::arg("blob"))
      .def("__bytes__", [](const Shape &s) {
        return py::bytes(reinterpret_cast<const char *>(s.data()), s.size());
      })
      .def("__eq__", [](const Shape &a, py::object other) -> py::object {
        if (!py::isinstance<Shape>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
        const Shape &b = other.cast<const Shape &>();
        return py::bool_(a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0);
      })
      .def("__hash__", [](const Shape &s) {
        return py::hash(py::bytes(reinterpret_cast<const char *>(s.data()), s.size()));
      })
      .def("__reduce__", [](py::object self) {
        // Pickles as its bytes, so shapes travel between processes and machines.
        const Shape &s = self.cast<const Shape &>();
        return py::make_tuple(self.get_type(),
                              py::make_tuple(py::bytes(reinterpret_cast<const char *>(s.data()), s.size())));
      })
      .def_property_readonly("type", [](const Shape &s) { return type_name(s.type()); },
                             "The geometry type: Point, LineString, Polygon, Multi..., Nil or Envelope.")
      .def_property_readonly("type_code", &Shape::type, "The type code stored in the blob.")
      .def_property_readonly("wkt", [](const Shape &s) -> std::string {
        // The nil shape has no dialect text of its own; "point empty" reads back as nil.
        if (s.type() == XGWKB_TYPE_NIL) return "point empty";
        char *text = nullptr;
        int32_t status = xgWKB_shape_generate_to_WKT(s.data(), &text);
        if (status != XGWKB_OK) raise_status(status, "to_wkt");
        return take_text(text);
      }, "The library's WKT dialect.")
      .def_property_readonly("ogc_wkt", [](const Shape &s) {
        char *text = nullptr;
        int32_t status = xgWKB_shape_to_ogc_wkt(s.data(), -1, &text);
        if (status != XGWKB_OK) raise_status(status, "to_ogc_wkt");
        return take_text(text);
      }, "OGC WKT with the shortest digits that read back exactly.")
      .def_property_readonly("wkb", [](const Shape &s) {
        unsigned char *out = nullptr;
        uint32_t size = 0;
        int32_t status = xgWKB_shape_to_wkb(s.data(), 0, &out, &size);
        if (status != XGWKB_OK) raise_status(status, "to_wkb");
        py::bytes b(reinterpret_cast<const char *>(out), size);
        xgWKB_shape_free(out);
        return b;
      }, "Standard little-endian 2D WKB.")
      .def_property_readonly("bounds", [](const Shape &s) -> py::tuple {
        if (s.type() == XGWKB_TYPE_ENVELOPE) {
          const unsigned char *p = s.data() + 5;
          return py::make_tuple(load_f64(p), load_f64(p + 8), load_f64(p + 16), load_f64(p + 24));
        }
        if (s.type() == XGWKB_TYPE_NIL) {
          const double nan = std::numeric_limits<double>::quiet_NaN();
          return py::make_tuple(nan, nan, nan, nan);  // the empty shape has no bounds
        }
        _xgWKB_BOX box{};
        int32_t status = xgWKB_shape_get_extent(s.data(), 0, &box);
        if (status != XGWKB_OK) raise_status(status, "bounds");
        return py::make_tuple(box.minx, box.miny, box.maxx, box.maxy);
      }, "(minx, miny, maxx, maxy).")
      .def("__repr__", [](const Shape &s) {
        std::string text;
        if (s.type() >= XGWKB_TYPE_POINT && s.type() <= XGWKB_TYPE_MULTIPOLYGON) {
          char *wkt = nullptr;
          if (xgWKB_shape_to_ogc_wkt(s.data(), -1, &wkt) == XGWKB_OK) text = take_text(wkt);
        } else {
          text = type_name(s.type());
        }
        if (text.size() > 60) text = text.substr(0, 57) + "...";
        return "<Shape " + text + ">";
      });
  g_shape_type = reinterpret_cast<PyTypeObject *>(cls.ptr());
}

}  // namespace xgpy
