#include "platform/http_client.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>

#include "platform/narrow_text.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr char kProtocols[] = "http,https";

// Some servers turn away a client without a name.
constexpr char kUserAgent[] = "svgimport";

// The transfer library, of which a drawing without linked images never pays the loading. It and what it needs stay
// loaded, since they leave functions behind to be called at the end of the process.
class CurlLibrary {
 public:
  CurlLibrary() : handle_(dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
    if (handle_ == nullptr) return;
    complete_ = Find("curl_url", &url) && Find("curl_url_set", &urlSet) && Find("curl_url_get", &urlGet) &&
                Find("curl_url_cleanup", &urlCleanup) && Find("curl_free", &free) &&
                Find("curl_easy_init", &easyInit) && Find("curl_easy_setopt", &easySetopt) &&
                Find("curl_easy_getinfo", &easyGetinfo) && Find("curl_easy_pause", &easyPause) &&
                Find("curl_easy_cleanup", &easyCleanup) && Find("curl_multi_init", &multiInit) &&
                Find("curl_multi_add_handle", &multiAddHandle) &&
                Find("curl_multi_remove_handle", &multiRemoveHandle) && Find("curl_multi_perform", &multiPerform) &&
                Find("curl_multi_poll", &multiPoll) && Find("curl_multi_info_read", &multiInfoRead) &&
                Find("curl_multi_cleanup", &multiCleanup);
  }

  ~CurlLibrary() {
    if (handle_ != nullptr) dlclose(handle_);
  }

  CurlLibrary(const CurlLibrary&) = delete;
  CurlLibrary& operator=(const CurlLibrary&) = delete;

  bool Complete() const { return complete_; }

  decltype(&curl_url) url = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_free) free = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_setopt) easySetopt = nullptr;
  decltype(&curl_easy_getinfo) easyGetinfo = nullptr;
  decltype(&curl_easy_pause) easyPause = nullptr;
  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_multi_init) multiInit = nullptr;
  decltype(&curl_multi_add_handle) multiAddHandle = nullptr;
  decltype(&curl_multi_remove_handle) multiRemoveHandle = nullptr;
  decltype(&curl_multi_perform) multiPerform = nullptr;
  decltype(&curl_multi_poll) multiPoll = nullptr;
  decltype(&curl_multi_info_read) multiInfoRead = nullptr;
  decltype(&curl_multi_cleanup) multiCleanup = nullptr;

 private:
  template <typename Function>
  bool Find(const char* name, Function* function) {
    void* const symbol = dlsym(handle_, name);
    std::memcpy(function, &symbol, sizeof symbol);
    return symbol != nullptr;
  }

  void* handle_;
  bool complete_ = false;
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// If `line` is the header field of this name, which is given in lower case with its colon, gives its value.
bool IsField(std::string_view line, std::string_view name, std::string_view* value) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  if (line.size() < name.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (lower(line[i]) != name[i]) return false;
  }
  *value = Trimmed(line.substr(name.size()));
  return true;
}

}  // namespace

struct HttpFetch::Transfer {
  ~Transfer() { End(); }

  // Whether the response is answered by going elsewhere, which is left to the library.
  bool IsRedirect() const { return status >= 300 && status < 400 && redirects; }

  void TakeHeader(std::string_view line) {
    if (headDone) return;  // a trailer behind the body
    ++progress;
    std::string_view value;
    if (line.starts_with("HTTP/")) {
      contentLength.clear();
      redirects = false;
    } else if (IsField(line, "content-length:", &value)) {
      contentLength = value;
    } else if (IsField(line, "location:", &value)) {
      redirects = !value.empty();
    } else if (Trimmed(line).empty()) {
      long code = 0;
      curl.easyGetinfo(easy, CURLINFO_RESPONSE_CODE, &code);
      status = static_cast<std::int32_t>(code);
      headDone = status >= 200 && !IsRedirect();
    }
  }

