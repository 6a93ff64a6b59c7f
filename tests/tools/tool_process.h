// Runs one of the built tools as a process of its own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/headless_host/host_fixture.h"

namespace tool_tests {

struct ToolResult {
  int status;  // exit status; -1 when a signal ended the tool
  std::string out, err;

  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < out.size();) {
      const std::size_t end = out.find('\n', at);
      lines.push_back(out.substr(at, end - at));
      if (end == out.npos) break;
      at = end + 1;
    }
    return lines;
  }

  // The lines that hold `part`.
  std::vector<std::string> LinesWith(std::string_view part) const {
    std::vector<std::string> found;
    for (const std::string& line : Lines()) {
      if (line.find(part) != line.npos) found.push_back(line);
    }
    return found;
  }
};

// Tools run in a folder of the test's own, which is also their folder for temporary files.
class ToolTest : public testing::Test {
 protected:
  // `tool` is the name of a program; `input` is its standard input.
  ToolResult Run(const std::string& tool, std::vector<std::string> arguments, std::string_view input = {}) {
    const std::string program = std::string(SVGIMPORT_BIN_DIR) + "/" + tool;
    const std::string inFile = streams_.File("in"), outFile = streams_.File("out"), errFile = streams_.File("err");
    host_tests::WriteText(inFile, input);
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
      const bool ready =
          chdir(folder.Path().c_str()) == 0 && setenv("TMPDIR", temporary.Path().c_str(), 1) == 0 &&
          std::freopen(inFile.c_str(), "r", stdin) != nullptr &&
          std::freopen(redirectedOut.empty() ? outFile.c_str() : redirectedOut.c_str(), "w", stdout) != nullptr &&
          std::freopen(errFile.c_str(), "w", stderr) != nullptr;
      if (ready) execv(program.c_str(), argv.data());
      _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, host_tests::ReadText(outFile), host_tests::ReadText(errFile)};
  }

  host_tests::ScratchFolder folder;     // the current folder of the tool
  host_tests::ScratchFolder temporary;  // its folder for temporary files
  std::string redirectedOut;            // where standard output goes instead

 private:
  host_tests::ScratchFolder streams_;
};

}  // namespace tool_tests
