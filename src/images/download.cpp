#include "images/download.h"

#include <cstdint>
#include <string>

#include "filter_limits.h"
#include "platform/temporary_file.h"

namespace {

// The leading decimal number of the text, 0 without one.
std::uint64_t LengthOf(std::string_view text) {
  std::uint64_t length = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    length = length * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return length;
}

}  // namespace

bool DownloadToFile(int file, std::u16string_view url, const HttpLimits& limits) {
  HttpFetch fetch;
  if (!fetch.ParseUrl(url) || !fetch.Open(limits)) return false;
  std::int32_t status = 0;
  if (!fetch.QueryStatus(&status) || status < 200 || status > 299) return true;
  const std::uint64_t length = LengthOf(fetch.QueryContentLength());
  std::uint64_t total = 0;
  char block[kDownloadBlock];
  while (true) {
    const std::ptrdiff_t came = fetch.Read(block, sizeof block);
    if (came < 0) return false;
    if (came == 0) break;
    WriteAll(file, {block, static_cast<std::size_t>(came)});
    total += static_cast<std::uint64_t>(came);
  }
  return total == length;
}
