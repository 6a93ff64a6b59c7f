// How the benchmarks take time.
#pragma once

#include <ctime>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

// The processor time of this thread, in seconds: what else the machine is doing does not count.
inline double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Work>
double SecondsOf(Work work) {
  const double before = ThreadSeconds();
  work();
  return ThreadSeconds() - before;
}

struct TimePair {
  double first = std::numeric_limits<double>::infinity();
  double second = std::numeric_limits<double>::infinity();
};

// Two works by turns, which return their seconds: the times of the pass in the middle of all, by how many times the
// first the second takes. For works that take so long that a machine with neighbours is seldom undisturbed: the two of
// a pass meet the same disturbances.
template <class First, class Second>
TimePair MiddleOfBoth(int passes, First first, Second second) {
  std::vector<TimePair> pairs;
  for (int pass = 0; pass < passes; ++pass) {
    const double seconds = first();
    pairs.push_back({seconds, second()});
  }
  const auto middle = pairs.begin() + passes / 2;
  std::nth_element(pairs.begin(), middle, pairs.end(),
                   [](const TimePair& a, const TimePair& b) { return a.second * b.first < b.second * a.first; });
  return *middle;
}

// The best of each of two works, which return their seconds. The passes alternate, so that a disturbance meets both.
template <class First, class Second>
TimePair BestOfBoth(int passes, First first, Second second) {
  TimePair best;
  for (int pass = 0; pass < passes; ++pass) {
    best.first = std::min(best.first, first());
    best.second = std::min(best.second, second());
  }
  return best;
}

// The best times of the pieces of a work, of which each pass does all in turn. A disturbance then spoils a piece of a
// pass and not all of it, however long a pass takes.
class BestPieces {
 public:
  explicit BestPieces(std::size_t count) : seconds_(count, std::numeric_limits<double>::infinity()) {}

  void Note(std::size_t piece, double seconds) { seconds_[piece] = std::min(seconds_[piece], seconds); }

  double Sum() const {
    double sum = 0.0;
    for (const double seconds : seconds_) sum += seconds;
    return sum;
  }

 private:
  std::vector<double> seconds_;
};
