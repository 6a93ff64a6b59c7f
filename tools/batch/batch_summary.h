// The figures of a whole batch, in little memory however many files there are.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/batch/batch_result.h"

class BatchSummary {
 public:
  void Add(const BatchResult& result);

  std::uint64_t Files() const;
  std::uint64_t Count(BatchResult::Status status) const { return counts_[status]; }

  // Prints the table. `seconds` is what the whole took, `skipped` how many files had a result already.
  void Print(std::FILE* out, double seconds, unsigned jobs, std::uint64_t skipped) const;

 private:
  std::array<std::uint64_t, kBatchStatusCount> counts_ = {};
  std::uint64_t records_ = 0;
  std::vector<std::pair<double, std::string>> slowest_;      // seconds and file, the slowest first
  std::map<std::string, std::uint64_t> refusals_;            // by reason, its numbers left out
  std::map<std::string, std::uint64_t> losses_;              // by name
  std::vector<std::pair<std::string, std::string>> failed_;  // the first files and their reasons
};
