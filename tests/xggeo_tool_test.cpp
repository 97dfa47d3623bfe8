// End-to-end runs of the xggeo command-line tool: outputs, messages on stderr, exit codes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct ToolRun {
  int exit_code = -1;
  std::string out, err;
};

#if defined(XGGEO_TOOL) && defined(XGGEO_EXAMPLES_DIR)
#define SKIP_WITHOUT_TOOL()
// Runs `xggeo ARGS` (quoted by the caller) in the examples directory, with stdin_text on stdin.
ToolRun xggeo(const std::string& args, const std::string& stdin_text = "") {
  ToolRun r;
  char err_path[] = "/tmp/xggeo_tool_test_XXXXXX";
  close(mkstemp(err_path));
  const std::string command = std::string("cd '") + XGGEO_EXAMPLES_DIR + "' && printf '%s' '" + stdin_text +
                              "' | '" + XGGEO_TOOL + "' " + args + " 2>" + err_path;
  FILE* pipe = popen(command.c_str(), "r");
  char buf[4096];
  for (std::size_t n; (n = fread(buf, 1, sizeof buf, pipe)) > 0;) r.out.append(buf, n);
  const int status = pclose(pipe);
  r.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::stringstream err;
  err << std::ifstream(err_path).rdbuf();
  r.err = err.str();
  std::remove(err_path);
  return r;
}
#else
#define SKIP_WITHOUT_TOOL() GTEST_SKIP() << "the xggeo tool is not built"
ToolRun xggeo(const std::string&, const std::string& = "") { return {}; }
#endif

}  // namespace

// The library's answers are tested on their own; these runs cover arguments, input lines, messages
// and exit codes.
TEST(XggeoTool, RunsEachKindOfOperationReportsFailuresAndRejectsBadCommandLines) {
  SKIP_WITHOUT_TOOL();
  const std::string square = " -b 'polygon ((0 0,10 0,10 10,0 10,0 0))'";
  const struct { std::string args, in, out; int exit_code = 0; std::string err = ""; } cases[] = {
      {"type", "point (1 2)\n\n# note\nlinestring (0 0,1 1)\r\npolygon empty\n", "1\n2\n0\n"},
      {"extent 1 -a 'multilinestring ((0 0,1 1),(2.5 -3,4 4))'", "", "2.5 -3 4 4\n"},
      {"rect 0 0 2 1", "",
       "polygon ((0.000000 0.000000,0.000000 1.000000,2.000000 1.000000,2.000000 0.000000,0.000000 0.000000))\n"},
      {"valid -a 'polygon ((0 0,10 10,10 0,0 10,0 0))'", "",  // the rule broken, in UTF-8
       "false -155 \xE7\xBA\xBF\xE6\x88\x96\xE9\x9D\xA2\xE7\x9A\x84\xE8\xBE\xB9\xE7\x95\x8C\xE8\x87\xAA\xE4\xBA\xA4\n"},
      {"within" + square, "point (5 5)\npoint (10 5)\npoint (15 5)\n", "true\nfalse\nfalse\n"},
      {"touches 0.0001 -a 'point (10.00005 3)'" + square, "", "true\n"},  // a tolerance argument
      // Failed geometries are reported with status and message (-27 "invalid entity" in UTF-8),
      // and the run goes on.
      {"points -a @data/mixed.wkt", "", "1\n2\n4\n8\n", 1,
       "mixed.wkt:8: status -27: \xE6\x97\xA0\xE6\x95\x88\xE7\x9A\x84"},
      {"points -a @data/mixed.wkt", "", "1\n2\n4\n8\n", 1, "mixed.wkt:6: not a text in the library's WKT dialect"},
      {"extent -1 -a 'polygon ((0 0,1 0,0 0))'", "", "", 1, "status -135"},  // a number, not an option
      {"", "", "", 2}, {"nosuchop", "", "", 2}, {"wkt 'point (1 2)'", "", "", 2},
      {"extent x -a 'point (1 2)'", "", "", 2}, {"wkt -a", "", "", 2}, {"wkt -a @no/such/file.wkt", "", "", 2},
      // Overlay
      {"overlay -a 'polygon ((0 0,4 0,4 4,0 4,0 0))' -b 'polygon ((2 2,6 2,6 6,2 6,2 2))'", "",
       "multipolygon (((4.000000 2.000000,2.000000 2.000000,2.000000 4.000000,0.000000 4.000000,0.000000 0.000000,"
       "4.000000 0.000000,4.000000 2.000000)))\n"
       "multipolygon (((6.000000 6.000000,2.000000 6.000000,2.000000 4.000000,4.000000 4.000000,4.000000 2.000000,"
       "6.000000 2.000000,6.000000 6.000000)))\n"
       "multipolygon (((4.000000 4.000000,2.000000 4.000000,2.000000 2.000000,4.000000 2.000000,4.000000 4.000000)))\n"},
      {"intersection -a 'linestring (0 0,1 0)' -b 'linestring (0 5,1 5)'", "", "none\n"},
      {"union -a 'point (1 2)' -b 'polygon ((0 0,4 0,4 4,0 4,0 0))'", "", "", 1, "status -134"},
      // Buffer and clipping
      // Hull, distance and merge
      // Linear referencing, snapping and envelope relations
      // Annotations
      // Coordinate codec
  };
  for (const auto& c : cases) {
    const ToolRun r = xggeo(c.args, c.in);
    EXPECT_EQ(r.exit_code, c.exit_code) << c.args << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_EQ(r.err.empty(), c.exit_code == 0) << c.args << ": " << r.err;
    EXPECT_NE(r.err.find(c.err), std::string::npos) << c.args << ": " << r.err;
  }
}
