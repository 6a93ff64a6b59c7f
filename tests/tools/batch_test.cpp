#include <pty.h>
#include <rapidjson/document.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <set>

#include "headless_host/sanitizer.h"
#include "tests/tools/tool_process.h"
#include "tools/batch/progress_bar.h"

using namespace tool_tests;
using host_tests::ReadText;
using host_tests::WriteText;

namespace {

// Five opening commands and the end.
constexpr char kDrawing[] = "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"100\"><defs/></svg>";
constexpr std::uint64_t kDrawingRecords = 6;

std::vector<std::string> LinesOf(const std::string& text) { return ToolResult{0, text, {}}.Lines(); }

class Batch : public ToolTest {
 protected:
  void Save(const std::string& name, std::string_view text = kDrawing) {
    std::filesystem::create_directories(std::filesystem::path(folder.File(name)).parent_path());
    WriteText(folder.File(name), text);
  }

  ToolResult RunBatch(std::vector<std::string> arguments, std::string_view input = {}) {
    arguments.insert(arguments.begin(), "batch");
    return Run("svgimport", std::move(arguments), input);
  }

  // The objects of the lines by the name of their file, which must be there once.
  std::map<std::string, rapidjson::Document> Results(const std::string& text) {
    std::map<std::string, rapidjson::Document> results;
    for (const std::string& line : LinesOf(text)) {
      rapidjson::Document object;
      object.Parse(line.c_str());
      EXPECT_FALSE(object.HasParseError()) << line;
      if (object.HasParseError()) continue;
      const std::string file = object["file"].GetString();
      EXPECT_FALSE(results.contains(file)) << line;
      results[file] = std::move(object);
    }
    return results;
  }

  std::map<std::string, std::string> Statuses(const std::string& text) {
    std::map<std::string, std::string> statuses;
    for (const auto& [file, object] : Results(text)) statuses[file] = object["status"].GetString();
    return statuses;
  }

  std::vector<std::string> Files(const std::string& text) {
    std::vector<std::string> files;
    for (const std::string& line : LinesOf(text)) {
      rapidjson::Document object;
      object.Parse(line.c_str());
      files.push_back(object["file"].GetString());
    }
    return files;
  }

  // Every regular file below the folder, by its path from there.
  std::set<std::string> FilesBelow(const std::string& name) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.File(name))) {
      if (entry.is_regular_file()) files.insert(entry.path().lexically_relative(folder.File(name)));
    }
    return files;
  }

  static std::string HostileFilter() { return std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-hostile-filter.so"; }
  static std::string ThrowingFilter() { return std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-throwing-filter.so"; }

  bool TemporaryFolderIsEmpty() const { return std::filesystem::is_empty(temporary.Path()); }
};

using Names = std::map<std::string, std::string>;

}  // namespace

TEST_F(Batch, EachFileIsAcceptedRefusedOrFailed) {
  Save("good.svg");
  Save("bad.svg", "<svg>\n<g>\n</svg>");
  const ToolResult result = RunBatch({"good.svg", "bad.svg", "missing.svg"});
  EXPECT_EQ(result.status, 1);
  const auto results = Results(result.out);
  ASSERT_EQ(Statuses(result.out), (Names{{"good.svg", "accepted"}, {"bad.svg", "refused"}, {"missing.svg", "failed"}}));
  EXPECT_EQ(results.at("good.svg")["records"].GetUint64(), kDrawingRecords);
  EXPECT_EQ(results.at("good.svg")["bytes"].GetUint64(), sizeof kDrawing - 1);
  EXPECT_EQ(results.at("good.svg")["commands"]["KEY_FILL"].GetInt(), 2);
  EXPECT_EQ(results.at("good.svg")["commands"]["KEY_ENDF"].GetInt(), 1);
  EXPECT_GT(results.at("good.svg")["seconds"].GetDouble(), 0.0);
  EXPECT_FALSE(results.at("good.svg").HasMember("reason"));
  EXPECT_EQ(std::string(results.at("bad.svg")["reason"].GetString()).substr(0, 8), "line 3: ");
  EXPECT_EQ(results.at("bad.svg")["records"].GetUint64(), 0u);
  EXPECT_STREQ(results.at("missing.svg")["reason"].GetString(), "the file does not exist");
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Batch, TheSummaryIsOnStandardErrorUnlessItIsToBeQuiet) {
  Save("good.svg");
  Save("bad1.svg", "<svg>\n<g>\n</svg>");
  Save("bad2.svg", "<svg>\n\n<g>\n</svg>");
  const ToolResult result = RunBatch({"good.svg", "bad1.svg", "bad2.svg", "missing.svg"});
  EXPECT_EQ(LinesOf(result.err)[0].substr(0, 11), "4 files in ");
  for (const char* line :
       {"  accepted           1\n", "  refused            2\n", "  failed             1\n", "  records            6\n",
        "          2    line N: ", "  missing.svg: the file does not exist\n"}) {
    EXPECT_NE(result.err.find(line), result.err.npos) << line << "in\n" << result.err;
  }
  EXPECT_EQ(RunBatch({"-q", "good.svg", "missing.svg"}).err, "");
}

