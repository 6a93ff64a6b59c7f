#include "tools/batch/progress_bar.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::uint64_t kBarWidth = 30;
constexpr double kSecondsBetween = 0.1;

std::string TimeText(double seconds) {
  const auto whole = static_cast<long long>(std::min(seconds, 1e9));
  char text[48];
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
  }
  return text;
}

}  // namespace

std::string ProgressText(std::uint64_t seen, std::uint64_t total, std::uint64_t done, double seconds) {
  std::string text;
  if (total > 0) {
    const std::uint64_t filled = std::min(seen, total) * kBarWidth / total;
    text += '[';
    text.append(filled, '#').append(kBarWidth - filled, '-').append("] ");
  }
  text += std::to_string(seen);
  if (total > 0) text += " of " + std::to_string(total);
  if (done == 0 || seconds <= 0.0) return text;
  const double rate = static_cast<double>(done) / seconds;
  char rateText[48];
  std::snprintf(rateText, sizeof rateText, ", %.1f files/s", rate);
  text += rateText;
  if (total > seen) text += ", " + TimeText(static_cast<double>(total - seen) / rate) + " left";
  return text;
}

void ProgressBar::Show(std::uint64_t seen, std::uint64_t total, std::uint64_t done) {
  if (!on_) return;
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && std::chrono::duration<double>(now - last_).count() < kSecondsBetween) return;
  last_ = now;
  shown_ = true;
  const std::string text = ProgressText(seen, total, done, std::chrono::duration<double>(now - started_).count());
  std::fprintf(stderr, "\r%s\033[K", text.c_str());
  std::fflush(stderr);
}

void ProgressBar::Clear() {
  if (!shown_) return;
  shown_ = false;
  std::fputs("\r\033[K", stderr);
}
