// kernels.cpp - the vectorised drivers: each takes flat object arrays of shapes (the Python
// package broadcasts and flattens), gathers the blobs with the GIL held, runs the operation over
// every element on the thread pool without the GIL, then builds the numpy result.  None in, None
// (or nan, or False) out; the first failure in input order raises GeometryError, whatever the
// number of threads, unless the caller asked for failures to come out as missing values.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ops.h"
#include "parallel.h"
#include "shape.h"

namespace xgpy {

namespace {

using Blobs = std::vector<const unsigned char *>;

// The items of a one-dimensional object array (element stride in items).
struct ObjectItems {
  PyObject *const *items;
  std::size_t n;
  std::size_t stride;
  PyObject *at(std::size_t i) const { return items[i * stride]; }
};

ObjectItems object_items(const py::array &a) {
  if (a.dtype().kind() != 'O' || a.ndim() != 1)
    throw py::type_error("expected a one-dimensional array of dtype object");
  return ObjectItems{static_cast<PyObject *const *>(a.data()), static_cast<std::size_t>(a.shape(0)),
                     static_cast<std::size_t>(a.strides(0)) / sizeof(PyObject *)};
}

Blobs blobs_of(const py::array &a) {
  ObjectItems items = object_items(a);
  Blobs blobs(items.n);
  for (std::size_t i = 0; i < items.n; ++i) blobs[i] = blob_of(items.at(i));
  return blobs;
}

// Two operands broadcast against each other: each has n elements or exactly one.
std::size_t paired_length(const Blobs &a, const Blobs &b) {
  if (a.size() == b.size() || b.size() == 1) return a.size();
  if (a.size() == 1) return b.size();
  throw py::value_error("operands of different lengths");
}

// Raises for the first failure in input order; the statuses of missing inputs are 0.
void check_statuses(const std::vector<int32_t> &status, const char *name) {
  for (std::size_t i = 0; i < status.size(); ++i)
    if (status[i] < 0) raise_status(status[i], std::string(name) + " at index " + std::to_string(i));
}

std::vector<double> params_of(const std::vector<double> &given, std::size_t at_least) {
  std::vector<double> p(given);
  if (p.size() < at_least) p.resize(at_least, 0.0);
  return p;
}

// numpy.empty(n, dtype=object): every item None.  The function is looked up once and kept for
// the life of the process (never released, so nothing runs after the interpreter is gone).
py::array new_object_array(std::size_t n) {
  static PyObject *const empty = py::object(py::module_::import("numpy").attr("empty")).release().ptr();
  return py::reinterpret_borrow<py::object>(empty)(n, py::arg("dtype") = "object");
}

// Stores a new reference in slot i of an object array built by new_object_array.
void set_item(py::array &out, std::size_t i, PyObject *value) {
  auto **items = static_cast<PyObject **>(out.mutable_data());
  PyObject *old = items[i];
  items[i] = value;
  Py_XDECREF(old);
}

// Wraps result blobs as Shapes (null stays None).  On a failure every blob not yet handed to a
// Shape is released before the error propagates.
py::array shapes_to_array(std::vector<unsigned char *> &blobs) {
  py::array out;
  try {
    out = new_object_array(blobs.size());
    for (std::size_t i = 0; i < blobs.size(); ++i) {
      if (blobs[i] == nullptr) continue;
      unsigned char *blob = blobs[i];
      blobs[i] = nullptr;
      set_item(out, i, wrap(blob).release().ptr());
    }
  } catch (...) {
    for (unsigned char *b : blobs) xgWKB_shape_free(b);
    throw;
  }
  return out;
}

void free_all(std::vector<unsigned char *> &blobs) {
  for (unsigned char *&b : blobs) {
    xgWKB_shape_free(b);
    b = nullptr;
  }
}

py::array finish_shapes(std::vector<unsigned char *> &results, const std::vector<int32_t> &status, bool raise,
                        const char *name) {
  if (raise) {
    try {
      check_statuses(status, name);
    } catch (...) {
      free_all(results);
      throw;
    }
  }
  return shapes_to_array(results);
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---- one shape in ----------------------------------------------------------------------------

py::array run_f64(const F64Op &op, const py::array &a, const std::vector<double> &given, int threads, bool raise) {
  Blobs in = blobs_of(a);
  std::vector<double> p = params_of(given, 8);
  std::size_t n = in.size(), w = static_cast<std::size_t>(op.nout);
  py::array_t<double> out = w == 1 ? py::array_t<double>(n) : py::array_t<double>({n, w});
  double *res = out.mutable_data();
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    double *slot = res + i * w;
    if (in[i] == nullptr) {
      for (std::size_t k = 0; k < w; ++k) slot[k] = kNaN;
      return;
    }
    status[i] = op.fn(in[i], p.data(), slot);
    if (status[i] < 0)
      for (std::size_t k = 0; k < w; ++k) slot[k] = kNaN;
  });
  if (raise) check_statuses(status, op.name);
  return out;
}

py::array run_bool(const BoolOp &op, const py::array &a, const std::vector<double> &given, int threads, bool raise) {
  Blobs in = blobs_of(a);
  std::vector<double> p = params_of(given, 8);
  std::size_t n = in.size();
  py::array_t<bool> out(n);
  bool *res = out.mutable_data();
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    int32_t r = in[i] == nullptr ? 0 : op.fn(in[i], p.data());
    status[i] = r < 0 ? r : 0;
    res[i] = r > 0;
  });
  if (raise) check_statuses(status, op.name);
  return out;
}

