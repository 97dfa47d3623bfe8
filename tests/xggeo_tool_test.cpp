// End-to-end runs of the xggeo command-line tool: outputs, messages on stderr, exit codes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct ToolRun {
  int exit_code;
  std::string out;
  std::string err;
};

#if defined(XGGEO_TOOL) && defined(XGGEO_EXAMPLES_DIR)

// Runs `xggeo ARGS` through the shell (ARGS quoted by the caller), from the examples directory.
ToolRun xggeo(const std::string& args, const std::string& stdin_text = "") {
  char err_path[] = "/tmp/xggeo_tool_test_XXXXXX";
  const int fd = mkstemp(err_path);
  EXPECT_GE(fd, 0);
  close(fd);
  std::string command = std::string("cd '") + XGGEO_EXAMPLES_DIR + "' && printf '%s' '" +
                        stdin_text + "' | '" + XGGEO_TOOL + "' " + args + " 2>" + err_path;
  ToolRun r{-1, "", ""};
  FILE* pipe = popen(command.c_str(), "r");
  EXPECT_NE(pipe, nullptr);
  char buf[4096];
  std::size_t n;
  while ((n = fread(buf, 1, sizeof buf, pipe)) > 0) r.out.append(buf, n);
  const int status = pclose(pipe);
  r.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::ifstream err(err_path);
  std::stringstream ss;
  ss << err.rdbuf();
  r.err = ss.str();
  std::remove(err_path);
  return r;
}

#define SKIP_WITHOUT_TOOL()
#else
ToolRun xggeo(const std::string&, const std::string& = "") { return {-1, "", ""}; }
#define SKIP_WITHOUT_TOOL() GTEST_SKIP() << "the xggeo tool is not built"
#endif

}  // namespace

TEST(XggeoTool, WritesBackEachGeometryOfAFile) {
  SKIP_WITHOUT_TOOL();
  const ToolRun r = xggeo("wkt -a @data/points.wkt");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out,
            "point (1.500000 -2.000000)\n"
            "point (100000000000000000000.000000 -0.000000)\n"
            "multipoint (0.000000 0.000000,1.000000 1.000000,2.000000 4.000000)\n"
            "multipoint (3.000000 3.000000\n");
  EXPECT_EQ(r.err, "");
}

TEST(XggeoTool, ReadsStandardInputLineByLineByDefault) {
  SKIP_WITHOUT_TOOL();
  const ToolRun r =
      xggeo("type", "point (1 2)\n\n# comment\nlinestring (0 0,1 1)\r\npolygon empty\n");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "1\n2\n0\n");
}

TEST(XggeoTool, ReportsStatusCodeAndMessageAndExitsOne) {
  SKIP_WITHOUT_TOOL();
  const ToolRun refused = xggeo("wkt -a 'POLYGON ((0 0,1 0,0 0))'");
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(
      refused.err.find("status -27: \xE6\x97\xA0\xE6\x95\x88\xE7\x9A\x84\xE5\xAE\x9E\xE4\xBD\x93"),
      std::string::npos)
      << refused.err;

  const ToolRun unread = xggeo("size -a 'linestring (0 0, 1 1)'");
  EXPECT_EQ(unread.exit_code, 1);
  EXPECT_NE(unread.err.find("no shape made"), std::string::npos) << unread.err;
}

TEST(XggeoTool, KeepsGoingAfterAFailedGeometry) {
  SKIP_WITHOUT_TOOL();
  const ToolRun r = xggeo("points -a @data/mixed.wkt");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.out, "1\n2\n4\n8\n");
  EXPECT_NE(r.err.find("mixed.wkt:8: status -27"), std::string::npos) << r.err;
}

TEST(XggeoTool, TakesNegativeNumbersAsArguments) {
  SKIP_WITHOUT_TOOL();
  const ToolRun r = xggeo("extent -1 -a 'polygon ((0 0,1 0,0 0))'");
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_NE(r.err.find("status -135"), std::string::npos) << r.err;
  const ToolRun part = xggeo("extent 1 -a 'multilinestring ((0 0,1 1),(2.5 -3,4 4))'");
  EXPECT_EQ(part.out, "2.5 -3 4 4\n");
}

TEST(XggeoTool, RejectsBadCommandLinesWithExitTwo) {
  SKIP_WITHOUT_TOOL();
  const char* const cases[] = {"",
                               "nosuchop",
                               "wkt 'point (1 2)'",
                               "extent x -a 'point (1 2)'",
                               "wkt -r 0 -a 'point (1 2)'",
                               "wkt -a",
                               "type -b 'point (1 2)'",
                               "wkt -a @no/such/file.wkt"};
  for (const char* args : cases) {
    const ToolRun r = xggeo(args);
    EXPECT_EQ(r.exit_code, 2) << args;
    EXPECT_EQ(r.out, "") << args;
    EXPECT_NE(r.err, "") << args;
  }
}

TEST(XggeoTool, ListsOperationsAndTheirArguments) {
  SKIP_WITHOUT_TOOL();
  const ToolRun all = xggeo("--help");
  EXPECT_EQ(all.exit_code, 0);
  for (const char* entry :
       {"wkt ", "type ", "size ", "extent [PART]", "parts ", "points [PART [SUBPART]]"}) {
    EXPECT_NE(all.out.find(entry), std::string::npos) << entry;
  }
  const ToolRun one = xggeo("points --help");
  EXPECT_EQ(one.exit_code, 0);
  EXPECT_EQ(one.out.rfind("usage: xggeo points [PART [SUBPART]] [-a", 0), 0u) << one.out;
}

TEST(XggeoTool, RepeatsRunsButPrintsOnceAndTimesOnStderr) {
  SKIP_WITHOUT_TOOL();
  const ToolRun r = xggeo("wkt -r 5 -t -a 'point (1 2)'");
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "point (1.000000 2.000000)\n");
  EXPECT_NE(r.err.find("1 geometries x 5 runs"), std::string::npos) << r.err;
}
