#include "tools/batch/batch_summary.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr std::size_t kShownFiles = 5;
constexpr std::size_t kShownCounts = 10;
constexpr std::size_t kMostReasons = 1000;
constexpr const char* kOtherReason = "other reasons";

// The reason with `N` for every number, so that the same mistake in other lines is counted as one.
std::string WithoutNumbers(const std::string& reason) {
  std::string text;
  for (const char c : reason) {
    if (c < '0' || c > '9') {
      text += c;
    } else if (text.empty() || text.back() != 'N') {
      text += 'N';
    }
  }
  return text;
}

unsigned long long Printable(std::uint64_t number) { return number; }

void PrintMostFrequent(std::FILE* out, const char* title, const std::map<std::string, std::uint64_t>& counts) {
  if (counts.empty()) return;
  std::vector<std::pair<std::uint64_t, std::string>> sorted;
  sorted.reserve(counts.size());
  for (const auto& [name, count] : counts) sorted.emplace_back(count, name);
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  if (sorted.size() > kShownCounts) sorted.resize(kShownCounts);
  std::fprintf(out, "%s\n", title);
  for (const auto& [count, name] : sorted) std::fprintf(out, "  %9llu    %s\n", Printable(count), name.c_str());
}

}  // namespace

void BatchSummary::Add(const BatchResult& result) {
  ++counts_[result.status];
  records_ += result.records;
  for (const auto& [name, count] : result.losses) losses_[name] += count;
  if (slowest_.size() < kShownFiles || result.seconds > slowest_.back().first) {
    const auto slower = [](const auto& a, const auto& b) { return a.first > b.first; };
    const std::pair<double, std::string> file(result.seconds, result.file);
    slowest_.insert(std::upper_bound(slowest_.begin(), slowest_.end(), file, slower), file);
    if (slowest_.size() > kShownFiles) slowest_.pop_back();
  }
  if (result.status == BatchResult::kRefused) {
    const std::string reason = WithoutNumbers(result.reason);
    ++refusals_[refusals_.size() < kMostReasons || refusals_.contains(reason) ? reason : kOtherReason];
  } else if (result.status == BatchResult::kFailed && failed_.size() < kShownFiles) {
    failed_.emplace_back(result.file, result.reason);
  }
}

std::uint64_t BatchSummary::Files() const { return std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0}); }

void BatchSummary::Print(std::FILE* out, double seconds, unsigned jobs, std::uint64_t skipped) const {
  std::fprintf(out, "%llu files in %.1f s, %.1f files/s, %u at a time\n", Printable(Files()), seconds,
               seconds > 0.0 ? static_cast<double>(Files()) / seconds : 0.0, jobs);
  for (std::size_t i = 0; i < kBatchStatusCount; ++i) {
    std::fprintf(out, "  %-9s %10llu\n", BatchStatusName(static_cast<BatchResult::Status>(i)), Printable(counts_[i]));
  }
  if (skipped > 0) std::fprintf(out, "  %-9s %10llu\n", "skipped", Printable(skipped));
  std::fprintf(out, "  %-9s %10llu\n", "records", Printable(records_));

  if (!slowest_.empty()) std::fputs("slowest files\n", out);
  for (const auto& [time, file] : slowest_) std::fprintf(out, "  %9.3f s  %s\n", time, file.c_str());

  PrintMostFrequent(out, "most frequent reasons of refusal", refusals_);
  PrintMostFrequent(out, "most frequent losses and changes", losses_);

  if (!failed_.empty())
    std::fputs(counts_[BatchResult::kFailed] > failed_.size() ? "first failures\n" : "failures\n", out);
  for (const auto& [file, reason] : failed_) std::fprintf(out, "  %s: %s\n", file.c_str(), reason.c_str());
}
