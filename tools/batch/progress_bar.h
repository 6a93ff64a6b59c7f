// The line on a terminal that shows how far a batch is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// "[######----]  60 of 100, 12.5 files/s, 0:03 left". `seen` of `total` files are behind, `done` of them were imported
// in `seconds`. A `total` of 0 is not known; the bar and the time left are then left out.
std::string ProgressText(std::uint64_t seen, std::uint64_t total, std::uint64_t done, double seconds);

// Writes the line to standard error, if it is on at all, not more often than can be read.
class ProgressBar {
 public:
  explicit ProgressBar(bool on) : on_(on), started_(std::chrono::steady_clock::now()) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Show(std::uint64_t seen, std::uint64_t total, std::uint64_t done);
  void Clear();

 private:
  bool on_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point started_, last_;
};