TEST_F(Batch, TheExitStatusIs0WhenAllWereAcceptedAnd1Otherwise) {
  Save("good.svg");
  Save("bad.svg", "no drawing");
  EXPECT_EQ(RunBatch({"good.svg"}).status, 0);
  EXPECT_EQ(RunBatch({"good.svg", "bad.svg"}).status, 1);
  EXPECT_EQ(RunBatch({"missing.svg", "good.svg"}).status, 1);
  EXPECT_EQ(RunBatch({}, "").status, 0);
}

TEST_F(Batch, NamesComeFromStandardInputALineEach) {
  Save("a.svg");
  Save("b c.svg");
  Save("d/e.svg");
  const Names all = {{"a.svg", "accepted"}, {"b c.svg", "accepted"}, {"d/e.svg", "accepted"}};
  EXPECT_EQ(Statuses(RunBatch({}, "a.svg\n\nb c.svg\nd").out), all);
  EXPECT_EQ(Statuses(RunBatch({"a.svg", "-"}, "b c.svg\nd/e.svg\n").out), all);
}

TEST_F(Batch, NamesOfAListMayEndWithANulCharacter) {
  using namespace std::string_view_literals;
  Save("a.svg");
  Save("b\nc.svg");
  EXPECT_EQ(Statuses(RunBatch({"-0"}, "a.svg\0b\nc.svg\0"sv).out),
            (Names{{"a.svg", "accepted"}, {"b\nc.svg", "accepted"}}));
  const ToolResult result = RunBatch({"-q"}, "a.svg\0b\nc.svg\0"sv);
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("-0"), result.err.npos);
}

TEST_F(Batch, AFileThatIsNamedByADashIsOneInAList) {
  Save("-");
  EXPECT_EQ(Statuses(RunBatch({}, "-\n").out), (Names{{"./-", "accepted"}}));
}

TEST_F(Batch, FoldersAreWalkedInOrder) {
  for (const char* name : {"d/b.svg", "d/a/z.svg", "d/c.SVG", "d/note.txt", "d/svg", "d/B.svg"}) Save(name);
  ASSERT_EQ(symlink(".", folder.File("d/loop.svg").c_str()), 0);
  const ToolResult result = RunBatch({"d", "-j1"});
  EXPECT_EQ(Files(result.out), (std::vector<std::string>{"d/B.svg", "d/a/z.svg", "d/b.svg", "d/c.SVG"}));
}

TEST_F(Batch, TheResultsAreTheSameForAnyNumberOfJobs) {
  std::vector<std::string> files;
  for (int i = 0; i < 12; ++i) {
    files.push_back("f" + std::to_string(i) + ".svg");
    Save(files.back(), i % 4 == 3 ? "no drawing" : kDrawing);
  }
  const auto lines = [&](const std::string& jobs) {
    std::set<std::string> found;
    std::vector<std::string> arguments = files;
    arguments.push_back(jobs);
    for (std::string line : RunBatch(arguments).Lines()) {
      const std::size_t from = line.find("\"seconds\":");
      line.erase(from, line.find(',', from) - from);
      found.insert(line);
    }
    return found;
  };
  const std::set<std::string> one = lines("-j1");
  EXPECT_EQ(one.size(), files.size());
  EXPECT_EQ(lines("-j4"), one);
}

