// xggeo.cpp - command-line access to the library: one operation over many geometries.
//
//   xggeo OP [ARG...] [-a WKT|@FILE|-] [-b WKT|@FILE|-] [-t] [-r N] [-j N] [--of FORM] [--svg FILE]
//   xggeo svg OP ...      (the same run drawn as SVG on stdout)
//
// The driver reads the command line and the geometries, runs the operation of the table in
// xggeo_ops.cpp on each, prints one line per result on stdout and one line per failure on
// stderr.  Exit status: 0 everything succeeded, 1 some geometry failed, 2 bad command line or
// unreadable input file.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "xggeo_geojson.h"
#include "xggeo_ops.h"
#include "xggeo_svg.h"
#include "xggeokit.h"

namespace xggeo {
namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

constexpr const char* kSourceHelp = "WKT|@FILE|-";

// A file that cannot be read: exit 2 without the usage text.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Geometry {
  std::string label;  // where it came from, for messages: "-a", "file.wkt:3", "stdin:2"
  std::string text;
  Form form = Form::kDialect;
  std::size_t begin = 0;  // where the text begins in its line (a feature of a collection)
};

struct CommandLine {
  const Op* op = nullptr;
  std::vector<std::string> args;
  std::optional<std::string> a;
  std::optional<std::string> b;
  bool help = false;
  bool time = false;
  long repeat = 1;
  long threads = 1;
  std::optional<Form> of;            // --of: the output form; default the -a geometry's own
  std::optional<std::string> svg;    // --svg FILE, or "-" for xggeo svg OP (stdout, no results)
};

// ---- help ------------------------------------------------------------------------------------

std::string synopsis(const Op& op) {
  std::string s = std::string("xggeo ") + op.name;
  if (op.arg_help[0] != '\0') s += std::string(" ") + op.arg_help;
  if (op.inputs != Inputs::kNone) s += std::string(" [-a ") + kSourceHelp + "]";
  if (op.inputs == Inputs::kShapes) s += std::string(" -b ") + kSourceHelp;
  return s + " [-t] [-r N] [-j N] [--of FORM] [--svg FILE]";
}

void print_help(std::FILE* to) {
  std::fprintf(to,
               "usage: xggeo OP [ARG...] [-a %s] [-b %s] [-t] [-r N]\n"
               "       xggeo --help | xggeo OP --help\n\n"
               "Runs one operation of the xgGeoKit library on each geometry of -a (and against\n"
               "-b) and prints one result line per geometry: a text, a number or a list of\n"
               "numbers.\n"
               "Geometries are texts in the library's WKT dialect, e.g.\n"
               "  polygon ((0 0,10 0,10 10,0 0))     (no blank after a comma)\n"
               "given directly (one geometry), as @FILE (one per line) or as - (standard input,\n"
               "one per line; the default for -a).  Blank lines and lines starting with # are\n"
               "skipped.  A nil shape prints as nil.\n\n"
               "options:\n"
               "  -a SRC   the geometries to work on\n"
               "  -b SRC   the second geometries of a two-geometry operation: one for all of -a,\n"
               "           or as many as -a (taken in pairs)\n"
               "  -t       print the time the runs took on stderr (reading files, turning texts\n"
               "           into shapes for the operations that take shapes, and printing are\n"
               "           not counted)\n"
               "  -r N     run the operation N times over all geometries; results print once\n\n"
               "tolerance: the relations between two shapes, closed and mirror take an optional\n"
               "TOL, %g when it is left out.  Points are equal when they differ by strictly less\n"
               "than TOL in x and in y, so with TOL 0 no two points are equal, not even a point\n"
               "and itself: shared vertices and boundaries can then go unrecognised (a polygon\n"
               "can fail to be within itself and overlap itself).  xggeo OP --help tells more.\n\n"
               "operations:\n",
               kSourceHelp, kSourceHelp, kDefaultTolerance);
  for (std::size_t i = 0; i < kOperationCount; ++i) {
    const Op& op = kOperations[i];
    std::string head = op.name;
    if (op.arg_help[0] != '\0') head += std::string(" ") + op.arg_help;
    if (op.inputs == Inputs::kShapes) head += " (-a, -b)";
    if (op.inputs == Inputs::kNone) head += " (no -a)";
    if (head.size() > 26) {
      std::fprintf(to, "  %s\n  %-26s %s\n", head.c_str(), "", op.summary);
    } else {
      std::fprintf(to, "  %-26s %s\n", head.c_str(), op.summary);
    }
  }
  std::fprintf(to,
               "\nstandard forms and more options: [-j N] [--of FORM] [--svg FILE]\n"
               "  -j N        run the geometries on N threads; results keep the input order\n"
               "  --of FORM   write shapes as dialect, wkt (OGC), wkb (hex) or geojson\n"
               "  --svg FILE  also draw -a (blue), -b (green) and the results (red) in FILE;\n"
               "              xggeo svg OP ... writes that picture to stdout instead of results\n"
               "%s"
               "An input line that cannot be read is reported with its file, line and the offset\n"
               "in the text where the reader stopped, and the run goes on with the next line.\n",
               kFormRule);
  std::fprintf(to,
               "\nexit status: 0 success, 1 some geometry failed (its status code and message are\n"
               "printed on stderr), 2 bad command line or unreadable file.\n");
}