  // Takes a piece of the body, or nothing as long as the one before has not been read. Returns what the library
  // expects.
  std::size_t TakeBody(const char* data, std::size_t size) {
    if (size > sizeof body) return 0;  // more than the library promises; ends the transfer
    paused = bodyNext != bodyEnd;
    if (paused) return CURL_WRITEFUNC_PAUSE;
    ++progress;
    bodyNext = body;
    bodyEnd = std::copy_n(data, size, body);
    return size;
  }

  // Works on the transfer until `enough` or the end. False when it stalls or the library fails.
  template <typename Enough>
  bool Drive(Enough enough) {
    auto lastProgress = Clock::now();
    for (;;) {
      const std::uint64_t progressBefore = progress;
      int running = 0;
      if (curl.multiPerform(multi, &running) != CURLM_OK) return false;
      int queued = 0;
      while (const CURLMsg* const message = curl.multiInfoRead(multi, &queued)) {
        if (message->msg != CURLMSG_DONE) continue;
        done = true;
        result = message->data.result;
      }
      if (done || enough()) return true;
      const auto now = Clock::now();
      if (progress != progressBefore) lastProgress = now;
      const auto left = lastProgress + milliseconds(limits.stallMilliseconds) - now;
      if (left <= Clock::duration::zero()) return false;
      const auto wait = std::chrono::ceil<milliseconds>(left).count();
      if (curl.multiPoll(multi, nullptr, 0, static_cast<int>(wait), nullptr) != CURLM_OK) return false;
    }
  }

  bool Resume() {
    paused = false;
    return curl.easyPause(easy, CURLPAUSE_CONT) == CURLE_OK;
  }

  // Ends the transfer as one that failed.
  void Fail() {
    done = true;
    result = CURLE_RECV_ERROR;
  }

  // Ends the transfer. The library waits here for the thread that looks up a name, if one is still at it.
  void End() {
    if (multi != nullptr && easy != nullptr) curl.multiRemoveHandle(multi, easy);
    if (easy != nullptr) curl.easyCleanup(easy);
    if (multi != nullptr) curl.multiCleanup(multi);
    easy = nullptr;
    multi = nullptr;
  }

  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* transfer) {
    try {
      static_cast<Transfer*>(transfer)->TakeHeader({data, size * count});
    } catch (const std::bad_alloc&) {
      return 0;  // ends the transfer
    }
    return size * count;
  }

  static std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* transfer) {
    return static_cast<Transfer*>(transfer)->TakeBody(data, size * count);
  }

  CurlLibrary curl;
  std::string url;
  HttpLimits limits;
  CURL* easy = nullptr;
  CURLM* multi = nullptr;
  std::int32_t status = 0;
  std::string contentLength;
  bool redirects = false;  // the head being read names another place
  bool headDone = false;   // the head of the last response is in
  bool done = false;       // the transfer is over, with this result
  CURLcode result = CURLE_OK;
  bool paused = false;         // a piece of the body waits within the library
  std::uint64_t progress = 0;  // pieces that came
  std::int64_t bodyBytes = 0;  // that were read
  char body[CURL_MAX_WRITE_SIZE];
  char* bodyNext = body;  // up to `bodyEnd`: came and has not been read
  char* bodyEnd = body;
};

HttpFetch::HttpFetch() = default;

HttpFetch::~HttpFetch() = default;

