// Downloads from a real server on the loopback.
#include "images/download.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "tests/support/loopback_server.h"

namespace {

using Clock = std::chrono::steady_clock;

class Download : public testing::Test {
 protected:
  Download() {
    std::string name = testing::TempDir() + "svgimport-XXXXXX";
    file_ = mkstemp(name.data());
    unlink(name.c_str());
  }
  ~Download() override { close(file_); }

  bool Fetch(std::u16string_view url, const HttpLimits& limits = {}) {
    EXPECT_EQ(ftruncate(file_, 0), 0);
    EXPECT_EQ(lseek(file_, 0, SEEK_SET), 0);
    return DownloadToFile(file_, url, limits);
  }
  bool FetchFrom(const LoopbackServer& server) { return Fetch(server.Url("/tile.png")); }

  // What the file holds now.
  std::string Content() const {
    std::string content(static_cast<std::size_t>(lseek(file_, 0, SEEK_END)), '\0');
    EXPECT_EQ(pread(file_, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
    return content;
  }

 private:
  int file_;
};

}  // namespace

TEST_F(Download, WritesTheBody) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("200 OK", "the body"); });
  EXPECT_TRUE(FetchFrom(server));
  EXPECT_EQ(Content(), "the body");
  EXPECT_EQ(server.Targets(), std::vector<std::string>{"/tile.png"});
}

TEST_F(Download, WritesABodyOfAnyNumberOfBlocks) {
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 100'000u}) {
    std::string sent;
    while (sent.size() < size) sent += static_cast<char>(sent.size() * 31);
    LoopbackServer server([&](const std::string&) { return ReplyWithLength("200 OK", sent); });
    EXPECT_TRUE(FetchFrom(server)) << size;
    EXPECT_TRUE(Content() == sent) << size;
  }
}

TEST_F(Download, AStatusBeyondTheTwoHundredsIsASuccessWithoutABody) {
  for (const char* status : {"300 Multiple Choices", "304 Not Modified", "404 Not Found", "500 Oops", "999 Odd"}) {
    LoopbackServer server([&](const std::string&) { return ReplyWithLength(status, "a page"); });
    EXPECT_TRUE(FetchFrom(server)) << status;
    EXPECT_EQ(Content(), "") << status;
  }
}

TEST_F(Download, AnyStatusOfTheTwoHundredsHasABody) {
  for (const char* status : {"200 OK", "203 Odd", "299 Odd"}) {
    LoopbackServer server([&](const std::string&) { return ReplyWithLength(status, "the body"); });
    EXPECT_TRUE(FetchFrom(server)) << status;
    EXPECT_EQ(Content(), "the body") << status;
  }
}

TEST_F(Download, ABodyShorterThanItsLengthIsAFailureThatKeepsWhatCame) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "Content-Length: 100\r\n", "short"); });
  EXPECT_FALSE(FetchFrom(server));
  EXPECT_EQ(Content(), "short");
}

TEST_F(Download, ABodyBeyondTheLimitIsAFailureThatKeepsWhatCame) {
  std::string sent;
  for (int i = 0; sent.size() < 100'000; ++i) sent += std::to_string(i) + ",";
  LoopbackServer server([&](const std::string&) { return ReplyWithLength("200 OK", sent); });
  EXPECT_FALSE(Fetch(server.Url("/tile.png"), {.bodyBytes = 50'000}));
  const std::string content = Content();
  EXPECT_EQ(content, sent.substr(0, content.size()));
  EXPECT_LE(content.size(), 50'000u);
  EXPECT_GT(content.size(), 50'000u - 4096);
}

TEST_F(Download, ABodyWithoutALengthIsWrittenAndAFailure) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "", "all of it"); });
  EXPECT_FALSE(FetchFrom(server));
  EXPECT_EQ(Content(), "all of it");
}

TEST_F(Download, AChunkedBodyHasNoLengthEither) {
  LoopbackServer server([](const std::string&) {
    return Reply("200 OK", "Transfer-Encoding: chunked\r\n", "3\r\nabc\r\n4\r\ndefg\r\n0\r\n\r\n");
  });
  EXPECT_FALSE(FetchFrom(server));
  EXPECT_EQ(Content(), "abcdefg");
}

TEST_F(Download, NothingWithoutALengthIsAsLongAsNoLength) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "", ""); });
  EXPECT_TRUE(FetchFrom(server));
  EXPECT_EQ(Content(), "");
}

TEST_F(Download, BytesBehindTheLengthAreNotTaken) {
  LoopbackServer server([](const std::string&) { return Reply("200 OK", "Content-Length: 3\r\n", "abcdef"); });
  EXPECT_TRUE(FetchFrom(server));
  EXPECT_EQ(Content(), "abc");
}

TEST_F(Download, FollowsARedirect) {
  LoopbackServer server([](const std::string& target) {
    return target == "/tile.png" ? Reply("302 Found", "Location: /new\r\nContent-Length: 4\r\n", "away")
                                 : ReplyWithLength("200 OK", "moved");
  });
  EXPECT_TRUE(FetchFrom(server));
  EXPECT_EQ(Content(), "moved");
  EXPECT_EQ(server.Targets(), (std::vector<std::string>{"/tile.png", "/new"}));
}

TEST_F(Download, ARedirectThatNeverEndsIsAFailure) {
  LoopbackServer server([](const std::string&) { return Reply("302 Found", "Location: /tile.png\r\n", ""); });
  EXPECT_FALSE(FetchFrom(server));
  EXPECT_EQ(Content(), "");
}

TEST_F(Download, ARefusedConnectionIsAFailure) {
  std::u16string url;
  {
    LoopbackServer server([](const std::string&) { return LoopbackServer::Response(); });
    url = server.Url("/tile.png");
  }
  EXPECT_FALSE(Fetch(url));
  EXPECT_EQ(Content(), "");
}

TEST_F(Download, AServerThatStallsIsAFailureAfterAWhile) {
  for (const bool withHead : {false, true}) {
    LoopbackServer server([&](const std::string&) {
      LoopbackServer::Response response;
      if (withHead) response = Reply("200 OK", "Content-Length: 100\r\n", "begun");
      response.keepsOpen = true;
      return response;
    });
    const auto start = Clock::now();
    EXPECT_FALSE(Fetch(server.Url("/tile.png"), {2000, 200, 5000}));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(4));
    EXPECT_EQ(Content(), withHead ? "begun" : "");
  }
}

TEST_F(Download, AnAnswerThatIsNotHttpIsAFailure) {
  LoopbackServer server([](const std::string&) {
    LoopbackServer::Response response;
    response.bytes = "SSH-2.0-server\r\n";
    return response;
  });
  EXPECT_FALSE(FetchFrom(server));
  EXPECT_EQ(Content(), "");
}

TEST_F(Download, ATextThatIsNoAddressIsAFailure) {
  for (const char16_t* url : {u"", u"tile.png", u"http:", u"http://", u"tiles/http:a.png", u"file:///etc/passwd",
                              u"ftp://127.0.0.1/a", u"http://127.0.0.1:99999/"}) {
    EXPECT_FALSE(Fetch(url)) << testing::PrintToString(std::u16string(url));
    EXPECT_EQ(Content(), "");
  }
}