void print_op_help(const Op& op, std::FILE* to) {
  std::fprintf(to, "usage: %s\n  %s\n", synopsis(op).c_str(), op.summary);
  if (const char* notes = operation_notes(op)) std::fprintf(to, "%s", notes);
}

// ---- command line ----------------------------------------------------------------------------

const Op* find_op(const std::string& name) {
  for (std::size_t i = 0; i < kOperationCount; ++i) {
    if (name == kOperations[i].name) return &kOperations[i];
  }
  return nullptr;
}

// Fills cl from the command line; cl.op is set before any UsageError about the arguments.
void parse_command_line(int argc, char** argv, CommandLine& cl) {
  cl.op = find_op(argv[1]);
  if (cl.op == nullptr) throw UsageError(std::string("unknown operation ") + argv[1]);
  bool options_done = false;
  for (int i = 2; i < argc; ++i) {
    const std::string tok = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) throw UsageError(tok + " needs a value");
      return argv[++i];
    };
    if (!options_done) {
      if (tok == "--") {
        options_done = true;
        continue;
      }
      if (tok == "-h" || tok == "--help") {
        cl.help = true;
        continue;
      }
      if (tok == "-a" || tok == "-b") {
        (tok == "-a" ? cl.a : cl.b) = value();
        continue;
      }
      if (tok == "-t") {
        cl.time = true;
        continue;
      }
      if (tok == "--of") {
        Form form;
        if (!parse_form(value(), &form)) throw UsageError("--of takes dialect, wkt, wkb or geojson");
        cl.of = form;
        continue;
      }
      if (tok == "--svg") {
        cl.svg = value();
        continue;
      }
      if (tok == "-j") {
        const std::string n = value();
        char* end = nullptr;
        cl.threads = std::strtol(n.c_str(), &end, 10);
        if (n.empty() || *end != '\0' || cl.threads < 1 || cl.threads > 256) {
          throw UsageError("-j needs a thread count from 1 to 256");
        }
        continue;
      }
      if (tok == "-r") {
        const std::string n = value();
        char* end = nullptr;
        cl.repeat = std::strtol(n.c_str(), &end, 10);
        if (n.empty() || *end != '\0' || cl.repeat < 1) {
          throw UsageError("-r needs a count of 1 or more");
        }
        continue;
      }
    }
    cl.args.push_back(tok);  // anything else, "-5" included, is an argument
  }
  if (cl.help) return;
  const Op& op = *cl.op;
  const int n = static_cast<int>(cl.args.size());
  if (n < op.min_args || n > op.max_args) {
    std::string msg =
        std::string(op.name) + " takes " +
        (op.max_args == 0 ? std::string("no arguments") : "arguments " + std::string(op.arg_help));
    if (op.max_args == 0 && op.inputs != Inputs::kNone) msg += " (give geometries with -a)";
    throw UsageError(msg);
  }
  if (op.inputs == Inputs::kNone && (cl.a || cl.b)) {
    throw UsageError(std::string(op.name) + " takes no geometry");
  }
  if (op.inputs != Inputs::kShapes && cl.b) throw UsageError(std::string(op.name) + " takes no -b");
  if (op.inputs == Inputs::kShapes && !cl.b) throw UsageError(std::string(op.name) + " needs -b");
  if (op.inputs != Inputs::kNone && !cl.a) cl.a = "-";
  if (cl.a && cl.b && *cl.a == "-" && *cl.b == "-") {
    throw UsageError("-a and -b cannot both read stdin");
  }
}

