// End-to-end runs of the xggeo command-line tool: outputs, messages on stderr, exit codes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

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

// Standard interchange: every line in its own form, errors with file, line and offset, threads
// that keep the input order, and a picture that is well-formed XML.
TEST(XggeoTool, ReadsEveryFormPerLineWritesTheChosenOneAndDrawsSvg) {
  SKIP_WITHOUT_TOOL();
  const ToolRun own = xggeo("convert -a @data/forms.txt");
  EXPECT_EQ(own.exit_code, 1);
  EXPECT_EQ(own.out,
            "polygon ((0.000000 0.000000,4.000000 0.000000,4.000000 3.000000,0.000000 0.000000))\n"
            "POLYGON ((0 0, 4 0, 4 3, 0 0), (1 0.5, 2 0.5, 2 1, 1 0.5))\n"
            "0102000000020000000000000000000000000000000000000000000000000024400000000000002440\n"
            "{\"type\":\"Point\",\"coordinates\":[2.5,1]}\n{\"type\":\"MultiPoint\",\"coordinates\":[[1,1],[2,2]]}\n"
            "{\"type\":\"LineString\",\"coordinates\":[[0,3],[4,0]]}\n");
  EXPECT_NE(own.err.find("forms.txt:7: offset 24: status -204"), std::string::npos) << own.err;
  const ToolRun wkt = xggeo("convert --of wkt -a @data/forms.txt");
  EXPECT_NE(wkt.out.find("POLYGON ((0 0, 4 0, 4 3, 0 0))\n"), std::string::npos) << wkt.out;
  EXPECT_NE(wkt.out.find("\nMULTIPOINT ((1 1), (2 2))\nLINESTRING (0 3, 4 0)\n"), std::string::npos) << wkt.out;

  std::string many;
  for (int i = 0; i < 300; ++i)
    many += i % 3 == 0 ? "POINT (" + std::to_string(i) + " 1)\n"
                       : "LINESTRING (0 0, " + std::to_string(i) + " " + std::to_string(i % 7) + ")\n";
  const ToolRun one = xggeo("move 1 -1 --of geojson", many), four = xggeo("move 1 -1 --of geojson -j 4", many);
  EXPECT_EQ(one.exit_code, 0);
  EXPECT_EQ(std::count(one.out.begin(), one.out.end(), '\n'), 300);
  EXPECT_EQ(four.out, one.out);

  const ToolRun svg = xggeo("svg move 1 1 -a @data/forms.txt");
  ASSERT_EQ(svg.out.rfind("<?xml", 0), 0u) << svg.out;
  // Well-formed: every element closed, in order.
  std::vector<std::string> open;
  for (std::size_t at = svg.out.find('<', 1); at != std::string::npos; at = svg.out.find('<', at + 1)) {
    const std::size_t end = svg.out.find('>', at);
    ASSERT_NE(end, std::string::npos);
    const std::string tag = svg.out.substr(at + 1, end - at - 1);
    const std::string name = tag.substr(tag[0] == '/', tag.find_first_of(" />", 1) - (tag[0] == '/'));
    if (tag[0] == '/') {
      ASSERT_FALSE(open.empty());
      EXPECT_EQ(open.back(), name);
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(name);
    }
  }
  EXPECT_TRUE(open.empty());
  EXPECT_NE(svg.out.find("<g id=\"result\""), std::string::npos);
  EXPECT_NE(svg.out.find("scale(1,-1)"), std::string::npos);
}

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
      {"points -a @data/mixed.wkt", "", "1\n2\n4\n8\n", 1,
       "mixed.wkt:6: offset 16: not a text in the library's WKT dialect"},  // the blank after the comma
      // Input errors name the offset in the line: a JSON syntax fault, a wrong GeoJSON type in the
      // second feature of a collection (counted from the start of the line), a dialect fault.
      {"type", "{\"type\":\"Point\",\"coordinates\":[1 2]}\n", "", 1, "stdin:1: offset 33: status -204"},
      {"type",
       "{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Point\",\"coordinates\":[1,2]},"
       "{\"type\":\"Feature\",\"geometry\":{\"type\":\"Poiint\",\"coordinates\":[1,2]}}]}\n",
       "1\n", 1, "stdin:1 feature 2: offset 114: status -199"},
      {"type", "{\"type\":\"LineString\",\"coordinates\":[[0,0],[1]]}\n", "", 1, "stdin:1: offset 35: status -204"},
      {"type", "{\"type\":\"Point\",\"bbox\":[0,0,1,1]}\n", "", 1, "stdin:1: offset 32: status -204"},  // no coordinates
      // The JSON grammar's faults, each at its first offending character.
      {"type", "{\"type\":\"Point\",\"coordinates\":[1,2]} x\n", "", 1, "stdin:1: offset 37: status -204"},
      {"type", "{\"type\":\"Point\",\"coordinates\":[01,2]}\n", "", 1, "stdin:1: offset 32: status -204"},
      {"type", "{\"type\":\"Po\\int\",\"coordinates\":[1,2]}\n", "", 1, "stdin:1: offset 12: status -204"},
      {"type", "{\"type\":\"Point\",\"coordinates\":[1,2],}\n", "", 1, "stdin:1: offset 36: status -204"},
      {"type", "{\"type\":\"Point\",\"coordinates\":[1.,2]}\n", "", 1, "stdin:1: offset 33: status -204"},
      {"type", "{\"type\":\"Point\",\"coordinates\":[1,2]\n", "", 1, "stdin:1: offset 35: status -204"},
      {"type", "{\"type\":\"Point\",\"coordinates\":[tru,2]}\n", "", 1, "stdin:1: offset 34: status -204"},
      {"type", "{\"type\":\"GeometryCollection\",\"geometries\":[]}\n", "", 1, "stdin:1: offset 8: status -207"},
      {"type", "point (1 2)\nlinestring (0 0,1 1))\n", "1\n", 1,
       "stdin:2: offset 20: not a text in the library's WKT dialect"},
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
      {"buffer -1 -a 'polygon ((0 0,10 0,10 10,0 10,0 0))'", "",
       "multipolygon (((9.000000 9.000000,1.000000 9.000000,1.000000 1.000000,9.000000 1.000000,9.000000 9.000000)))\n"},
      {"buffer 1 2 -a 'point (0 0)'", "", "none\n"},  // below the minimum radius
      {"clip 0 0 10 10", "point (10 3)\nlinestring (1 1,5 15,9 1)\nlinestring (-5 -5,-1 -1)\n",
       "point (10.000000 3.000000)\n"
       "multilinestring ((1.000000 1.000000,3.571429 10.000000),(6.428571 10.000000,9.000000 1.000000))\nnil\n"},
      {"cutline -a 'linestring (-5 5,15 5)'" + square, "",
       "multilinestring ((0.000000 5.000000,10.000000 5.000000))\n"
       "multilinestring ((-5.000000 5.000000,0.000000 5.000000),(10.000000 5.000000,15.000000 5.000000))\n"},
      {"cutline -a 'point (1 1)'" + square, "", "", 1, "status -1"},
      // Hull, distance and merge
      {"hull -a 'multipoint (0 0,1 0,2 0)'", "", "linestring (2.000000 0.000000,0.000000 0.000000)\n"},
      {"distance -b 'point (3 4)'", "point (0 0)\nmultipoint (9 9,0.3 4)\n", "5\n2.7\n"},
      {"distance 0.5 -a 'multipoint (9 9,0 0)' -b 'point (0.3 0)'", "", "0\n"},  // below the tolerance
      {"merge -a 'linestring (1 0,0 0)' -b 'linestring (1 0,2 0)'", "",
       "linestring (0.000000 0.000000,1.000000 0.000000,2.000000 0.000000)\n"},
      {"merge -a 'point (0 0)'" + square, "", "", 1, "status -136"},
      // Linear referencing, snapping and envelope relations
      {"along 0.75 -a 'linestring (0 0,1 0,3 0)'", "", "1.5 0\n"},
      {"along 0.5 -a 'linestring (0 0,1 0,2 0)'", "", "", 1, "status -1"},  // on the middle vertex
      {"snap 0.05 0.01 0.1 7 -a 'linestring (0 0,10 0,10 10)'", "", "0 0\n"},
      {"snap 5 -0.05 0.1 2 -a 'linestring (0 0,10 0,10 10)'", "", "5 0\n"},
      {"envelope within 0 0 10 10", "multipoint (5 5,6 6,50 50)\nlinestring (-5 5,5 5)\n", "true\nfalse\n"},
      {"envelope touches 0 0 10 10 0.001 -a 'point (-0.0005 5)'", "", "true\n"},
      {"envelope near 0 0 10 10 -a 'point (1 1)'", "", "", 2, "unknown relation"},
      // Annotations
      {"text ab 1 2 0.5 0 1 10 3 5 5", "", "ab 1 2 0.5 5 5 0 1 10 3\n"},
      {"text ab 1 2 0 0 1 10 3 1.00001 2", "", "ab 1 2 0 none 0 1 10 3\n"},  // leader within 0.0001
      {"outline ab 1 1 1.5707963267948966 0 0 4 2", "",
       "polygon ((0.000000 0.000000,0.000000 4.000000,2.000000 4.000000,2.000000 0.000000,0.000000 0.000000))\n"},
      {"text ab 1 2 0 0 1 10 3 5", "", "", 2},
      // Coordinate codec
      {"encode -a 'linestring (0 0,0 0,1 1)'", "", "01122700000f0000000000a401a401\n"},  // repeat left out
      {"encode 100 200 10 -a 'point (101 202)'", "", "01112700000b0000000a14\n"},
      {"decode -a -", "01122700000f0000000000a401a401\n01112700000b0000000a14\n",
       "linestring (0.000000 0.000000,1.000000 1.000000)\npoint (0.100000 0.200000)\n"},
      {"decode -a 01122700000f0000000000a401", "", "", 1, "status -501"},  // length field past the end
      {"decode -a 0x", "", "", 1, "status -501"},
      {"encode -a 'point (-1 0)'", "", "", 1, "status -500"},
      {"encode 1 2 -a 'point (1 2)'", "", "", 2, "OX OY SCALE"},
  };
  for (const auto& c : cases) {
    const ToolRun r = xggeo(c.args, c.in);
    EXPECT_EQ(r.exit_code, c.exit_code) << c.args << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_EQ(r.err.empty(), c.exit_code == 0) << c.args << ": " << r.err;
    EXPECT_NE(r.err.find(c.err), std::string::npos) << c.args << ": " << r.err;
  }
}

