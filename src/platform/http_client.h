// One fetch over http or https, step by step on the calling thread. The transfer library is loaded at the first fetch
// and stays loaded; without it no URL can be opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// An address that answers at all does so within a few round trips; the host waits with the user in front of it.
inline constexpr std::int32_t kConnectTimeoutMilliseconds = 10'000;
// A server that is alive but busy may think for a while before its first byte; one that is silent for longer is dead.
inline constexpr std::int32_t kStallTimeoutMilliseconds = 20'000;
// A server that trickles never stalls, and must not hold the host for ever either.
inline constexpr std::int32_t kWholeTimeoutMilliseconds = 300'000;
// A chain of honest redirects is short (http to https, a missing "www", a content server).
inline constexpr std::int32_t kMaximumRedirects = 5;
// No pattern tile is this large; a server that sends without end must not fill the disk.
inline constexpr std::int64_t kMaximumBodyBytes = std::int64_t{1} << 30;

struct HttpLimits {
  std::int32_t connectMilliseconds = kConnectTimeoutMilliseconds;
  std::int32_t stallMilliseconds = kStallTimeoutMilliseconds;  // the longest time without a byte
  std::int32_t wholeMilliseconds = kWholeTimeoutMilliseconds;  // from the opening to the last byte
  std::int64_t bodyBytes = kMaximumBodyBytes;
};

class HttpFetch {
 public:
  HttpFetch();
  ~HttpFetch();  // closes
  HttpFetch(const HttpFetch&) = delete;
  HttpFetch& operator=(const HttpFetch&) = delete;

  // Takes the URL apart. False when it is none, when its scheme is neither http nor https, or when there is no transfer
  // library. To be called once, before all others.
  bool ParseUrl(std::u16string_view url);

  // Starts the transfer and waits for the head of the response, behind any redirects. False when none came: no
  // connection, no answer in time, too many redirects or one to another protocol. A status that tells of an error is a
  // success here.
  bool Open(const HttpLimits& limits = {});

  // The status of the response, 100 to 999. False when there is none.
  bool QueryStatus(std::int32_t* status) const;

  // The content length as the response has it, blanks around it removed; empty when it has none.
  std::string_view QueryContentLength() const;

  // Reads up to `size` bytes of the body. Returns their number, 0 at the end of the body, or -1 when the transfer
  // failed, took too long, the body ended before its stated length, or these bytes go beyond the limit.
  std::ptrdiff_t Read(char* block, std::size_t size);

  // Ends the transfer, however far it came, and with it every connection and thread that it had. Harmless if not open.
  void Close();

 private:
  struct Transfer;
  std::unique_ptr<Transfer> transfer_;
};
