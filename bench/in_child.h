// Runs a piece of work in a process of its own, so that neither its heap nor its peak memory carries what others left.
#pragma once

#include <functional>
#include <type_traits>

// Forks, lets `work` fill `size` bytes at `result` in the child, and brings them back. Gives the child's peak resident
// memory in bytes, in which the pages of this process at the fork count. Throws std::runtime_error when the child
// fails; an exception in the child is written to standard error and fails it.
double RunInChild(void* result, std::size_t size, const std::function<void()>& work);

template <class Work>
auto InChild(Work work, double* peakBytes = nullptr) {
  std::invoke_result_t<Work> result{};
  static_assert(std::is_trivially_copyable_v<decltype(result)>);
  const double peak = RunInChild(&result, sizeof result, [&] { result = work(); });
  if (peakBytes) *peakBytes = peak;
  return result;
}
