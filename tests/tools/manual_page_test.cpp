// The manual pages and the completion against the programs' own help.
#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

#include "tests/tools/tool_process.h"

using namespace tool_tests;

namespace {

using Options = std::set<std::string>;

class ManualPages : public ToolTest {
 protected:
  std::vector<std::string> Help(const std::string& tool, std::vector<std::string> arguments) {
    arguments.push_back("--help");
    return Run(tool, arguments).Lines();
  }
};

class Completion : public ToolTest {
 protected:
  // What bash offers for the last of the words.
  std::string Offered(const std::vector<std::string>& words) {
    std::string script = "source '" SVGIMPORT_SOURCE_DIR "/completion/svgimport.bash'\nCOMP_WORDS=(";
    for (const std::string& word : words) script += "'" + word + "' ";
    script += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) + "\n_svgimport\necho \"${COMPREPLY[*]}\"\n";
    host_tests::WriteText(folder.File("complete"), script);
    std::FILE* out = popen(("bash '" + folder.File("complete") + "'").c_str(), "r");
    char line[1000] = "";
    const bool read = std::fgets(line, sizeof line, out) != nullptr;
    pclose(out);
    std::string offered = read ? line : "";
    while (offered.ends_with('\n')) offered.pop_back();
    return offered;
  }
};

// The options that a help text explains, short and long, apart from --help.
Options OptionsOf(const std::vector<std::string>& help) {
  const std::regex form("^ +(-[A-Za-z0-9])?,?(--[a-z-]+)?( |$)");
  Options options;
  for (const std::string& line : help) {
    std::smatch match;
    if (!std::regex_search(line, match, form)) continue;
    if (match[1].matched) options.insert(match[1]);
    if (match[2].matched) options.insert(match[2]);
  }
  options.erase("-h");
  options.erase("--help");
  return options;
}

std::vector<std::string> SubcommandsOf(const std::vector<std::string>& help) {
  std::vector<std::string> commands;
  auto line = std::find(help.begin(), help.end(), "Subcommands:");
  for (; line != help.end() && !line->empty(); ++line) {
    std::smatch match;
    if (std::regex_search(*line, match, std::regex("^  ([a-z]+)"))) commands.push_back(match[1]);
  }
  return commands;
}

// The options that a section of a manual page explains: those in the line behind each .TP.
Options OptionsOfSection(const std::string& page, const std::string& section) {
  std::ifstream in(std::string(SVGIMPORT_SOURCE_DIR "/man/") + page);
  const std::regex form(R"(\\f[BR]?(\\-(\\-)?[a-zA-Z0-9](?:[a-z]|\\-)*))");
  Options options;
  bool inside = false, explains = false;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(".SH") || line.starts_with(".SS")) inside = line == section;
    if (inside && explains) {
      for (std::sregex_iterator match(line.begin(), line.end(), form), end; match != end; ++match) {
        options.insert(std::regex_replace((*match)[1].str(), std::regex(R"(\\)"), ""));
      }
    }
    explains = line == ".TP";
  }
  options.erase("-h");
  options.erase("--help");
  return options;
}

TEST_F(ManualPages, ExplainTheOptionsOfEveryCommandAndNoOthers) {
  EXPECT_EQ(OptionsOfSection("svgimport.1", ".SH OPTIONS"), OptionsOf(Help("svgimport", {})));
  const std::vector<std::string> commands = SubcommandsOf(Help("svgimport", {}));
  EXPECT_TRUE(std::count(commands.begin(), commands.end(), "dump"));
  for (const std::string& command : commands) {
    const Options options = OptionsOf(Help("svgimport", {command}));
    EXPECT_FALSE(options.empty());
    EXPECT_EQ(OptionsOfSection("svgimport.1", ".SS " + command), options) << command;
  }
}

TEST_F(ManualPages, ExplainTheOptionsOfTheOperatorToolAndNoOthers) {
  const Options options = OptionsOf(Help("svgimport-ops", {}));
  EXPECT_TRUE(options.contains("--doc-height"));
  EXPECT_EQ(OptionsOfSection("svgimport-ops.1", ".SH OPTIONS"), options);
}

TEST_F(Completion, OffersCommandsOptionsAndTheValuesOfAnOption) {
  const std::string tool = SVGIMPORT_BIN_DIR "/svgimport";
  EXPECT_EQ(Offered({tool, "du"}), "dump");
  EXPECT_EQ(Offered({tool, "--v"}), "--version");
  EXPECT_EQ(Offered({tool, "dump", "--fon"}), "--fonts");
  EXPECT_EQ(Offered({tool, "dump", "--fonts", ""}), "any system none");
  EXPECT_EQ(Offered({tool + "-ops", "--doc"}), "--doc-height");
}

TEST_F(Completion, OffersFilesWhereAFileIsDue) {
  const std::string tool = SVGIMPORT_BIN_DIR "/svgimport";
  const std::string examples = SVGIMPORT_SOURCE_DIR "/examples/";
  EXPECT_EQ(Offered({tool, "dump", examples + "basic-shapes.s"}), examples + "basic-shapes.svg");
  EXPECT_EQ(Offered({tool, "dump", "-o", examples + "basic-shapes.s"}), examples + "basic-shapes.svg");
}

}  // namespace
