#include "platform/http_client.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/loopback_server.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

LoopbackServer::Response Redirect(std::string_view location) {
  return Reply("302 Found", "Location: " + std::string(location) + "\r\nContent-Length: 4\r\n", "away");
}

// Reads to the end in blocks of so many bytes. Returns what the last read gave: 0 or -1.
std::ptrdiff_t ReadAll(HttpFetch& fetch, std::string* body, std::size_t blockSize = 4096) {
  std::string block(blockSize, '\0');
  for (;;) {
    const std::ptrdiff_t count = fetch.Read(block.data(), block.size());
    if (count <= 0) return count;
    EXPECT_LE(count, static_cast<std::ptrdiff_t>(blockSize));
    body->append(block, 0, static_cast<std::size_t>(count));
  }
}

std::size_t ThreadCount() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

// A thread that was waited for may show a moment longer.
bool ThreadCountBecomes(std::size_t count) {
  for (int i = 0; i < 100 && ThreadCount() != count; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return ThreadCount() == count;
}

constexpr HttpLimits kImpatient = {2000, 500, 5000};

// A port of the loopback that listens and has no room for a further connection, so that one is neither taken nor
// refused.
class FullPort {
 public:
  FullPort() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto name = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    bind(listener_, name, length);
    listen(listener_, 0);
    getsockname(listener_, name, &length);
    port_ = ntohs(address.sin_port);
    while (!isFull_ && waiting_.size() < 100) {
      const int connection = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
      waiting_.push_back(connection);
      connect(connection, name, length);
      pollfd entry = {connection, POLLOUT, 0};
      isFull_ = poll(&entry, 1, 50) == 0;
    }
  }
  ~FullPort() {
    for (const int connection : waiting_) close(connection);
    close(listener_);
  }
  FullPort(const FullPort&) = delete;
  FullPort& operator=(const FullPort&) = delete;

  bool IsFull() const { return isFull_; }
  std::u16string Url() const {
    const std::string url = "http://127.0.0.1:" + std::to_string(port_) + "/";
    return std::u16string(url.begin(), url.end());
  }

 private:
  int listener_;
  int port_ = 0;
  bool isFull_ = false;
  std::vector<int> waiting_;
};

}  // namespace

TEST(HttpUrl, OnlyHttpAndHttpsAreTaken) {
  EXPECT_TRUE(HttpFetch().ParseUrl(u"http://example.com/a.png"));
  EXPECT_TRUE(HttpFetch().ParseUrl(u"https://example.com/"));
  EXPECT_TRUE(HttpFetch().ParseUrl(u"HTTP://example.com"));
  for (const std::u16string_view url :
       {u"", u"a.png", u"example.com/a.png", u"//example.com/a.png", u"http:", u"http://", u"file:///etc/passwd",
        u"ftp://example.com/a", u"gopher://example.com/", u"data:image/png;base64,AA", u"x http://example.com/",
        u"http://exa\nmple.com/", u"http://example.com:99999/"}) {
    EXPECT_FALSE(HttpFetch().ParseUrl(url)) << ::testing::PrintToString(std::u16string(url));
  }
  const char16_t withNul[] = u"http://example.com/\0a";
  EXPECT_FALSE(HttpFetch().ParseUrl(std::u16string_view(withNul, 21)));
}

TEST(HttpFetch, NothingWorksBeforeAnUrlWasTaken) {
  HttpFetch fetch;
  EXPECT_FALSE(fetch.Open());
  ASSERT_FALSE(fetch.ParseUrl(u"file:///etc/passwd"));
  EXPECT_FALSE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_FALSE(fetch.QueryStatus(&status));
  EXPECT_EQ(fetch.QueryContentLength(), "");
  char byte;
  EXPECT_EQ(fetch.Read(&byte, 1), -1);
  fetch.Close();
  fetch.Close();
}

