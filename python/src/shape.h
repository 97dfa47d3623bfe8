// shape.h - the Python-side shape object and the helpers every binding file shares: the error
// type carrying a status code, blob sizes, and fast access to the blob behind a Python object.
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include <xggeokit.h>

namespace xgpy {

namespace py = pybind11;

// One immutable shape blob, owned: a malloc block released with xgWKB_shape_free.
class Shape {
 public:
  // Takes ownership of a blob the library allocated (size computed from its counts).
  static Shape *adopt(unsigned char *blob);
  // Copies and checks foreign bytes with the bounded blob check; raises GeometryError.
  static Shape *from_bytes(const std::string &bytes);
  ~Shape();
  Shape(const Shape &) = delete;
  Shape &operator=(const Shape &) = delete;

  const unsigned char *data() const { return data_; }
  std::size_t size() const { return size_; }
  uint32_t type() const;

 private:
  Shape(unsigned char *data, std::size_t size) : data_(data), size_(size) {}
  unsigned char *data_;
  std::size_t size_;
};

// The byte size of a trusted blob the library returned: nil 5, envelope 37, types 1-6 from
// their counts.  0 when the type is none of these.
std::size_t blob_size(const unsigned char *blob);

// Raises xggeokit.GeometryError(message, code) with the library's UTF-8 message for code;
// context, when given, goes before the message.
[[noreturn]] void raise_status(int32_t code, const std::string &context = std::string());

// The library's message for a status code ("status N" when it has none).
std::string status_message(int32_t code);

// Creates the exception type and the Shape class in module m.
void register_shape(py::module_ &m);

// The blob behind a Python object: nullptr for None; raises TypeError for anything that is not a
// Shape.  Cheap enough to call once per array element.
const unsigned char *blob_of(PyObject *obj);

// A new Python Shape owning blob (which must not be null).
py::object wrap(unsigned char *blob);

}  // namespace xgpy
