// A small HTTP server on the loopback for the tests: one thread that answers one connection after the other.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

class LoopbackServer {
 public:
  struct Response {
    std::string bytes;       // the whole response, head and body
    bool keepsOpen = false;  // the connection then stays open and silent until the client or the server ends
    bool trickles = false;   // one byte at a time with pauses between
  };

  // Gets the target of each request, such as "/a?b".
  using Handler = std::function<Response(const std::string& target)>;

  explicit LoopbackServer(Handler handler) : handler_(std::move(handler)), listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(listener_, 16);
    socklen_t length = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
  }

  ~LoopbackServer() {
    stopping_ = true;
    thread_.join();
    close(listener_);
  }

  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::string Origin() const { return "http://127.0.0.1:" + std::to_string(port_); }

  std::u16string Url(std::string_view target) const {
    const std::string url = Origin() + std::string(target);
    return std::u16string(url.begin(), url.end());
  }

  int Port() const { return port_; }

  std::vector<std::string> Targets() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return targets_;
  }

 private:
  // Waits until something can be read; false when the server is to stop.
  bool WaitFor(int descriptor) const {
    while (!stopping_) {
      pollfd entry = {descriptor, POLLIN, 0};
      if (poll(&entry, 1, 10) > 0) return true;
    }
    return false;
  }

  void Serve() {
    while (WaitFor(listener_)) {
      const int connection = accept(listener_, nullptr, nullptr);
      if (connection == -1) continue;
      Answer(connection);
      close(connection);
    }
  }

  void Answer(int connection) {
    std::string request;
    while (request.find("\r\n\r\n") == std::string::npos) {
      char block[1024];
      if (!WaitFor(connection)) return;
      const ssize_t count = recv(connection, block, sizeof block, 0);
      if (count <= 0) return;
      request.append(block, static_cast<std::size_t>(count));
    }
    const std::size_t start = request.find(' ') + 1;
    const std::string target = request.substr(start, request.find(' ', start) - start);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      targets_.push_back(target);
    }
    const Response response = handler_(target);
    Send(connection, response);
    char byte;
    while (response.keepsOpen && WaitFor(connection) && recv(connection, &byte, 1, 0) > 0) continue;
  }

  void Send(int connection, const Response& response) const {
    std::string_view rest = response.bytes;
    while (!rest.empty() && !stopping_) {
      const std::size_t piece = response.trickles ? 1 : rest.size();
      const ssize_t count = send(connection, rest.data(), piece, MSG_NOSIGNAL);
      if (count <= 0) return;
      rest.remove_prefix(static_cast<std::size_t>(count));
      if (response.trickles) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  Handler handler_;
  int listener_;
  int port_ = 0;
  std::atomic<bool> stopping_ = false;
  std::mutex mutex_;
  std::vector<std::string> targets_;
  std::thread thread_;
};

// A whole response: the status with its reason, further lines of the head each with its end, and the body. The
// connection is closed behind it.
inline LoopbackServer::Response Reply(std::string_view status, std::string_view fields, std::string_view body) {
  LoopbackServer::Response response;
  response.bytes = "HTTP/1.1 " + std::string(status) + "\r\nConnection: close\r\n" + std::string(fields) + "\r\n";
  response.bytes += body;
  return response;
}

inline LoopbackServer::Response ReplyWithLength(std::string_view status, std::string_view body) {
  return Reply(status, "Content-Length: " + std::to_string(body.size()) + "\r\n", body);
}