TEST(HttpFetch, GivesStatusLengthAndBody) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("200 OK", "the body"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/a.png?b=c")));
  ASSERT_TRUE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 200);
  EXPECT_EQ(fetch.QueryContentLength(), "8");
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body, 3), 0);
  EXPECT_EQ(body, "the body");
  char byte;
  EXPECT_EQ(fetch.Read(&byte, 1), 0);
  fetch.Close();
  EXPECT_EQ(fetch.Read(&byte, 1), -1);
  EXPECT_EQ(server.Targets(), std::vector<std::string>{"/a.png?b=c"});
}

TEST(HttpFetch, ALargeBodyComesWholeInBlocks) {
  std::string sent;
  for (int i = 0; i < 300'000; ++i) sent += std::to_string(i) + ",";
  LoopbackServer server([&](const std::string&) { return ReplyWithLength("200 OK", sent); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  EXPECT_EQ(fetch.QueryContentLength(), std::to_string(sent.size()));
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), 0);
  EXPECT_TRUE(body == sent);
}

TEST(HttpFetch, AStatusOfErrorIsAResponseLikeAnyOther) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("404 Not Found", "nothing here"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 404);
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), 0);
  EXPECT_EQ(body, "nothing here");
}

TEST(HttpFetch, AnEmptyBodyEndsAtOnce) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("204 No Content", ""); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  EXPECT_EQ(fetch.QueryContentLength(), "0");
  char byte;
  EXPECT_EQ(fetch.Read(&byte, 1), 0);
}

TEST(HttpFetch, ABodyShorterThanItsLengthFails) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "Content-Length: 100\r\n", "short"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), -1);
  EXPECT_EQ(body, "short");
}

TEST(HttpFetch, WithoutALengthTheTextIsEmptyAndTheBodyGoesToTheEndOfTheConnection) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "", "all of it"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  EXPECT_EQ(fetch.QueryContentLength(), "");
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), 0);
  EXPECT_EQ(body, "all of it");
}

TEST(HttpFetch, AChunkedBodyIsPutTogetherAndItsTrailersAreNoHead) {
  LoopbackServer server([](const std::string&) {
    return Reply("200 OK", "Transfer-Encoding: chunked\r\n",
                 "3\r\nabc\r\n4\r\ndefg\r\n0\r\nContent-Length: 5\r\nLocation: /x\r\n\r\n");
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), 0);
  EXPECT_EQ(body, "abcdefg");
  EXPECT_EQ(fetch.QueryContentLength(), "");
}

TEST(HttpFetch, ReadsTheHeadWhateverItsSpelling) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "cOnTeNt-LeNgTh:\t 2 \r\n", "ok"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  EXPECT_EQ(fetch.QueryContentLength(), "2");
}

TEST(HttpFetch, PassesOverAnInterimResponse) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response = ReplyWithLength("200 OK", "ok");
    response.bytes = "HTTP/1.1 103 Early Hints\r\nContent-Length: 99\r\n\r\n" + response.bytes;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 200);
  EXPECT_EQ(fetch.QueryContentLength(), "2");
}

TEST(HttpFetch, TheHeadIsEnoughToOpen) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response = Reply("500 Oops", "Content-Length: 10\r\n", "");
    response.keepsOpen = true;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  const auto start = Clock::now();
  EXPECT_TRUE(fetch.Open({2000, 3000, 5000}));
  EXPECT_LT(SecondsSince(start), 2.0);
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 500);
}

TEST(HttpFetch, FollowsARedirect) {
  LoopbackServer server([](const std::string& target) {
    return target == "/old" ? Redirect("/new") : ReplyWithLength("200 OK", "moved");
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/old")));
  ASSERT_TRUE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 200);
  EXPECT_EQ(fetch.QueryContentLength(), "5");
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), 0);
  EXPECT_EQ(body, "moved");
  EXPECT_EQ(server.Targets(), (std::vector<std::string>{"/old", "/new"}));
}

TEST(HttpFetch, AResponseThatNamesNoOtherPlaceIsTheResponse) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("304 Not Modified", ""); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open());
  std::int32_t status = 0;
  EXPECT_TRUE(fetch.QueryStatus(&status));
  EXPECT_EQ(status, 304);
}

