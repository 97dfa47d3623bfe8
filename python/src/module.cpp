// module.cpp - the extension module _xggeokit behind the Python package xggeokit.
#include "shape.h"

namespace xgpy {
void register_kernels(py::module_ &m);
void register_coords(py::module_ &m);
}  // namespace xgpy

PYBIND11_MODULE(_xggeokit, m) {
  m.doc() = "Bindings of the xgGeoKit C interface; use the xggeokit package.";
  xgpy::register_shape(m);
  xgpy::register_kernels(m);
  xgpy::register_coords(m);
  m.def("status_message", &xgpy::status_message, pybind11::arg("code"),
        "The library's UTF-8 message for a status code.");
}
