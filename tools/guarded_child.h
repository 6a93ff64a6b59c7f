// Work in a child process under limits of time and memory, so that the tool gives an answer whatever becomes of it.
#pragma once

#include <signal.h>
#include <sys/types.h>
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

struct Limits {
  double seconds = 300.0;          // 0 is no limit
  std::uint64_t megabytes = 8192;  // of address space; 0 is no limit
};

// Adds --time-limit and --memory-limit. `limits` holds the defaults and must live until the arguments are parsed.
void AddLimitOptions(CLI::App& command, Limits& limits);

// Holds back the signals that end the tool and the one that tells of a child's end, so that they can be waited for. A
// child started meanwhile does not feel them either: its parent ends it. A signal that was ignored stays so.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  // Waits until a signal has come, `descriptor` (none if -1) has something to read, or kStepSeconds are over. Answers
  // the number of a signal that ends the tool, otherwise 0.
  int Wait(int descriptor = -1);

  // Short enough to keep a limit of time to, and to move a progress bar.
  static constexpr double kStepSeconds = 0.1;

 private:
  sigset_t before_;
  int descriptor_;
};

// One child at a time. Its work has what the process had when it was started, and nothing of it comes back but the exit
// status and what it wrote to files.
class GuardedChild {
 public:
  GuardedChild();
  // Kills a child that is still there.
  ~GuardedChild();
  GuardedChild(const GuardedChild&) = delete;
  GuardedChild& operator=(const GuardedChild&) = delete;

  // Starts `work`, which answers its exit status and may end with std::bad_alloc. False, with errno set, when there can
  // be no child.
  bool Start(const Limits& limits, const std::function<int()>& work);

  // True when the child has ended; otherwise kills it if its time is over. Must be called at least every few steps of
  // HeldSignals::Wait while the child runs. The time since the last call counts unless `timeCounts` is false.
  bool HasEnded(bool timeCounts = true);

  // Kills the child and waits for its end.
  void Kill();

  bool IsRunning() const { return pid_ > 0; }
  pid_t Pid() const { return pid_; }

  // Of a child that has ended: the status that the work answered, or kExitError and why it did not come to answer.
  int Status() const { return status_; }
  const std::string& Failure() const { return failure_; }

 private:
  struct Answer;
  using Clock = std::chrono::steady_clock;

  void Judge(int waitStatus);

  Answer* answer_;  // shared with the child
  Limits limits_;
  pid_t pid_ = 0;
  Clock::time_point lastLook_;
  double seconds_ = 0.0;
  bool late_ = false;
  int status_ = 0;
  std::string failure_;
};

// Does `work` in a child and answers the status to exit with. When the child does not come to its end, the user is told
// so in one line that begins with `shownName`, and the status is kExitError. After a signal that ends the tool, the
// child is gone and the answer is kExitSignal plus the signal's number.
// The time in which nobody reads standard output does not count.
int RunGuarded(const Limits& limits, const std::string& shownName, const std::function<int()>& work);
