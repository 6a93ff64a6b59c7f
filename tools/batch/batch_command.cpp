#include "tools/batch/batch_command.h"

#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tools/batch/batch_job.h"
#include "tools/batch/batch_result.h"
#include "tools/batch/batch_summary.h"
#include "tools/batch/file_names.h"
#include "tools/batch/progress_bar.h"
#include "tools/filter_library.h"
#include "tools/guarded_child.h"
#include "tools/import_document.h"
#include "tools/option_values.h"

namespace {

constexpr unsigned kMostJobs = 256;

struct BatchOptions {
  BatchJobOptions job;
  std::vector<std::string> operands;
  std::string output = "-";
  unsigned jobs = std::max(1u, std::thread::hardware_concurrency());
  bool null = false;
  bool resume = false;
  bool quiet = false;
};

// How many files the operands stand for; 0 when a list among them makes that unknown.
std::uint64_t CountFiles(const std::vector<std::string>& operands) {
  if (std::find(operands.begin(), operands.end(), "-") != operands.end()) return 0;
  FileNames names(operands, '\n');
  std::string file;
  std::uint64_t count = 0;
  while (names.Take(file) == FileNames::Next::kFile) ++count;
  return count;
}

class Batch {
 public:
  explicit Batch(const BatchOptions& options)
      : options_(options), names_(options.operands, options.null ? '\0' : '\n') {}

  int Run() {
    // Each child has a fresh instance of what is loaded here and never called.
    const FilterLibrary filter(options_.job.import.filter);
    if (!filter.Failure().empty()) {
      Complain("the filter cannot be loaded: " + filter.Failure());
      return kExitUsage;
    }
    std::string failure;
    if (!results_.Open(options_.output, options_.resume, failure)) {
      Complain(options_.output + ": " + failure);
      return kExitUsage;
    }
    const auto started = std::chrono::steady_clock::now();
    const int signal = ImportAll();
    if (!options_.quiet) {
      const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
      summary_.Print(stderr, seconds, options_.jobs, skipped_);
    }
    if (signal != 0) {
      Complain("interrupted; " + (options_.output == "-" ? std::string("with -o FILE a batch can be resumed")
                                                         : "go on with --resume -o " + options_.output));
      return kExitSignal + signal;
    }
    if (!results_.Close() && !unwritten_) ComplainOfResults();
    if (!names_.Failure().empty()) {
      Complain("the list on standard input: " + names_.Failure());
      return kExitUsage;
    }
    const auto& had = results_.HadCounts();
    const bool allFine = summary_.Count(BatchResult::kAccepted) == summary_.Files() &&
                         had[BatchResult::kRefused] + had[BatchResult::kFailed] == 0;
    return allFine && !unwritten_ ? kExitDone : kExitNotImported;
  }

 private:
  // Answers the number of the signal that ended it, or 0.
  int ImportAll() {
    HeldSignals signals;
    std::vector<std::unique_ptr<BatchJob>> jobs;
    for (unsigned i = 0; i < options_.jobs; ++i) jobs.push_back(std::make_unique<BatchJob>(options_.job));
    const bool showsProgress =
        !options_.quiet && isatty(STDERR_FILENO) != 0 && !(options_.output == "-" && isatty(STDOUT_FILENO) != 0);
    const std::uint64_t total = showsProgress ? CountFiles(options_.operands) : 0;
    ProgressBar progress(showsProgress);
    for (;;) {
      bool waitsForList = false, running = false;
      for (const std::unique_ptr<BatchJob>& job : jobs) {
        if (job->IsRunning() && job->HasEnded()) Finish(*job);
        if (!job->IsRunning() && !unwritten_) waitsForList = !StartNext(*job) || waitsForList;
        running = running || job->IsRunning();
      }
      progress.Show(skipped_ + summary_.Files(), total, summary_.Files());
      if (unwritten_ || (!running && !waitsForList)) return 0;
      if (const int signal = signals.Wait(waitsForList ? STDIN_FILENO : -1)) return signal;
      if (waitsForList) names_.ReadList();
    }
  }