bool HttpFetch::ParseUrl(std::u16string_view url) {
  transfer_ = std::make_unique<Transfer>();
  CurlLibrary& curl = transfer_->curl;
  // The bytes that the document had, if the URL came from one.
  std::string text = NarrowFromWide(url);
  if (WideFromNarrow(text) != url) text = Utf8FromWide(url);
  if (!curl.Complete() || text.find('\0') != std::string::npos) return false;
  CURLU* const parts = curl.url();
  if (parts == nullptr) return false;
  char* scheme = nullptr;
  char* whole = nullptr;
  const bool parsed =
      curl.urlSet(parts, CURLUPART_URL, text.c_str(), CURLU_ALLOW_SPACE | CURLU_URLENCODE) == CURLUE_OK &&
      curl.urlGet(parts, CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK &&
      (std::strcmp(scheme, "http") == 0 || std::strcmp(scheme, "https") == 0) &&
      curl.urlGet(parts, CURLUPART_URL, &whole, 0) == CURLUE_OK;
  if (parsed) transfer_->url = whole;
  curl.free(scheme);
  curl.free(whole);
  curl.urlCleanup(parts);
  return parsed;
}

bool HttpFetch::Open(const HttpLimits& limits) {
  if (transfer_ == nullptr || transfer_->url.empty() || transfer_->easy != nullptr) return false;
  Transfer& transfer = *transfer_;
  CurlLibrary& curl = transfer.curl;
  transfer.limits = limits;
  transfer.easy = curl.easyInit();
  transfer.multi = curl.multiInit();
  if (transfer.easy == nullptr || transfer.multi == nullptr) return false;
  const auto set = [&](CURLoption option, auto value) {
    return curl.easySetopt(transfer.easy, option, value) == CURLE_OK;
  };
  // Signals stay allowed: the library then keeps a broken connection from ending the process, and takes no alarms.
  const bool ready = set(CURLOPT_URL, transfer.url.c_str()) && set(CURLOPT_PROTOCOLS_STR, kProtocols) &&
                     set(CURLOPT_REDIR_PROTOCOLS_STR, kProtocols) && set(CURLOPT_FOLLOWLOCATION, 1L) &&
                     set(CURLOPT_MAXREDIRS, static_cast<long>(kMaximumRedirects)) &&
                     set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connectMilliseconds)) &&
                     set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.wholeMilliseconds)) &&
                     set(CURLOPT_USERAGENT, kUserAgent) && set(CURLOPT_HEADERFUNCTION, &Transfer::OnHeader) &&
                     set(CURLOPT_HEADERDATA, &transfer) && set(CURLOPT_WRITEFUNCTION, &Transfer::OnBody) &&
                     set(CURLOPT_WRITEDATA, &transfer) &&
                     curl.multiAddHandle(transfer.multi, transfer.easy) == CURLM_OK;
  const bool opened = ready && transfer.Drive([&] { return transfer.headDone; }) && transfer.headDone;
  if (!opened) transfer.End();
  return opened;
}

bool HttpFetch::QueryStatus(std::int32_t* status) const {
  if (transfer_ == nullptr || !transfer_->headDone) return false;
  *status = transfer_->status;
  return true;
}

std::string_view HttpFetch::QueryContentLength() const {
  return transfer_ == nullptr || !transfer_->headDone ? std::string_view() : transfer_->contentLength;
}

std::ptrdiff_t HttpFetch::Read(char* block, std::size_t size) {
  if (transfer_ == nullptr || transfer_->easy == nullptr) return -1;
  Transfer& transfer = *transfer_;
  const auto came = [&] { return transfer.bodyNext != transfer.bodyEnd; };
  if (!came() && !transfer.done) {
    // What the library was not allowed to hand over may come within this call already.
    const bool resumed = !transfer.paused || transfer.Resume();
    if (!resumed || !transfer.Drive(came)) transfer.Fail();
  }
  if (!came()) return transfer.done && transfer.result == CURLE_OK ? 0 : -1;
  const std::size_t count = std::min(size, static_cast<std::size_t>(transfer.bodyEnd - transfer.bodyNext));
  std::memcpy(block, transfer.bodyNext, count);
  transfer.bodyNext += count;
  transfer.bodyBytes += static_cast<std::int64_t>(count);
  if (transfer.bodyBytes > transfer.limits.bodyBytes) {
    transfer.Fail();
    return -1;
  }
  return static_cast<std::ptrdiff_t>(count);
}

void HttpFetch::Close() { transfer_.reset(); }