TEST(HttpFetch, FollowsFiveRedirectsAndNoMore) {
  LoopbackServer server([](const std::string& target) {
    const int left = std::stoi(target.substr(1));
    return left == 0 ? ReplyWithLength("200 OK", "end") : Redirect("/" + std::to_string(left - 1));
  });
  HttpFetch five;
  ASSERT_TRUE(five.ParseUrl(server.Url("/5")));
  EXPECT_TRUE(five.Open());
  HttpFetch six;
  ASSERT_TRUE(six.ParseUrl(server.Url("/6")));
  EXPECT_FALSE(six.Open());
  std::int32_t status = 0;
  EXPECT_FALSE(six.QueryStatus(&status));
}

TEST(HttpFetch, ARedirectLoopEnds) {
  LoopbackServer server([](const std::string&) { return Redirect("/round"); });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/round")));
  EXPECT_FALSE(fetch.Open());
  EXPECT_EQ(server.Targets().size(), 6u);
}

TEST(HttpFetch, ARedirectToAnotherProtocolIsRefused) {
  for (const std::string_view location : {"file:///etc/passwd", "ftp://127.0.0.1/x", "gopher://127.0.0.1/x"}) {
    LoopbackServer server([&](const std::string&) { return Redirect(location); });
    HttpFetch fetch;
    ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
    EXPECT_FALSE(fetch.Open()) << location;
    char byte;
    EXPECT_EQ(fetch.Read(&byte, 1), -1) << location;
  }
}

TEST(HttpFetch, ARefusedConnectionFails) {
  int port = 0;
  {
    LoopbackServer server([](const std::string&) { return LoopbackServer::Response(); });
    port = server.Port();
  }
  const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/";
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(std::u16string(url.begin(), url.end())));
  EXPECT_FALSE(fetch.Open());
}

TEST(HttpFetch, AnAnswerThatIsNotHttpFails) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response;
    response.bytes = "SSH-2.0-server\r\n";
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  EXPECT_FALSE(fetch.Open());
}

TEST(HttpFetch, UnlessItIsToldOtherwiseAFetchHasTheseLimits) {
  const HttpLimits limits;
  EXPECT_EQ(limits.connectMilliseconds, 10'000);
  EXPECT_EQ(limits.stallMilliseconds, 20'000);
  EXPECT_EQ(limits.wholeMilliseconds, 300'000);
  EXPECT_EQ(limits.bodyBytes, 1'073'741'824);
}

TEST(HttpFetch, AServerThatDoesNotTakeTheConnectionIsGivenUp) {
  const FullPort port;
  ASSERT_TRUE(port.IsFull());
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(port.Url()));
  const auto start = Clock::now();
  EXPECT_FALSE(fetch.Open({100, 60'000, 60'000}));  // no other limit ends it as soon
  EXPECT_GE(SecondsSince(start), 0.09);
  EXPECT_LT(SecondsSince(start), 30.0);
}

TEST(HttpFetch, AServerThatNeverAnswersIsGivenUp) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response;
    response.keepsOpen = true;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  const auto start = Clock::now();
  EXPECT_FALSE(fetch.Open(kImpatient));
  EXPECT_GE(SecondsSince(start), 0.49);
  EXPECT_LT(SecondsSince(start), 2.0);
}

TEST(HttpFetch, AServerThatStallsWithinTheBodyIsGivenUp) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response = Reply("200 OK", "Content-Length: 100\r\n", "begun");
    response.keepsOpen = true;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open(kImpatient));
  const auto start = Clock::now();
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), -1);
  EXPECT_EQ(body, "begun");
  EXPECT_LT(SecondsSince(start), 2.0);
  char byte;
  EXPECT_EQ(fetch.Read(&byte, 1), -1);
}

