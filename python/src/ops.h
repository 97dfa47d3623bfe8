// ops.h - the tables of library operations the module exposes.  Each row names one vectorised
// Python function; the Python package builds its module-level functions from these tables, so
// binding a new export is one row in ops.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace xgpy {

// Every operation returns a library status (0 success, negative failure).  p holds the scalar
// parameters listed in params ("name=default, ..."; Python passes them in that order).

// One shape in, nout doubles out.
struct F64Op {
  const char *name;
  const char *params;
  int nout;
  int32_t (*fn)(const unsigned char *shape, const double *p, double *out);
  const char *doc;
};

// One shape in, a truth value out: fn returns 1 or 0, or a negative status.
struct BoolOp {
  const char *name;
  const char *params;
  int32_t (*fn)(const unsigned char *shape, const double *p);
  const char *doc;
};

// One shape in, a new shape out (*out may stay null on success: the result is None).
struct ShapeOp {
  const char *name;
  const char *params;
  int32_t (*fn)(const unsigned char *shape, const double *p, unsigned char **out);
  const char *doc;
};

// One shape in, text (or bytes when binary) out.
struct TextOp {
  const char *name;
  const char *params;
  bool binary;
  int32_t (*fn)(const unsigned char *shape, const double *p, std::string *out);
  const char *doc;
};

// Two shapes and a tolerance in, a truth value out (1 or 0, or a negative status).
struct PredicateOp {
  const char *name;
  int32_t (*fn)(const unsigned char *a, const unsigned char *b, double t);
  const char *doc;
};

// Two shapes and a tolerance in, a double out.
struct BinaryF64Op {
  const char *name;
  int32_t (*fn)(const unsigned char *a, const unsigned char *b, double t, double *out);
  const char *doc;
};

// Two shapes and a tolerance in, a new shape out (null on success means None).
struct BinaryShapeOp {
  const char *name;
  int32_t (*fn)(const unsigned char *a, const unsigned char *b, unsigned char **out, double t);
  const char *doc;
};

// Text or bytes in, a new shape out.
struct ReadOp {
  const char *name;
  int32_t (*fn)(const char *data, std::size_t len, unsigned char **out);
  const char *doc;
};

template <class Op>
struct Table {
  const Op *rows;
  std::size_t count;
  const Op *begin() const { return rows; }
  const Op *end() const { return rows + count; }
};

Table<F64Op> f64_ops();
Table<BoolOp> bool_ops();
Table<ShapeOp> shape_ops();
Table<TextOp> text_ops();
Table<PredicateOp> predicate_ops();
Table<BinaryF64Op> binary_f64_ops();
Table<BinaryShapeOp> binary_shape_ops();
Table<ReadOp> read_ops();

}  // namespace xgpy
