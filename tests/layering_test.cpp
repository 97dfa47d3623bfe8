// Keeps the layering of src/ true: includes point from the outer layers toward core, and the
// library's own code calls internal functions, never an export.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path kSrc = fs::path(__FILE__).parent_path().parent_path() / "src";

struct Source {
  std::string layer;  // the folder below src/
  std::string name;   // path relative to src/
  std::string text;
};

std::vector<Source> sources() {
  std::vector<Source> all;
  for (const auto& entry : fs::recursive_directory_iterator(kSrc)) {
    const std::string ext = entry.path().extension().string();
    if (!entry.is_regular_file() || (ext != ".cpp" && ext != ".h")) continue;
    std::ifstream in(entry.path());
    std::stringstream text;
    text << in.rdbuf();
    const fs::path rel = fs::relative(entry.path(), kSrc);
    all.push_back({rel.begin()->string(), rel.generic_string(), text.str()});
  }
  return all;
}

// The text with comments and string literals blanked out (line breaks kept).
std::string code_only(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "//") == 0) {
      while (i < text.size() && text[i] != '\n') ++i;
      if (i < text.size()) out += '\n';
    } else if (text.compare(i, 2, "/*") == 0) {
      for (i += 2; i < text.size() && text.compare(i, 2, "*/") != 0; ++i) {
        if (text[i] == '\n') out += '\n';
      }
      ++i;
    } else if (text[i] == '"' && (i == 0 || text[i - 1] != '\'')) {
      for (++i; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\') ++i;
      }
      out += "\"\"";
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace

TEST(Layering, IncludesPointTowardCore) {
  // core is the bottom layer; relate (the shared segment and ring tests, predicates and
  // validation) sits on core alone; the other layers may use both.
  const std::map<std::string, std::set<std::string>> allowed = {
      {"core", {"core"}},
      {"relate", {"core", "relate"}},
  };
  const std::regex include(R"(#include\s+"(\w+)/)");
  const std::vector<Source> all = sources();
  EXPECT_GT(all.size(), 20u) << kSrc;  // the sources are found
  for (const Source& s : all) {
    const auto rule = allowed.find(s.layer);
    if (rule == allowed.end()) continue;
    for (std::sregex_iterator it(s.text.begin(), s.text.end(), include), end; it != end; ++it) {
      EXPECT_TRUE(rule->second.count((*it)[1].str())) << s.name << " includes " << (*it)[0].str();
    }
  }
}

TEST(Layering, NoLibraryCodeCallsAnExport) {
  // A use of an export name followed by "(" is allowed only as a definition: the text before it
  // on its line is a return type (and linkage), nothing else.
  const std::regex use(R"(\b(xgWKB_\w+)\s*\()");
  const std::regex definition_prefix(R"(^\s*(extern\s+""\s+)?[A-Za-z_][\w:]*(\s+[A-Za-z_][\w:]*)*[\s\*&]+$)");
  const std::regex statement_word(R"(\b(return|else|case|do)\b)");
  for (const Source& s : sources()) {
    std::istringstream lines(code_only(s.text));
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
      for (std::sregex_iterator it(line.begin(), line.end(), use), end; it != end; ++it) {
        const std::string before = line.substr(0, static_cast<std::size_t>(it->position()));
        const bool is_definition =
            std::regex_match(before, definition_prefix) && !std::regex_search(before, statement_word);
        EXPECT_TRUE(is_definition) << s.name << ":" << number << " calls " << (*it)[1].str();
      }
    }
  }
}
