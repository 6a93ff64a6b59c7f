// What came of one file of a batch, and the file of all results.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <unordered_set>

struct BatchResult {
  enum Status { kAccepted, kRefused, kFailed };

  std::string file;
  Status status = kFailed;
  std::string reason;  // empty when the file was accepted
  std::uint64_t records = 0;
  std::map<std::string, std::uint64_t> commands;  // records by the name of their code
  double seconds = 0.0;                           // of wall clock
  std::uint64_t bytes = 0;                        // of the document
  std::map<std::string, std::uint64_t> losses;    // findings by their name, if the report was asked for
  std::string dump;                               // where the stream was written, if it was
  std::string picture;                            // where it was drawn, if it was
  std::string printed;                            // what the filter printed, cut at 64 KB; nothing, as a rule
};

inline constexpr std::size_t kBatchStatusCount = 3;
// "accepted", "refused", "failed".
const char* BatchStatusName(BatchResult::Status status);

// One object without a line end: {"file":…,"status":…,"reason":…,"records":…,"seconds":…,"bytes":…,"commands":{…},
// "losses":{…},"dump":…,"picture":…,"printed":…}. `reason` and what stands behind `bytes` are left out where they are
// empty.
std::string BatchResultLine(const BatchResult& result);

// The results of a batch, one line each, written as they come.
class ResultFile {
 public:
  ResultFile() = default;
  ~ResultFile();
  ResultFile(const ResultFile&) = delete;
  ResultFile& operator=(const ResultFile&) = delete;

  // Creates or empties the file; "-" is standard output. With `resume` a file that is there is kept, its results are
  // learnt, and a last line without its end is cut off. False on failure, and `failure` tells why; a file in which
  // something else stands is left as it is.
  bool Open(const std::string& name, bool resume, std::string& failure);

  // True when the file had a result for this name when it was opened.
  bool Had(const std::string& file) const;
  // How many results of each status it had then.
  const std::array<std::uint64_t, kBatchStatusCount>& HadCounts() const { return hadCounts_; }

  // False, with errno set, when the line cannot be written.
  bool Write(const BatchResult& result);
  bool Close();

 private:
  bool LearnResults(std::string& failure);

  std::FILE* stream_ = nullptr;
  std::unordered_set<std::string> had_;  // names as they stand in the file
  std::array<std::uint64_t, kBatchStatusCount> hadCounts_ = {};
};
