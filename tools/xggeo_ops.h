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

namespace xggeo {

// A bad command line; the driver prints the message with the operation's usage and exits 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Status an operation returns when the library's reader made no shape of a text (the reader
// reports success all the same, so there is no library code for it).
constexpr int32_t kUnreadableText = 1;

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
  // Appends a shape as text (the nil shape as "nil") and releases it with xgWKB_shape_free;
  // returns the writer's status.  A null shape appends nothing and returns 0.
  int32_t shape(unsigned char* blob);
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
// Hull, distance and merge
// Linear referencing, snapping and envelope relations
// Annotations
// Coordinate codec

// The operation table, in the order --help lists it.
extern const Op kOperations[];
extern const std::size_t kOperationCount;

}  // namespace xggeo

#endif  // XGGEO_TOOLS_XGGEO_OPS_H