TEST_F(Batch, AResumedBatchLeavesOutWhatItsFileHas) {
  Save("a.svg");
  Save("b.svg");
  EXPECT_EQ(RunBatch({"a.svg", "-o", "out.jsonl"}).status, 0);
  const std::string before = ReadText(folder.File("out.jsonl"));
  const ToolResult result = RunBatch({"a.svg", "b.svg", "-o", "out.jsonl", "--resume"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.err.find("  skipped            1\n"), result.err.npos) << result.err;
  const std::string after = ReadText(folder.File("out.jsonl"));
  EXPECT_EQ(after.substr(0, before.size()), before);
  EXPECT_EQ(Statuses(after), (Names{{"a.svg", "accepted"}, {"b.svg", "accepted"}}));
}

TEST_F(Batch, WithoutResumeTheResultsOfBeforeGo) {
  Save("a.svg");
  Save("b.svg");
  RunBatch({"a.svg", "-o", "out.jsonl"});
  RunBatch({"b.svg", "-o", "out.jsonl"});
  EXPECT_EQ(Statuses(ReadText(folder.File("out.jsonl"))), (Names{{"b.svg", "accepted"}}));
}

TEST_F(Batch, ALineThatWasCutOffIsDoneAgain) {
  for (const char* name : {"a.svg", "b.svg"}) Save(name);
  RunBatch({"a.svg", "b.svg", "-j1", "-o", "out.jsonl"});
  const std::string whole = ReadText(folder.File("out.jsonl"));
  const std::size_t second = whole.find('\n') + 1;
  for (const std::size_t size : {second, second + 1, second + 12, whole.size() - 1}) {
    WriteText(folder.File("out.jsonl"), whole.substr(0, size));
    EXPECT_EQ(RunBatch({"a.svg", "b.svg", "-o", "out.jsonl", "--resume"}).status, 0);
    const std::string after = ReadText(folder.File("out.jsonl"));
    EXPECT_EQ(after.substr(0, second), whole.substr(0, second));
    EXPECT_EQ(Statuses(after), (Names{{"a.svg", "accepted"}, {"b.svg", "accepted"}}));
  }
}

TEST_F(Batch, AResumedBatchRemembersWhatWasRefusedBefore) {
  Save("a.svg");
  Save("bad.svg", "no drawing");
  RunBatch({"bad.svg", "-o", "out.jsonl"});
  EXPECT_EQ(RunBatch({"a.svg", "-o", "out.jsonl", "--resume"}).status, 1);
}

TEST_F(Batch, AFileOfSomethingElseIsNotResumed) {
  Save("a.svg");
  for (const char* text : {kDrawing, "notes\n", "{\"file\":\"a.svg\",\"status\":\"accepted\"}\nnotes\n"}) {
    WriteText(folder.File("other"), text);
    EXPECT_EQ(RunBatch({"a.svg", "-o", "other", "--resume"}).status, 2);
    EXPECT_EQ(ReadText(folder.File("other")), text);
  }
}

TEST_F(Batch, ANameMayBeAnyBytesAndIsFoundAgain) {
  Save("\xE9\"\\\xC3\xA9.svg");
  ToolResult result = RunBatch({"\xE9\"\\\xC3\xA9.svg", "-o", "out.jsonl"});
  EXPECT_EQ(result.status, 0);
  const std::string line = ReadText(folder.File("out.jsonl"));
  EXPECT_EQ(line.substr(0, line.find(",\"records\"")),
            "{\"file\":\"\\udce9\\\"\\\\\xC3\xA9.svg\",\"status\":\"accepted\"");
  RunBatch({"\xE9\"\\\xC3\xA9.svg", "-o", "out.jsonl", "--resume"});
  EXPECT_EQ(ReadText(folder.File("out.jsonl")), line);
}

TEST_F(Batch, StreamsAreWrittenAsDumpPrintsThem) {
  Save("d/a.svg", "<svg height=\"100\"><rect x=\"1\" y=\"2\" width=\"3\" height=\"4\"/></svg>");
  const ToolResult result = RunBatch({"d", "--dump", "out/streams"});
  EXPECT_EQ(result.status, 0);
  EXPECT_STREQ(Results(result.out).at("d/a.svg")["dump"].GetString(), "out/streams/d/a.svg.jsonl");
  const std::string stream = ReadText(folder.File("out/streams/d/a.svg.jsonl"));
  EXPECT_NE(stream, "");
  EXPECT_EQ(stream, Run("svgimport", {"dump", "d/a.svg"}).out);
}

TEST_F(Batch, StreamsOfFilesOfTheSameNameDoNotMeet) {
  const std::string outside = temporary.File("outside.svg");
  WriteText(outside, kDrawing);
  // This one's path from the current folder is that of the other from the root.
  const std::string twin = outside.substr(1);
  for (const std::string& name : std::vector<std::string>{"one/a.svg", "two/a.svg", "two/a.SVG", "a.svg", twin}) {
    Save(name);
  }
  const ToolResult result = RunBatch({"one", "two", "./a.svg", twin, outside, "--dump", "out"});
  EXPECT_EQ(result.status, 0);
  const std::string fullTwin = std::filesystem::canonical(folder.File(twin)).string().substr(1);
  EXPECT_EQ(FilesBelow("out"),
            (std::set<std::string>{"one/a.svg.jsonl", "two/a.svg.jsonl", "two/a.SVG.jsonl", "a.svg.jsonl",
                                   outside.substr(1) + ".jsonl", fullTwin + ".jsonl"}));
}

TEST_F(Batch, PicturesAreDrawnAsRenderDrawsThem) {
  Save("d/a.svg", "<svg width=\"90\" height=\"90\"><rect x=\"1\" y=\"2\" width=\"30\" height=\"40\"/></svg>");
  const ToolResult result = RunBatch({"d", "--render", "out/pictures"});
  EXPECT_EQ(result.status, 0);
  EXPECT_STREQ(Results(result.out).at("d/a.svg")["picture"].GetString(), "out/pictures/d/a.svg.png");
  EXPECT_EQ(FilesBelow("out"), std::set<std::string>{"pictures/d/a.svg.png"});
  const std::string picture = ReadText(folder.File("out/pictures/d/a.svg.png"));
  EXPECT_TRUE(picture.starts_with("\x89PNG"));
  EXPECT_EQ(picture, Run("svgimport", {"render", "d/a.svg", "-o", "-"}).out);
}

TEST_F(Batch, APictureThatCannotBeDrawnIsAFailureOfItsFile) {
  Save("good.svg");
  Save("large.svg", "<svg width=\"1e6\" height=\"10\"><defs/></svg>");
  const ToolResult result = RunBatch({"good.svg", "large.svg", "--render", "out", "--dump", "out"});
  EXPECT_EQ(result.status, 1);
  const auto results = Results(result.out);
  EXPECT_EQ(Statuses(result.out), (Names{{"good.svg", "accepted"}, {"large.svg", "failed"}}));
  const std::string reason = results.at("large.svg")["reason"].GetString();
  EXPECT_TRUE(reason.starts_with("out/large.svg.png: the picture would be 1066667 by 11 pixels")) << reason;
  EXPECT_FALSE(results.at("large.svg").HasMember("picture"));
  EXPECT_EQ(FilesBelow("out"), (std::set<std::string>{"good.svg.jsonl", "good.svg.png"}));
}

TEST_F(Batch, APictureThatCannotBeWrittenIsAFailureOfItsFile) {
  Save("a.svg");
  Save("b.svg");
  std::filesystem::create_directories(folder.File("out/a.svg.png"));
  const ToolResult result = RunBatch({"a.svg", "b.svg", "--render", "out"});
  EXPECT_EQ(Statuses(result.out), (Names{{"a.svg", "failed"}, {"b.svg", "accepted"}}));
  EXPECT_EQ(FilesBelow("out"), std::set<std::string>{"b.svg.png"});
}

TEST_F(Batch, LossesAreCountedByTheirNamesAlsoOfWhatIsRefused) {
  Save("lossy.svg", "<svg height='9'><use/><switch/><use/></svg>");
  Save("whole.svg", "<svg height='9'><g/></svg>");
  Save("bad.svg", "no drawing");
  const ToolResult result = RunBatch({"lossy.svg", "whole.svg", "bad.svg", "missing.svg", "--report"});
  const auto results = Results(result.out);
  ASSERT_EQ(results.size(), 4u);
  ASSERT_TRUE(results.at("lossy.svg").HasMember("losses"));
  const auto& losses = results.at("lossy.svg")["losses"];
  ASSERT_EQ(losses.MemberCount(), 2u);
  EXPECT_EQ(losses["element-use"].GetInt(), 2);
  EXPECT_EQ(losses["element-switch"].GetInt(), 1);
  EXPECT_FALSE(results.at("whole.svg").HasMember("losses"));
  EXPECT_FALSE(results.at("missing.svg").HasMember("losses"));
  ASSERT_EQ(Statuses(result.out)["bad.svg"], "refused");
  EXPECT_EQ(results.at("bad.svg")["losses"]["not-imported"].GetInt(), 1);
  EXPECT_NE(result.err.find("most frequent losses and changes\n          2    element-use\n          1    "),
            result.err.npos)
      << result.err;
  EXPECT_EQ(RunBatch({"lossy.svg"}).out.find("losses"), std::string::npos);
}

TEST_F(Batch, TheSummaryNamesTheTenMostFrequentLosses) {
  for (const char* name : {"d/a.svg", "d/b.svg"}) {
    Save(name,
         "<svg height='9'><use/><a/><svg/><switch/><foreignObject/><animate/><style>a{}</style>"
         "<g display='none'/><g mask='url(#m)'/><g filter='url(#f)'/></svg>");
  }
  Save("d/c.svg", "<svg height='9' viewBox='0 0 1 1'><g/></svg>");
  const ToolResult result = RunBatch({"d", "--report"});
  EXPECT_EQ(Results(result.out).at("d/c.svg")["losses"]["view-box"].GetInt(), 1);
  const std::size_t title = result.err.find("most frequent losses");
  ASSERT_NE(title, result.err.npos) << result.err;
  const std::vector<std::string> lines = LinesOf(result.err.substr(title));
  ASSERT_EQ(lines.size(), 11u) << result.err;
  for (std::size_t i = 1; i < lines.size(); ++i) EXPECT_TRUE(lines[i].starts_with("          2    ")) << lines[i];
}

TEST_F(Batch, AnImportThatIsEndedCostsItsOwnReportOnly) {
  Save("crash.svg");
  Save("good.svg", "<svg height='9'><use/></svg>");
  const ToolResult result = RunBatch({"crash.svg", "good.svg", "-j1", "--report", "--filter", HostileFilter()});
  const auto results = Results(result.out);
  EXPECT_EQ(Statuses(result.out), (Names{{"crash.svg", "failed"}, {"good.svg", "accepted"}}));
  EXPECT_FALSE(results.at("crash.svg").HasMember("losses"));
  EXPECT_EQ(results.at("good.svg")["losses"]["element-use"].GetInt(), 1);
}

TEST_F(Batch, AFileThatIsNotImportedLeavesNoStreamAndNoPicture) {
  Save("crash.svg");
  Save("refuse.svg");
  Save("hang.svg");
  const ToolResult result = RunBatch({"crash.svg", "refuse.svg", "hang.svg", "--dump", "out", "--render", "out",
                                      "--filter", HostileFilter(), "--time-limit", "0.3"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(FilesBelow("out"), std::set<std::string>());
}

TEST_F(Batch, AStreamThatCannotBeWrittenIsAFailureOfItsFile) {
  Save("a.svg");
  Save("b.svg");
  std::filesystem::create_directories(folder.File("out/a.svg.jsonl"));
  const ToolResult result = RunBatch({"a.svg", "b.svg", "--dump", "out"});
  EXPECT_EQ(Statuses(result.out), (Names{{"a.svg", "failed"}, {"b.svg", "accepted"}}));
  EXPECT_EQ(FilesBelow("out"), std::set<std::string>{"b.svg.jsonl"});
}

TEST_F(Batch, AFilterThatComesToNoEndCostsOneLine) {
  for (const char* name : {"abort.svg", "crash.svg", "good.svg", "hang.svg", "quit.svg", "refuse.svg"}) Save(name);
  const ToolResult result = RunBatch({".", "--filter", HostileFilter(), "--time-limit", "0.3", "-j2"});
  EXPECT_EQ(result.status, 1);
  const auto results = Results(result.out);
  ASSERT_EQ(results.size(), 6u);
  const auto reason = [&](const char* file) { return std::string(results.at(file)["reason"].GetString()); };
  EXPECT_EQ(reason("./abort.svg"), "the import was ended: it crashed (signal 6)");
  EXPECT_EQ(reason("./crash.svg"), "the import was ended: it crashed (signal 11)");
  EXPECT_EQ(reason("./hang.svg"), "the import was ended: it took more than 0.3 s");
  EXPECT_EQ(reason("./quit.svg"), "the import was ended: it ended with exit status 0");
  EXPECT_EQ(Statuses(result.out), (Names{{"./abort.svg", "failed"},
                                         {"./crash.svg", "failed"},
                                         {"./good.svg", "accepted"},
                                         {"./hang.svg", "failed"},
                                         {"./quit.svg", "failed"},
                                         {"./refuse.svg", "refused"}}));
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Batch, AnImportThatNeedsTooMuchMemoryCostsOneLine) {
  if (HEADLESS_HOST_ADDRESS_SANITIZER) GTEST_SKIP() << "AddressSanitizer reserves more than any limit";
  Save("grow.svg");
  Save("good.svg");
  const ToolResult result = RunBatch({".", "--filter", HostileFilter(), "--memory-limit", "200"});
  const auto results = Results(result.out);
  EXPECT_STREQ(results.at("./grow.svg")["reason"].GetString(), "the import was ended: it used more than 200 MB");
  EXPECT_STREQ(results.at("./good.svg")["status"].GetString(), "accepted");
}

TEST_F(Batch, AnErrorThatLeavesTheFilterIsAFailureWithItsText) {
  Save("check.svg");
  Save("other.svg");
  const ToolResult result = RunBatch({"check.svg", "other.svg", "--filter", ThrowingFilter()});
  const auto results = Results(result.out);
  EXPECT_EQ(Statuses(result.out), (Names{{"check.svg", "failed"}, {"other.svg", "accepted"}}));
  EXPECT_STREQ(results.at("check.svg")["reason"].GetString(), "IXMLDOMDocument: status 0x80004005");
  EXPECT_STREQ(results.at("check.svg")["printed"].GetString(), "closed\n");
}

TEST_F(Batch, WrongArgumentsAreStatus2) {
  Save("a.svg");
  const std::vector<std::vector<std::string>> wrong = {
      {"--no-such-option", "a.svg"},  {"-j", "0", "a.svg"},
      {"-j", "many", "a.svg"},        {"-j", "-1", "a.svg"},
      {"-j", "257", "a.svg"},         {"--resume", "a.svg"},
      {"-o", "missing/out", "a.svg"}, {"--time-limit", "-1", "a.svg"},
      {"--fonts", "some", "a.svg"},   {"--filter", "missing.so", "a.svg"},
  };
  for (const std::vector<std::string>& arguments : wrong) {
    const ToolResult result = RunBatch(arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
  }
}

TEST_F(Batch, ResultsThatCannotBeWrittenEndTheBatchWithStatus1) {
  Save("a.svg");
  Save("b.svg");
  redirectedOut = "/dev/full";
  const ToolResult result = RunBatch({"a.svg", "b.svg", "-j1", "-q"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "svgimport: standard output: No space left on device\n");
}

TEST_F(Batch, AnInterruptionKeepsWhatIsDoneAndLeavesNothingElse) {
  Save("a.svg");
  Save("hang.svg");
  const std::string program = std::string(SVGIMPORT_BIN_DIR) + "/svgimport", filter = HostileFilter();
  const std::string errors = temporary.File("errors");
  const pid_t child = fork();
  if (child == 0) {
    std::signal(SIGINT, SIG_DFL);
    const bool ready = chdir(folder.Path().c_str()) == 0 && setenv("TMPDIR", folder.Path().c_str(), 1) == 0 &&
                       std::freopen(errors.c_str(), "w", stderr) != nullptr;
    if (ready) {
      execl(program.c_str(), "svgimport", "batch", "-j1", "-q", "--filter", filter.c_str(), "-o", "out.jsonl", "--dump",
            "streams", "a.svg", "hang.svg", nullptr);
    }
    _exit(127);
  }
  // The stream of the second file under way says that it runs.
  const auto runs = [&] {
    if (!std::filesystem::exists(folder.File("streams"))) return false;
    const std::set<std::string> streams = FilesBelow("streams");
    return std::any_of(streams.begin(), streams.end(), [](const auto& name) { return name.ends_with(".part"); });
  };
  for (int i = 0; i < 2000 && !(LinesOf(ReadText(folder.File("out.jsonl"))).size() == 1 && runs()); ++i) usleep(5000);
  kill(child, SIGINT);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGINT);
  EXPECT_EQ(Statuses(ReadText(folder.File("out.jsonl"))), (Names{{"a.svg", "accepted"}}));
  EXPECT_EQ(FilesBelow("."), (std::set<std::string>{"a.svg", "hang.svg", "out.jsonl", "streams/a.svg.jsonl"}));
  EXPECT_EQ(ReadText(errors), "svgimport: interrupted; go on with --resume -o out.jsonl\n");
}

TEST_F(Batch, ATerminalShowsHowFarItIs) {
  Save("a.svg");
  Save("b.svg");
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    const std::string program = std::string(SVGIMPORT_BIN_DIR) + "/svgimport";
    if (chdir(folder.Path().c_str()) == 0) {
      execl(program.c_str(), "svgimport", "batch", "-o", "out.jsonl", "a.svg", "b.svg", nullptr);
    }
    _exit(127);
  }
  ASSERT_GE(terminal, 0);
  std::string shown;
  char block[4096];
  for (ssize_t got; (got = read(terminal, block, sizeof block)) > 0;)
    shown.append(block, static_cast<std::size_t>(got));
  close(terminal);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_NE(shown.find("\r[------------------------------] 0 of 2"), shown.npos) << shown;
  EXPECT_NE(shown.find("2 files in "), shown.npos) << shown;
}

TEST(BatchProgress, TheLineHasTheShareTheRateAndTheTimeLeft) {
  EXPECT_EQ(ProgressText(0, 0, 0, 0.0), "0");
  EXPECT_EQ(ProgressText(30, 0, 30, 2.0), "30, 15.0 files/s");
  EXPECT_EQ(ProgressText(5, 10, 0, 1.0), "[###############---------------] 5 of 10");
  // 20 a second, 1260 to go: 63 s. Those that were skipped do not make it faster.
  EXPECT_EQ(ProgressText(140, 1400, 40, 2.0), "[###---------------------------] 140 of 1400, 20.0 files/s, 1:03 left");
  EXPECT_EQ(ProgressText(1, 7323, 1, 0.5).substr(33), "1 of 7323, 2.0 files/s, 1:01:01 left");
  EXPECT_EQ(ProgressText(10, 10, 10, 2.0), "[##############################] 10 of 10, 5.0 files/s");
}

namespace {

// The commands that docs/batch.md shows, with the machine itself in place of others.
class BatchUnderGnuParallel : public Batch {
 protected:
  // Nine files in shares of four, one of which has a file that is refused; `where` tells who does the work.
  void ExpectAllFiles(const std::string& where) {
    if (access("/usr/bin/parallel", X_OK) != 0) GTEST_SKIP() << "GNU parallel is not installed";
    Names all;
    for (int i = 0; i < 8; ++i) {
      const std::string name = "d/f " + std::to_string(i) + ".svg";
      Save(name);
      all[name] = "accepted";
    }
    Save("d/bad.svg", "no drawing");
    all["d/bad.svg"] = "refused";
    const std::string command = "cd '" + folder.Path() + "' && export HOME='" + temporary.Path() +
                                "' && find d -name '*.svg' -print0 | /usr/bin/parallel -0 --pipe -N4 --recend '\\0' " +
                                where + " '" + SVGIMPORT_BIN_DIR + "/svgimport' batch -0 --jobs 1 -q - > '" +
                                temporary.File("results") + "' 2> '" + temporary.File("errors") + "'";
    const int status = std::system(command.c_str());
    // The number of shares that did not end with 0.
    EXPECT_EQ(WEXITSTATUS(status), 1) << ReadText(temporary.File("errors"));
    EXPECT_EQ(Statuses(ReadText(temporary.File("results"))), all);
  }
};

}  // namespace

TEST_F(BatchUnderGnuParallel, SeveralJobsShareTheFiles) { ExpectAllFiles("--jobs 3"); }

TEST_F(BatchUnderGnuParallel, ALoginSharesTheFiles) { ExpectAllFiles("--sshlogin 2/:"); }
