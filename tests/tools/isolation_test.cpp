#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "headless_host/sanitizer.h"
#include "tests/tools/tool_process.h"

using namespace tool_tests;
using host_tests::ReadText;
using host_tests::WriteText;

namespace {

constexpr char kOneRecord[] = "{\"key\":12,\"name\":\"KEY_FILL\",\"size\":0,\"value\":7}\n";
constexpr char kEnd[] = "{\"key\":10,\"name\":\"KEY_ENDF\",\"size\":0}\n";

class Isolation : public ToolTest {
 protected:
  ToolResult DumpNamed(const std::string& name, std::vector<std::string> arguments = {}) {
    WriteText(folder.File(name), "");
    arguments.insert(arguments.begin(), {"dump", "--filter", HostileFilter(), name});
    return Run("svgimport", std::move(arguments));
  }

  // Draws over a picture of before, or to standard output if `output` is "-".
  ToolResult RenderNamed(const std::string& name, const std::string& output) {
    WriteText(folder.File(name), "");
    WriteText(folder.File("out.png"), "before");
    std::vector<std::string> arguments = {"render", "--filter", HostileFilter(), name, "-o", output};
    if (name == "hang.svg") arguments.insert(arguments.end(), {"--time-limit", "0.3"});
    return Run("svgimport", std::move(arguments));
  }

  static std::string HostileFilter() { return std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-hostile-filter.so"; }
  bool TemporaryFolderIsEmpty() const { return std::filesystem::is_empty(temporary.Path()); }
};

}  // namespace

TEST_F(Isolation, AnImportThatComesToItsEndIsNotTouched) {
  const ToolResult result = DumpNamed("good.svg");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, std::string(kOneRecord) + kEnd);
  EXPECT_EQ(result.err, "");
}

TEST_F(Isolation, ACrashIsOneLineAndTheRecordsBeforeItStay) {
  const ToolResult result = DumpNamed("crash.svg");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, kOneRecord);
  EXPECT_EQ(result.err, "svgimport: crash.svg: the import was ended: it crashed (signal 11)\n");
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Isolation, TheRecordsBeforeACrashStayInAFileToo) {
  EXPECT_EQ(DumpNamed("abort.svg", {"-o", "out.jsonl"}).status, 3);
  EXPECT_EQ(ReadText(folder.File("out.jsonl")), kOneRecord);
}

TEST_F(Isolation, UnlessTheyAreToldOtherwiseTheToolsHaveTheseLimits) {
  const auto limitsOf = [&](const std::string& command) {
    std::string limits;
    for (const std::string& line : Run("svgimport", {command, "--help"}).LinesWith("-limit "))
      limits += line.substr(0, line.find(' ', line.find('='))) + "\n";
    return limits;
  };
  EXPECT_EQ(limitsOf("dump"), "  --time-limit SECONDS=300\n  --memory-limit MB=8192\n");
  EXPECT_EQ(limitsOf("render"), limitsOf("dump"));
  EXPECT_EQ(limitsOf("batch"), "  --time-limit SECONDS=60\n  --memory-limit MB=8192\n");
}