py::array run_shape(const ShapeOp &op, const py::array &a, const std::vector<double> &given, int threads, bool raise) {
  Blobs in = blobs_of(a);
  std::vector<double> p = params_of(given, 8);
  std::size_t n = in.size();
  std::vector<unsigned char *> results(n, nullptr);
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    if (in[i] == nullptr) return;
    unsigned char *r = nullptr;
    status[i] = op.fn(in[i], p.data(), &r);
    if (status[i] < 0) xgWKB_shape_free(r);
    else results[i] = r;
  });
  return finish_shapes(results, status, raise, op.name);
}

py::array run_text(const TextOp &op, const py::array &a, const std::vector<double> &given, int threads, bool raise) {
  Blobs in = blobs_of(a);
  std::vector<double> p = params_of(given, 8);
  std::size_t n = in.size();
  std::vector<std::string> texts(n);
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    if (in[i] != nullptr) status[i] = op.fn(in[i], p.data(), &texts[i]);
  });
  if (raise) check_statuses(status, op.name);
  py::array out = new_object_array(n);
  for (std::size_t i = 0; i < n; ++i) {
    if (in[i] == nullptr || status[i] < 0) continue;
    const std::string &t = texts[i];
    PyObject *v = op.binary ? PyBytes_FromStringAndSize(t.data(), static_cast<Py_ssize_t>(t.size()))
                            : PyUnicode_DecodeUTF8(t.data(), static_cast<Py_ssize_t>(t.size()), "replace");
    if (v == nullptr) throw py::error_already_set();
    set_item(out, i, v);
  }
  return out;
}

// ---- two shapes in -----------------------------------------------------------------------------

py::array run_predicate(const PredicateOp &op, const py::array &a, const py::array &b, double t, int threads,
                        bool raise) {
  Blobs ina = blobs_of(a), inb = blobs_of(b);
  std::size_t n = paired_length(ina, inb);
  const bool one_a = ina.size() == 1 && n != 1, one_b = inb.size() == 1 && n != 1;
  py::array_t<bool> out(n);
  bool *res = out.mutable_data();
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    const unsigned char *x = ina[one_a ? 0 : i], *y = inb[one_b ? 0 : i];
    int32_t r = (x == nullptr || y == nullptr) ? 0 : op.fn(x, y, t);
    status[i] = r < 0 ? r : 0;
    res[i] = r > 0;
  });
  if (raise) check_statuses(status, op.name);
  return out;
}

py::array run_binary_f64(const BinaryF64Op &op, const py::array &a, const py::array &b, double t, int threads,
                         bool raise) {
  Blobs ina = blobs_of(a), inb = blobs_of(b);
  std::size_t n = paired_length(ina, inb);
  const bool one_a = ina.size() == 1 && n != 1, one_b = inb.size() == 1 && n != 1;
  py::array_t<double> out(n);
  double *res = out.mutable_data();
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    const unsigned char *x = ina[one_a ? 0 : i], *y = inb[one_b ? 0 : i];
    res[i] = kNaN;
    if (x != nullptr && y != nullptr) {
      status[i] = op.fn(x, y, t, res + i);
      if (status[i] < 0) res[i] = kNaN;
    }
  });
  if (raise) check_statuses(status, op.name);
  return out;
}