// ---- geometries ------------------------------------------------------------------------------

void read_lines(std::istream& in, const std::string& name, std::vector<Geometry>& out) {
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const std::string label = name + ":" + std::to_string(number);
    const Form form = detect_form(line);
    std::vector<GeoJsonPiece> features;
    // A FeatureCollection stands for the geometries of its features, one after the other.
    // (A geometry or Feature comes back as the whole line, beginning at 0.)
    if (form == Form::kGeoJson && geojson_split(line, &features) == XGWKB_OK &&
        (features.size() != 1 || features[0].begin != 0)) {
      for (std::size_t k = 0; k < features.size(); ++k)
        out.push_back({label + " feature " + std::to_string(k + 1), features[k].text, form, features[k].begin});
      continue;
    }
    out.push_back({label, line, form});
  }
}

std::vector<Geometry> read_source(const std::string& source, const char* option) {
  std::vector<Geometry> out;
  if (source == "-") {
    read_lines(std::cin, "stdin", out);
  } else if (!source.empty() && source[0] == '@') {
    const std::string path = source.substr(1);
    std::ifstream file(path);
    if (!file) throw InputError("cannot read " + path);
    read_lines(file, path, out);
  } else {
    out.push_back({option, source, detect_form(source)});
  }
  return out;
}

// ---- running ---------------------------------------------------------------------------------

void report(const Op& op, const std::string& where, int32_t status, const std::string& offset = "") {
  if (status == kUnreadableText) {
    std::fprintf(stderr, "xggeo: %s: %s: %snot a text in the library's WKT dialect (no shape made)\n", op.name,
                 where.c_str(), offset.c_str());
    return;
  }
  char* message = nullptr;
  const bool known = xgWKB_shape_get_error_description_utf8(status, &message) != 0;
  std::fprintf(stderr, "xggeo: %s: %s: %sstatus %d: %s\n", op.name, where.c_str(), offset.c_str(), status,
               known ? message : "(no message for this code)");
  if (known) xgWKB_shape_free(message);
}

// Shapes read from texts; a text that the reader refuses leaves a null shape and its status.
class Shapes {
 public:
  explicit Shapes(const std::vector<Geometry>& geometries) {
    for (const Geometry& g : geometries) {
      unsigned char* shape = nullptr;
      std::size_t offset = 0;
      bool has_offset = false;
      const int32_t status = read_shape(g.text, g.form, &shape, &offset, &has_offset);
      shapes_.push_back(status == XGWKB_OK ? shape : nullptr);
      statuses_.push_back(status);
      offsets_.push_back(has_offset ? "offset " + std::to_string(g.begin + offset) + ": " : "");
    }
  }
  ~Shapes() {
    for (unsigned char* s : shapes_) xgWKB_shape_free(s);
  }
  Shapes(const Shapes&) = delete;
  Shapes& operator=(const Shapes&) = delete;
  const unsigned char* at(std::size_t i) const { return shapes_[i]; }
  int32_t status(std::size_t i) const { return statuses_[i]; }
  const std::string& offset(std::size_t i) const { return offsets_[i]; }
  // The geometries read, for a picture.
  std::vector<Geom> geoms() const {
    std::vector<Geom> out;
    for (const unsigned char* s : shapes_) {
      Geom g;
      if (s != nullptr && decode_shape(s, &g)) out.push_back(std::move(g));
    }
    return out;
  }

