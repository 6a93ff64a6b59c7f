// The command-line tool of the import filter. Each of its commands stands in a file of its own.

#include <csignal>
#include <string>

#include "tools/batch/batch_command.h"
#include "tools/dump_command.h"
#include "tools/option_values.h"
#include "tools/render_command.h"
#include "tools/report_command.h"

int main(int argc, char** argv) {
  // A reader that goes away shows as a failed write, so that temporary files are removed before the end.
  std::signal(SIGPIPE, SIG_IGN);

  CLI::App app("Looks at what the SVG import filter makes of a document.", "svgimport");
  app.set_version_flag("-V,--version", std::string("svgimport ") + SVGIMPORT_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  svgimport dump drawing.svg\n"
      "  svgimport render drawing.svg -o drawing.png\n"
      "  svgimport report drawing.svg\n"
      "  svgimport batch drawings -o results.jsonl\n"
      "  svgimport dump --help");
  int status = kExitDone;
  AddDumpCommand(app, status);
  AddRenderCommand(app, status);
  AddReportCommand(app, status);
  AddBatchCommand(app, status);
  status = ParseArguments(app, argc, argv).value_or(status);
  if (status > kExitSignal) {
    // Whoever started the tool is to see that the signal ended it: a shell then ends its loop.
    std::signal(status - kExitSignal, SIG_DFL);
    std::raise(status - kExitSignal);
  }
  return status;
}
