// xggeo_ops.h - what an operation of the xggeo tool is, and the helpers operations use.
//
// The tool's driver (xggeo.cpp) reads the command line and the geometries and runs one entry of
// the operation table (xggeo_ops.cpp) on each geometry.  An operation is a plain function over
// the library's public interface: it gets its geometries and arguments, appends its result to an
// Output, and returns the library status it got (0 for success).  Adding an operation means
// adding one function and one table entry; the driver does not change.
#ifndef XGGEO_TOOLS_XGGEO_OPS_H
#define XGGEO_TOOLS_XGGEO_OPS_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "xggeo_forms.h"
#include "xggeo_geom.h"

namespace xggeo {

// A bad command line; the driver prints the message with the operation's usage and exits 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Status an operation returns when the library's reader made no shape of a text (the reader
// reports success all the same, so there is no library code for it).
constexpr int32_t kUnreadableText = 1;

// The tolerance of every operation whose TOL argument is left out (the relations, closed,
// mirror): the library's own fixed tolerance.  The library compares points strictly (they are
// equal when they differ by less than TOL on both axes), so a TOL of 0 makes no two points equal.
constexpr double kDefaultTolerance = 0.0001;

// What an operation works on.
enum class Inputs {
  kNone,    // arguments only (constructors)
  kShape,   // each geometry of -a, read into a shape
  kShapes,  // each geometry of -a against one of -b
  kText,    // each text of -a as it stands (the operation reads it itself)
};

// The geometries of one call.  a and b are shapes for kShape / kShapes; text is the raw text of
// the -a geometry for kText.  They belong to the driver and serve every repetition of -r: an
// operation that changes a shape in place works on a copy (xgWKB_shape_duplicate) and hands the
// copy to Output::shape.
struct Operands {
  const unsigned char* a = nullptr;
  const unsigned char* b = nullptr;
  const char* text = nullptr;
  bool timed = false;  // -t was given (an operation may add figures of its own to its line)
};

// The arguments after the operation's name, checked against its arity by the driver.
class Args {
 public:
  explicit Args(std::vector<std::string> values) : values_(std::move(values)) {}
  std::size_t size() const { return values_.size(); }
  const std::string& text(std::size_t i) const { return values_.at(i); }
  // Argument i as a number; UsageError when it is not one.
  double real(std::size_t i) const;
  int32_t integer(std::size_t i) const;
  // The same, or fallback when fewer arguments were given.
  double real_or(std::size_t i, double fallback) const { return i < size() ? real(i) : fallback; }
  int32_t integer_or(std::size_t i, int32_t fallback) const {
    return i < size() ? integer(i) : fallback;
  }

 private:
  std::vector<std::string> values_;
};

// The result line of one call: items separated by one blank.
class Output {
 public:
  // Appends a shape in the output form (the dialect by default; there the nil shape is "nil")
  // and releases it with xgWKB_shape_free; returns the writer's status.  A null shape appends
  // nothing and returns 0.  When keeping is on, the shape's geometry is kept for a picture.
  int32_t shape(unsigned char* blob);
  void set_form(Form form) { form_ = form; }
  void keep_shapes(bool keep) { keep_ = keep; }
  std::vector<Geom>& kept() { return kept_; }
  void integer(long long v);
  // Shortest text that reads back as the same double.
  void real(double v);
  void boolean(bool v) { text(v ? "true" : "false"); }
  void text(std::string_view s);

  const std::string& line() const { return line_; }
  void clear() { line_.clear(); }

 private:
  void separate();
  std::string line_;
  Form form_ = Form::kDialect;
  bool keep_ = false;
  std::vector<Geom> kept_;
};

using OpFunction = int32_t (*)(const Operands& in, const Args& args, Output& out);

struct Op {
  const char* name;
  Inputs inputs;
  int min_args;
  int max_args;
  const char* arg_help;  // the arguments as the usage line shows them, e.g. "[PART [SUBPART]]"
  const char* summary;   // one line for --help
  OpFunction run;
};

// Operations defined in files of their own (xggeo_ops_<group>.cpp), by group.
// Overlay
int32_t op_intersection(const Operands& in, const Args& args, Output& out);
int32_t op_union(const Operands& in, const Args& args, Output& out);
int32_t op_difference(const Operands& in, const Args& args, Output& out);
int32_t op_symdifference(const Operands& in, const Args& args, Output& out);
int32_t op_overlay(const Operands& in, const Args& args, Output& out);
// Buffer and clipping
int32_t op_buffer(const Operands& in, const Args& args, Output& out);
int32_t op_clip(const Operands& in, const Args& args, Output& out);
int32_t op_cutline(const Operands& in, const Args& args, Output& out);
// Hull, distance and merge
int32_t op_hull(const Operands& in, const Args& args, Output& out);
int32_t op_distance(const Operands& in, const Args& args, Output& out);
int32_t op_merge(const Operands& in, const Args& args, Output& out);
// Linear referencing, snapping and envelope relations
int32_t op_along(const Operands& in, const Args& args, Output& out);
int32_t op_snap(const Operands& in, const Args& args, Output& out);
int32_t op_envelope(const Operands& in, const Args& args, Output& out);
// Annotations
int32_t op_text(const Operands& in, const Args& args, Output& out);
int32_t op_outline(const Operands& in, const Args& args, Output& out);
// Coordinate codec
int32_t op_encode(const Operands& in, const Args& args, Output& out);
int32_t op_decode(const Operands& in, const Args& args, Output& out);

// Longer help that `xggeo OP --help` prints after the usage line, or null when the operation has
// none.
const char* operation_notes(const Op& op);

// The operation table, in the order --help lists it.
extern const Op kOperations[];
extern const std::size_t kOperationCount;

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_OPS_H