 private:
  std::vector<unsigned char*> shapes_;
  std::vector<int32_t> statuses_;
  std::vector<std::string> offsets_;
};

struct Job {
  std::size_t a;
  std::size_t b;
  std::string label;
};

int run(const CommandLine& cl) {
  const Op& op = *cl.op;
  const Args args(cl.args);
  std::vector<Geometry> as;
  std::vector<Geometry> bs;
  if (cl.a) as = read_source(*cl.a, "-a");
  if (cl.b) bs = read_source(*cl.b, "-b");

  std::vector<Job> jobs;
  switch (op.inputs) {
    case Inputs::kNone:
      jobs.push_back({0, 0, "arguments"});
      break;
    case Inputs::kShape:
    case Inputs::kText:
      for (std::size_t i = 0; i < as.size(); ++i) jobs.push_back({i, 0, as[i].label});
      break;
    case Inputs::kShapes:
      if (bs.empty()) throw UsageError("-b holds no geometry");
      if (bs.size() == 1 || as.size() == bs.size()) {
        for (std::size_t i = 0; i < as.size(); ++i) {
          const std::size_t j = bs.size() == 1 ? 0 : i;
          jobs.push_back({i, j, as[i].label + " with " + bs[j].label});
        }
      } else if (as.size() == 1) {
        for (std::size_t j = 0; j < bs.size(); ++j) {
          jobs.push_back({0, j, as[0].label + " with " + bs[j].label});
        }
      } else {
        throw UsageError("-a has " + std::to_string(as.size()) + " geometries and -b " +
                         std::to_string(bs.size()) + ": give one -b, one -a, or as many of each");
      }
      break;
  }

  const bool shapes_needed = op.inputs == Inputs::kShape || op.inputs == Inputs::kShapes;
  const Shapes a_shapes(shapes_needed ? as : std::vector<Geometry>{});
  const Shapes b_shapes(op.inputs == Inputs::kShapes ? bs : std::vector<Geometry>{});
  auto operands_read = [&](const Job& job) {
    return !shapes_needed || (a_shapes.at(job.a) != nullptr &&
                              (op.inputs != Inputs::kShapes || b_shapes.at(job.b) != nullptr));
  };

  std::vector<std::string> lines(jobs.size());
  std::vector<int32_t> statuses(jobs.size(), XGWKB_OK);
  std::vector<std::vector<Geom>> results(jobs.size());
  // One job: its operands, the output form, and (first run only) its line, status and results.
  auto run_job = [&](std::size_t k, long rep, Output& out) {
    if (!operands_read(jobs[k])) return;
    Operands in;
    in.timed = cl.time;
    if (op.inputs == Inputs::kText) in.text = as[jobs[k].a].text.c_str();
    if (shapes_needed) in.a = a_shapes.at(jobs[k].a);
    if (op.inputs == Inputs::kShapes) in.b = b_shapes.at(jobs[k].b);
    out.clear();
    out.kept().clear();
    // Constructors, and operations that read their text themselves (a codec stream in hex is no
    // WKB), write the dialect unless --of says otherwise.
    const bool own_form = op.inputs == Inputs::kShape || op.inputs == Inputs::kShapes;
    out.set_form(cl.of ? *cl.of : own_form ? as[jobs[k].a].form : Form::kDialect);
    out.keep_shapes(cl.svg && rep == 0);
    const int32_t status = op.run(in, args, out);
    if (rep == 0) {
      statuses[k] = status;
      lines[k] = out.line();
      results[k] = std::move(out.kept());
    }
  };
  const auto start = std::chrono::steady_clock::now();
  for (long rep = 0; rep < cl.repeat; ++rep) {
    // The library is reentrant: the jobs are shared out among the threads, and each result goes
    // to its job's slot, so the order of the output is the order of the input.
    std::atomic<std::size_t> next{0};
    auto worker = [&] {
      Output out;
      for (std::size_t k; (k = next.fetch_add(1)) < jobs.size();) run_job(k, rep, out);
    };
    std::vector<std::thread> pool;
    for (long t = 1; t < cl.threads && static_cast<std::size_t>(t) < jobs.size(); ++t) pool.emplace_back(worker);
    worker();
    for (std::thread& t : pool) t.join();
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

  // Results and failures in the order of the input, each text that could not be read reported
  // once where it is first used.
  bool failed = false;
  std::vector<bool> a_reported(as.size(), false);
  std::vector<bool> b_reported(bs.size(), false);
  auto report_unread = [&](const Shapes& shapes, const std::vector<Geometry>& geometries,
                           std::vector<bool>& reported, std::size_t i) {
    if (shapes.at(i) != nullptr || reported[i]) return;
    reported[i] = true;
    std::fflush(stdout);
    report(op, geometries[i].label, shapes.status(i), shapes.offset(i));
  };
  for (std::size_t k = 0; k < jobs.size(); ++k) {
    if (!operands_read(jobs[k])) {
      failed = true;
      report_unread(a_shapes, as, a_reported, jobs[k].a);
      if (op.inputs == Inputs::kShapes) report_unread(b_shapes, bs, b_reported, jobs[k].b);
    } else if (statuses[k] != XGWKB_OK) {
      failed = true;
      std::fflush(stdout);
      report(op, jobs[k].label, statuses[k]);
    } else if (!(cl.svg && *cl.svg == "-")) {
      std::fwrite(lines[k].data(), 1, lines[k].size(), stdout);
      std::fputc('\n', stdout);
    }
  }
  if (cl.svg) {
    std::vector<SvgLayer> layers = {{"a", "#1f5fbf", a_shapes.geoms()}, {"b", "#2a9d3a", b_shapes.geoms()},
                                    {"result", "#d03020", {}}};
    for (std::vector<Geom>& r : results)
      for (Geom& g : r) layers[2].geoms.push_back(std::move(g));
    const std::string svg = svg_document(layers);
    if (*cl.svg == "-") {
      std::fwrite(svg.data(), 1, svg.size(), stdout);
    } else {
      std::ofstream file(*cl.svg, std::ios::binary);
      file << svg;
      if (!file) throw InputError("cannot write " + *cl.svg);
    }
  }
  std::fflush(stdout);
  if (cl.time) {
    const double calls = static_cast<double>(jobs.size()) * static_cast<double>(cl.repeat);
    std::fprintf(stderr, "xggeo: %s: %zu geometries x %ld runs in %.3f ms (%.3f us per call)\n",
                 op.name, jobs.size(), cl.repeat, elapsed.count() * 1e3,
                 calls > 0 ? elapsed.count() * 1e6 / calls : 0.0);
  }
  return failed ? kExitFailed : kExitOk;
}

}  // namespace
}  // namespace xggeo

int main(int argc, char** argv) {
  using namespace xggeo;
  if (argc < 2) {
    print_help(stderr);
    return kExitUsage;
  }
  if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    print_help(stdout);
    return kExitOk;
  }
  CommandLine cl;
  try {
    // xggeo svg OP ...: the same run, drawn on stdout instead of printed.
    const bool svg = std::strcmp(argv[1], "svg") == 0;
    if (svg && argc < 3) throw UsageError("svg needs an operation");
    parse_command_line(argc - (svg ? 1 : 0), argv + (svg ? 1 : 0), cl);
    if (svg) cl.svg = "-";
    if (cl.help) {
      print_op_help(*cl.op, stdout);
      return kExitOk;
    }
    return run(cl);
  } catch (const UsageError& e) {
    std::fprintf(stderr, "xggeo: %s\n", e.what());
    if (cl.op != nullptr) {
      print_op_help(*cl.op, stderr);
    } else {
      std::fprintf(stderr, "run xggeo --help for the list of operations\n");
    }
    return kExitUsage;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "xggeo: %s\n", e.what());
    return kExitUsage;
  }
}