  // Starts the job on the next file if there is one. False when the list has to be waited for.
  bool StartNext(BatchJob& job) {
    std::string file;
    while (!unwritten_) {
      const FileNames::Next next = names_.Take(file);
      if (next != FileNames::Next::kFile) return next == FileNames::Next::kEnd;
      if (results_.Had(file)) {
        ++skipped_;
      } else if (job.Start(file)) {
        return true;
      } else {
        Finish(job);
      }
    }
    return true;
  }

  void Finish(BatchJob& job) {
    const BatchResult result = job.TakeResult();
    summary_.Add(result);
    if (!unwritten_ && !results_.Write(result)) ComplainOfResults();
  }

  void ComplainOfResults() {
    unwritten_ = true;
    Complain((options_.output == "-" ? "standard output" : options_.output) + ": " + std::strerror(errno));
  }

  const BatchOptions& options_;
  FileNames names_;
  ResultFile results_;
  BatchSummary summary_;
  std::uint64_t skipped_ = 0;
  bool unwritten_ = false;
};

}  // namespace

void AddBatchCommand(CLI::App& app, int& status) {
  CLI::App* batch = app.add_subcommand(
      "batch", "Imports many documents, each in a process of its own, and prints a line of JSON for each");
  auto options = std::make_shared<BatchOptions>();
  options->job.limits.seconds = 60.0;
  batch
      ->add_option(
          "files", options->operands,
          "Documents, and folders, whose .svg files are taken; - is a list of them on standard input, which is "
          "read as well when nothing is named")
      ->type_name("FILE|FOLDER...");
  batch->add_flag("-0,--null", options->null, "The names of the list end with a NUL character instead of a line end");
  batch->add_option("-j,--jobs", options->jobs, "How many documents are imported at a time")
      ->type_name("N")
      ->check([](const std::string& text) {
        const bool good = !text.empty() && text.size() <= 4 && text.find_first_not_of("0123456789") == text.npos &&
                          std::stoul(text) >= 1 && std::stoul(text) <= kMostJobs;
        return good ? std::string() : "'" + text + "' is not a number from 1 to " + std::to_string(kMostJobs);
      })
      ->capture_default_str();
  batch->add_option("-o,--output", options->output, "Where the results go; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  batch->add_flag("--resume", options->resume,
                  "Keeps the results that the file of -o has already and leaves out their documents");
  batch
      ->add_option("--dump", options->job.dumpFolder,
                   "Writes the stream of each document, as dump prints it, to DIR/PATH.jsonl, PATH being the "
                   "document's")
      ->type_name("DIR");
  batch
      ->add_option("--render", options->job.renderFolder,
                   "Draws what came of each document, as render does without options, to DIR/PATH.png")
      ->type_name("DIR");
  batch->add_flag("--report", options->job.report,
                  "Counts what the import of each document loses or changes, by the names that report gives it");
  batch->add_flag("-q,--quiet", options->quiet, "No progress on a terminal and no summary on standard error");
  AddLimitOptions(*batch, options->job.limits);
  AddHostOptions(*batch, options->job.import);
  batch->footer(
      "A result is one object: file, status (accepted, refused by the filter, or failed), reason, records, seconds, "
      "bytes, commands (records by their name), losses (findings of --report by their name), dump and picture (the "
      "files of --dump and --render), printed (what the filter printed).\n\n"
      "Exit status: 0 all accepted, 1 one was refused or failed, or the results could not be written, 2 wrong "
      "arguments or files.\n\n"
      "Examples:\n"
      "  svgimport batch drawings -o results.jsonl\n"
      "  svgimport batch drawings -o results.jsonl --resume\n"
      "  svgimport batch drawings --dump streams --jobs 4\n"
      "  svgimport batch drawings --report --render pictures -o results.jsonl\n"
      "  find . -name '*.svg' -print0 | svgimport batch -0 -q | jq -r 'select(.status != \"accepted\") | .file'");
  batch->callback([options, &status] {
    if (options->operands.empty()) options->operands = {"-"};
    if (options->resume && options->output == "-") {
      Complain("--resume needs the results of before: -o FILE");
      status = kExitUsage;
      return;
    }
    status = Batch(*options).Run();
  });
}