py::array run_binary_shape(const BinaryShapeOp &op, const py::array &a, const py::array &b, double t, int threads,
                           bool raise) {
  Blobs ina = blobs_of(a), inb = blobs_of(b);
  std::size_t n = paired_length(ina, inb);
  const bool one_a = ina.size() == 1 && n != 1, one_b = inb.size() == 1 && n != 1;
  std::vector<unsigned char *> results(n, nullptr);
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    const unsigned char *x = ina[one_a ? 0 : i], *y = inb[one_b ? 0 : i];
    if (x == nullptr || y == nullptr) return;
    unsigned char *r = nullptr;
    status[i] = op.fn(x, y, &r, t);
    if (status[i] < 0) xgWKB_shape_free(r);
    else results[i] = r;
  });
  return finish_shapes(results, status, raise, op.name);
}

// The three parts of two shapes (only in a, only in b, in both): three object arrays.
py::tuple run_overlay(const py::array &a, const py::array &b, double t, int threads, bool raise) {
  Blobs ina = blobs_of(a), inb = blobs_of(b);
  std::size_t n = paired_length(ina, inb);
  const bool one_a = ina.size() == 1 && n != 1, one_b = inb.size() == 1 && n != 1;
  std::vector<unsigned char *> only_a(n, nullptr), only_b(n, nullptr), common(n, nullptr);
  std::vector<int32_t> status(n, 0);
  parallel_for(n, threads, [&](std::size_t i) {
    const unsigned char *x = ina[one_a ? 0 : i], *y = inb[one_b ? 0 : i];
    if (x == nullptr || y == nullptr) return;
    unsigned char *ra = nullptr, *rb = nullptr, *rc = nullptr;
    status[i] = xgWKB_shape_overlay(x, y, &ra, &rb, &rc, t);
    if (status[i] < 0) {
      xgWKB_shape_free(ra), xgWKB_shape_free(rb), xgWKB_shape_free(rc);
      return;
    }
    only_a[i] = ra, only_b[i] = rb, common[i] = rc;
  });
  if (raise) {
    try {
      check_statuses(status, "overlay");
    } catch (...) {
      free_all(only_a), free_all(only_b), free_all(common);
      throw;
    }
  }
  py::array ra, rb;
  try {
    ra = shapes_to_array(only_a);
    rb = shapes_to_array(only_b);
  } catch (...) {
    free_all(only_b), free_all(common);
    throw;
  }
  return py::make_tuple(ra, rb, shapes_to_array(common));
}

// ---- text or bytes in ------------------------------------------------------------------------

py::array run_read(const ReadOp &op, const py::array &a, int threads, bool raise) {
  ObjectItems items = object_items(a);
  std::vector<const char *> data(items.n, nullptr);
  std::vector<std::size_t> lens(items.n, 0);
  for (std::size_t i = 0; i < items.n; ++i) {
    PyObject *o = items.at(i);
    if (o == Py_None) continue;
    Py_ssize_t len = 0;
    if (PyUnicode_Check(o)) {
      data[i] = PyUnicode_AsUTF8AndSize(o, &len);
      if (data[i] == nullptr) throw py::error_already_set();
    } else if (PyBytes_Check(o)) {
      char *buf = nullptr;
      if (PyBytes_AsStringAndSize(o, &buf, &len) != 0) throw py::error_already_set();
      data[i] = buf;
    } else {
      throw py::type_error(std::string(op.name) + ": expected str, bytes or None, got " + Py_TYPE(o)->tp_name);
    }
    lens[i] = static_cast<std::size_t>(len);
  }
  std::vector<unsigned char *> results(items.n, nullptr);
  std::vector<int32_t> status(items.n, 0);
  parallel_for(items.n, threads, [&](std::size_t i) {
    if (data[i] == nullptr) return;
    unsigned char *r = nullptr;
    status[i] = op.fn(data[i], lens[i], &r);
    if (status[i] < 0) xgWKB_shape_free(r);
    else results[i] = r;
  });
  return finish_shapes(results, status, raise, op.name);
}

}  // namespace

