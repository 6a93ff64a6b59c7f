// The import of one file of a batch, in a child process.
#pragma once

#include <sys/types.h>
#include <chrono>
#include <optional>
#include <string>

#include "tools/batch/batch_result.h"
#include "tools/guarded_child.h"
#include "tools/import_document.h"

struct BatchJobOptions {
  ImportOptions import;  // `file` is not used
  Limits limits;
  std::string dumpFolder;    // none if empty
  std::string renderFolder;  // the same
  bool report = false;
};

// A text in memory that a child writes and its parent reads; what does not fit is lost.
class SharedText {
 public:
  SharedText();
  ~SharedText();
  SharedText(const SharedText&) = delete;
  SharedText& operator=(const SharedText&) = delete;

  void Clear();
  std::string Text() const;
  int Descriptor() const { return descriptor_; }  // -1 when there is no memory for it

 private:
  int descriptor_;
};

// One file at a time; used again for the next one.
class BatchJob {
 public:
  // The options must outlive the job.
  explicit BatchJob(const BatchJobOptions& options) : options_(options) {}
  // Kills a child that is still there and removes what it has left unfinished.
  ~BatchJob() { Abandon(); }
  BatchJob(const BatchJob&) = delete;
  BatchJob& operator=(const BatchJob&) = delete;

  // Starts the import. False when there is nothing to wait for: the file cannot be read, and TakeResult tells so.
  bool Start(const std::string& file);

  bool IsRunning() const { return child_.IsRunning(); }
  // To be called in the way of GuardedChild::HasEnded.
  bool HasEnded() { return child_.HasEnded(); }
  BatchResult TakeResult();

  void Abandon();

 private:
  int ImportInChild();
  void RemoveParts() const;

  const BatchJobOptions& options_;
  ImportOptions import_;
  std::optional<ImportedDocument> document_;
  GuardedChild child_;
  SharedText answer_;   // of the child, a JSON object
  SharedText printed_;  // its standard output and standard error
  std::chrono::steady_clock::time_point started_;
  pid_t childPid_ = 0;
  BatchResult result_;
};

// Where the output for a file of the batch goes in `folder`: a name below the current folder keeps its path from there,
// any other, and one that would meet the output of another file, has its full path. No two files have the same.
std::string MirroredPath(const std::string& folder, const std::string& file, const std::string& extension);