TEST(HttpFetch, AServerThatTricklesDoesNotStallButIsGivenUpInTheEnd) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response = ReplyWithLength("200 OK", std::string(1000, 't'));
    response.trickles = true;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  const auto start = Clock::now();
  ASSERT_TRUE(fetch.Open({2000, 500, 2500}));  // the head alone takes longer than a stall may
  EXPECT_GE(SecondsSince(start), 0.5);
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), -1);
  EXPECT_FALSE(body.empty());
  EXPECT_LT(SecondsSince(start), 4.0);
}

TEST(HttpFetch, ABodyOfTheLargestSizeComesWholeAndALargerOneFails) {
  const std::string sent(100'000, 'b');
  LoopbackServer server([&](const std::string&) { return ReplyWithLength("200 OK", sent); });
  for (const std::int64_t limit : {100'000, 99'999}) {
    HttpFetch fetch;
    ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
    ASSERT_TRUE(fetch.Open({2000, 20'000, 20'000, limit}));
    std::string body;
    EXPECT_EQ(ReadAll(fetch, &body), limit == 100'000 ? 0 : -1);
    EXPECT_EQ(body.size() == sent.size(), limit == 100'000);
    char byte;
    EXPECT_EQ(fetch.Read(&byte, 1), limit == 100'000 ? 0 : -1);
  }
}

// A server may say what it likes, and send without end.
TEST(HttpFetch, OfABodyWithoutEndNoMoreThanTheLimitIsRead) {
  const std::string begun(100'000, 'b');
  LoopbackServer server([&](const std::string&) {
    LoopbackServer::Response response = Reply("200 OK", "Content-Length: 1000000000000\r\n", begun);
    response.keepsOpen = true;
    return response;
  });
  HttpFetch fetch;
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/")));
  ASSERT_TRUE(fetch.Open({2000, 20'000, 20'000, 50'000}));
  EXPECT_EQ(fetch.QueryContentLength(), "1000000000000");
  std::string body;
  EXPECT_EQ(ReadAll(fetch, &body), -1);
  EXPECT_LE(body.size(), 50'000u);
  EXPECT_GT(body.size(), 50'000u - 4096);
}

TEST(HttpFetch, SendsTheBytesThatTheDocumentHad) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("200 OK", ""); });
  HttpFetch fetch;
  // A UTF-8 a-umlaut as it comes through the narrow code page, a blank, and one that is written as it should be.
  ASSERT_TRUE(fetch.ParseUrl(server.Url("/") + u"\u00C3\u00A4 b%20c"));
  ASSERT_TRUE(fetch.Open());
  HttpFetch other;
  ASSERT_TRUE(other.ParseUrl(server.Url("/") + u"\u4E00"));
  ASSERT_TRUE(other.Open());
  EXPECT_EQ(server.Targets(), (std::vector<std::string>{"/%c3%a4%20b%20c", "/%e4%b8%80"}));
}

TEST(HttpFetch, LeavesNoThreadBehind) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("200 OK", "x"); });
  const std::size_t before = ThreadCount();
  const std::string url = "http://localhost:" + std::to_string(server.Port()) + "/";
  for (int i = 0; i < 3; ++i) {
    HttpFetch fetch;
    ASSERT_TRUE(fetch.ParseUrl(std::u16string(url.begin(), url.end())));
    fetch.Open(kImpatient);
    fetch.Close();
    EXPECT_TRUE(ThreadCountBecomes(before));
  }
  HttpFetch unknown;
  ASSERT_TRUE(unknown.ParseUrl(u"http://no-such-host.invalid/"));
  EXPECT_FALSE(unknown.Open(kImpatient));
  EXPECT_TRUE(ThreadCountBecomes(before));
}

TEST(HttpFetch, TheTransferLibraryStaysLoadedOnceItWas) {
  HttpFetch().ParseUrl(u"http://example.com/");
  void* const library = dlopen("libcurl.so.4", RTLD_NOW | RTLD_NOLOAD);
  EXPECT_NE(library, nullptr);
  if (library != nullptr) dlclose(library);
}