void register_kernels(py::module_ &m) {
  // Each row becomes kernels.<name>; OPS lists (kind, name, params, doc) for the package to wrap.
  py::module_ k = m.def_submodule("kernels", "Flat-array drivers of the vectorised functions.");
  py::list ops;
  auto unary_args = [] {
    return std::make_tuple(py::arg("a"), py::arg("params"), py::arg("threads") = 0, py::arg("raise_errors") = true);
  };
  auto binary_args = [] {
    return std::make_tuple(py::arg("a"), py::arg("b"), py::arg("tolerance"), py::arg("threads") = 0,
                           py::arg("raise_errors") = true);
  };
  for (const F64Op &op : f64_ops()) {
    const F64Op *o = &op;
    auto [a, p, t, r] = unary_args();
    k.def(op.name, [o](py::array x, std::vector<double> p, int t, bool r) { return run_f64(*o, x, p, t, r); }, a, p, t, r);
    ops.append(py::make_tuple("unary_f64", op.name, op.params, op.doc));
  }
  for (const BoolOp &op : bool_ops()) {
    const BoolOp *o = &op;
    auto [a, p, t, r] = unary_args();
    k.def(op.name, [o](py::array x, std::vector<double> p, int t, bool r) { return run_bool(*o, x, p, t, r); }, a, p, t, r);
    ops.append(py::make_tuple("unary_bool", op.name, op.params, op.doc));
  }
  for (const ShapeOp &op : shape_ops()) {
    const ShapeOp *o = &op;
    auto [a, p, t, r] = unary_args();
    k.def(op.name, [o](py::array x, std::vector<double> p, int t, bool r) { return run_shape(*o, x, p, t, r); }, a, p, t, r);
    ops.append(py::make_tuple("unary_shape", op.name, op.params, op.doc));
  }
  for (const TextOp &op : text_ops()) {
    const TextOp *o = &op;
    auto [a, p, t, r] = unary_args();
    k.def(op.name, [o](py::array x, std::vector<double> p, int t, bool r) { return run_text(*o, x, p, t, r); }, a, p, t, r);
    ops.append(py::make_tuple("unary_text", op.name, op.params, op.doc));
  }
  for (const PredicateOp &op : predicate_ops()) {
    const PredicateOp *o = &op;
    auto [a, b, tol, t, r] = binary_args();
    k.def(op.name, [o](py::array x, py::array y, double tol, int t, bool r) { return run_predicate(*o, x, y, tol, t, r); },
          a, b, tol, t, r);
    ops.append(py::make_tuple("binary_bool", op.name, "", op.doc));
  }
  for (const BinaryF64Op &op : binary_f64_ops()) {
    const BinaryF64Op *o = &op;
    auto [a, b, tol, t, r] = binary_args();
    k.def(op.name, [o](py::array x, py::array y, double tol, int t, bool r) { return run_binary_f64(*o, x, y, tol, t, r); },
          a, b, tol, t, r);
    ops.append(py::make_tuple("binary_f64", op.name, "", op.doc));
  }
  for (const BinaryShapeOp &op : binary_shape_ops()) {
    const BinaryShapeOp *o = &op;
    auto [a, b, tol, t, r] = binary_args();
    k.def(op.name, [o](py::array x, py::array y, double tol, int t, bool r) { return run_binary_shape(*o, x, y, tol, t, r); },
          a, b, tol, t, r);
    ops.append(py::make_tuple("binary_shape", op.name, "", op.doc));
  }
  for (const ReadOp &op : read_ops()) {
    const ReadOp *o = &op;
    k.def(op.name, [o](py::array x, int t, bool r) { return run_read(*o, x, t, r); }, py::arg("a"),
          py::arg("threads") = 0, py::arg("raise_errors") = true);
    ops.append(py::make_tuple("read", op.name, "", op.doc));
  }
  k.def("overlay", &run_overlay, py::arg("a"), py::arg("b"), py::arg("tolerance"), py::arg("threads") = 0,
        py::arg("raise_errors") = true);
  m.attr("OPS") = ops;
}

}  // namespace xgpy