// The help states the default tolerance and what the strict point comparison does at 0, and the
// answers agree with it: TOL left out is 0.0001, and at TOL 0 a polygon need not be within itself.
TEST(XggeoTool, HelpStatesTheDefaultToleranceAndTheStrictComparison) {
  SKIP_WITHOUT_TOOL();
  const ToolRun help = xggeo("--help");
  EXPECT_NE(help.out.find("TOL, 0.0001 when it is left out"), std::string::npos) << help.out;
  EXPECT_NE(help.out.find("with TOL 0 no two points are equal"), std::string::npos) << help.out;
  const ToolRun equals = xggeo("equals --help");
  EXPECT_NE(equals.out.find("compared on the first half of their\n    points only"), std::string::npos)
      << equals.out;
  EXPECT_NE(xggeo("within --help").out.find("(default 0.0001)"), std::string::npos);

  const std::string decagon =
      "'polygon ((10.5 0.25,8.1 5.9,3.1 9.5,-3.1 9.5,-8.1 5.9,-10 0,-8.1 -5.9,-3.1 -9.5,3.1 -9.5,"
      "8.1 -5.9,10.5 0.25))'";
  const std::string self = " -a " + decagon + " -b " + decagon;
  const std::string square = " -b 'polygon ((0 0,10 0,10 10,0 10,0 0))'";
  const struct { std::string args, out; } cases[] = {
      {"within 0" + self, "false\n"}, {"within" + self, "true\n"},
      {"overlaps 0" + self, "true\n"}, {"overlaps" + self, "false\n"},
      {"equals 0" + self, "false\n"}, {"equals" + self, "true\n"},
      // Left out, TOL is 0.0001: 0.00005 off the edge touches, and does not at 0.00001.
      {"touches -a 'point (10.00005 3)'" + square, "true\n"},
      {"touches 0.00001 -a 'point (10.00005 3)'" + square, "false\n"},
      // Rings equal on their first half of points are equal.
      {"equals -a 'polygon ((0 0,10 0,10 10,0 10,0 0))' -b 'polygon ((0 0,10 0,10 10,5 20,0 0))'",
       "true\n"},
  };
  for (const auto& c : cases) {
    const ToolRun r = xggeo(c.args);
    EXPECT_EQ(r.exit_code, 0) << c.args << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << c.args;
  }
}
