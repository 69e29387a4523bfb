// Any bytes as a server's reply, over a real connection of this machine: what the download is told about it is
// consistent, whatever it was.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>

#include "fuzz/FuzzEntry.h"
#include "fuzz/ServerScript.h"
#include "quillback/model/HttpTransfer.h"

namespace {

using namespace voxtrel;
using namespace voxtrel::quillback;

std::size_t wholeCount = 0;

/// Sends the same bytes to every client.
/// Thread: it serves on one that it owns.  Owns: the socket and the thread.
class ByteServer {
 public:
  ByteServer() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    require(::bind(socket_, generic, size) == 0 && ::listen(socket_, 16) == 0 &&
                ::getsockname(socket_, generic, &size) == 0,
            "there is a port");
    port_ = ntohs(address.sin_port);
  }
  ByteServer(const ByteServer&) = delete;
  ByteServer& operator=(const ByteServer&) = delete;
  ~ByteServer() { ::close(socket_); }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/f"; }

  /// Answers one request.
  void serve(const std::string& reply) const {
    const int connection = ::accept(socket_, nullptr, nullptr);
    std::string request;
    std::array<char, 4096> piece{};
    while (request.find("\r\n\r\n") == std::string::npos) {
      const ssize_t bytes = ::recv(connection, piece.data(), piece.size(), 0);
      if (bytes <= 0) break;
      request.append(piece.data(), static_cast<std::size_t>(bytes));
    }
    for (std::size_t sent = 0; sent < reply.size();) {
      const ssize_t bytes = ::send(connection, &reply[sent], reply.size() - sent, MSG_NOSIGNAL);
      if (bytes <= 0) break;
      sent += static_cast<std::size_t>(bytes);
    }
    ::shutdown(connection, SHUT_WR);
    while (::recv(connection, piece.data(), piece.size(), 0) > 0) continue;
    ::close(connection);
  }

 private:
  const int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::uint16_t port_ = 0;
};

/// Checks what the transfer says about the reply.
struct Checker {
  void onReply(const HttpReply& reply) {
    require(++replies == 1 && bodyBytes == 0, "one reply, before its body");
    require(isHeaderValue(reply.etag) && isHeaderValue(reply.lastModified) &&
                isHeaderValue(reply.contentType),
            "values could be sent again");
    length = reply.contentLength;
    status = reply.status;
    const auto action = judgeReply({offset, 1000, "\"v1\""}, reply);
    const bool isTaken = action == ReplyAction::append || action == ReplyAction::restart;
    require(!isTaken || status == 200 || status == 206, "only these have the file");
    require(!isTaken || !isWebPage(reply.contentType), "a page is not the file");
    require(action != ReplyAction::append || offset == 0 || status == 206,
            "only the rest continues a part");
  }
  void onBody(std::size_t bytes) {
    require(replies == 1, "the reply comes first");
    bodyBytes += bytes;
    require(!length || bodyBytes <= *length, "no body is longer than was said");
  }

  std::uint64_t offset = 0;
  int replies = 0;
  int status = 0;
  std::uint64_t bodyBytes = 0;
  std::optional<std::uint64_t> length;
};

}  // namespace

std::size_t voxtrel::wholeBodies() {
  return wholeCount;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const HttpLibrary kLibrary;
  static const ByteServer kServer;
  static const StopSignals kStop{StopSignals::InheritedIgnores::keep, {SIGPIPE}};
  if (size == 0) return 0;
  ::unsetenv("http_proxy");
  Checker checker;
  checker.offset = data[0] % 2 == 0 ? 0 : 400;
  const std::string reply(data + 1, data + size);
  std::thread server([&reply] { kServer.serve(reply); });
  TransferLimits limits;
  limits.maxRedirects = 0;  // a fuzzer's addresses are not ours to visit
  const auto result = transfer({kServer.url(), checker.offset, "\"v1\"", "", "test"}, limits, kStop,
                               {[&checker](const HttpReply& head) {
                                  checker.onReply(head);
                                  return true;
                                },
                                [&checker](std::span<const char> bytes) {
                                  checker.onBody(bytes.size());
                                  return true;
                                }});
  server.join();
  if (!result) {
    require(result.error().kind != HttpFailure::Kind::rejected, "nothing was rejected");
    require(!result.error().why.empty(), "a failure says why");
    return 0;
  }
  require(checker.replies == 1, "a success has a reply");
  const bool hasBody = checker.status == 200 || checker.status == 206;
  require(!hasBody || !checker.length || checker.bodyBytes == *checker.length,
          "a success has the whole body");
  wholeCount += checker.bodyBytes > 0 ? 1 : 0;
  return 0;
}