TEST_F(Isolation, AnImportThatTakesTooLongIsEnded) {
  const ToolResult result = DumpNamed("hang.svg", {"--time-limit", "0.3"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, kOneRecord);
  EXPECT_EQ(result.err, "svgimport: hang.svg: the import was ended: it took more than 0.3 s\n");
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Isolation, AnImportThatNeedsTooMuchMemoryIsEnded) {
  if (HEADLESS_HOST_ADDRESS_SANITIZER) GTEST_SKIP() << "AddressSanitizer reserves more than any limit";
  const ToolResult result = DumpNamed("grow.svg", {"--memory-limit", "200"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, kOneRecord);
  EXPECT_EQ(result.err, "svgimport: grow.svg: the import was ended: it used more than 200 MB\n");
}

TEST_F(Isolation, AFilterThatLeavesTheProcessDoesNotPassForAnImport) {
  const ToolResult result = DumpNamed("quit.svg");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err, "svgimport: quit.svg: the import was ended: it ended with exit status 0\n");
}

TEST_F(Isolation, ADrawingOfAnImportThatDoesNotEndLeavesThePictureOfBefore) {
  const std::pair<std::string, std::string> ends[] = {{"crash.svg", "it crashed (signal 11)"},
                                                      {"hang.svg", "it took more than 0.3 s"},
                                                      {"quit.svg", "it ended with exit status 0"}};
  for (const auto& [name, why] : ends) {
    const ToolResult result = RenderNamed(name, "out.png");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "svgimport: " + name + ": the import was ended: " + why + "\n");
    EXPECT_EQ(ReadText(folder.File("out.png")), "before");
  }
  EXPECT_TRUE(TemporaryFolderIsEmpty());
  EXPECT_EQ(RenderNamed("good.svg", "out.png").status, 0);
  EXPECT_TRUE(ReadText(folder.File("out.png")).starts_with("\x89PNG"));
}

TEST_F(Isolation, NothingOfADrawingThatIsEndedReachesStandardOutput) {
  EXPECT_EQ(RenderNamed("crash.svg", "-").out, "");
  EXPECT_TRUE(RenderNamed("good.svg", "-").out.starts_with("\x89PNG"));
}

TEST_F(Isolation, NoLimitIsWrittenAs0) {
  EXPECT_EQ(DumpNamed("good.svg", {"--time-limit", "0", "--memory-limit", "0"}).status, 0);
}

TEST_F(Isolation, LimitsMustBeNumbersThatAreNotNegative) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--time-limit", "-1"},
                                                    {"--time-limit", "soon"},
                                                    {"--memory-limit", "-1"},
                                                    {"--memory-limit", "much"}}) {
    EXPECT_EQ(DumpNamed("good.svg", arguments).status, 2) << testing::PrintToString(arguments);
  }
}

TEST_F(Isolation, TheTimeInWhichNobodyReadsDoesNotCount) {
  // More than a pipe holds.
  std::string drawing = "<svg height=\"100\">";
  for (int i = 0; i < 500; ++i) drawing += "<rect x=\"1\" y=\"2\" width=\"3\" height=\"4\"/>";
  WriteText(folder.File("long.svg"), drawing + "</svg>");
  const std::string expected = Run("svgimport", {"dump", "long.svg"}).out;
  ASSERT_GT(expected.size(), std::size_t{1} << 17);
  const std::string command = "cd '" + folder.Path() + "' && '" + SVGIMPORT_BIN_DIR +
                              "/svgimport' dump --time-limit 1 long.svg | (sleep 1.5; cat) > read";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(ReadText(folder.File("read")), expected);
}

TEST_F(Isolation, ASignalEndsTheImportAndTheToolAndLeavesNothing) {
  WriteText(folder.File("hang.svg"), "");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const std::string out = folder.File("out" + std::to_string(signal));
    const std::string program = std::string(SVGIMPORT_BIN_DIR) + "/svgimport";
    const std::string filter = HostileFilter(), document = folder.File("hang.svg");
    const pid_t child = fork();
    if (child == 0) {
      // Some of those who start tests ignore these.
      std::signal(SIGINT, SIG_DFL);
      std::signal(SIGHUP, SIG_DFL);
      setenv("TMPDIR", temporary.Path().c_str(), 1);
      execl(program.c_str(), "svgimport", "dump", "--filter", filter.c_str(), "-o", out.c_str(), document.c_str(),
            nullptr);
      _exit(127);
    }
    // With the first record the import runs.
    for (int i = 0; i < 2000 && ReadText(out).empty(); ++i) usleep(5000);
    ASSERT_EQ(ReadText(out), kOneRecord);
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_TRUE(TemporaryFolderIsEmpty());
  }
}
