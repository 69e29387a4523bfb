// The model that the engine's setup leaves in the store is the one that the application finds.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "common/settings/ConfigManager.h"
#include "support/ScratchFolder.h"
#include "voxtrel/download/SetupOutput.h"

namespace voxtrel {
namespace {

/// Serves one file to every request, on a free port of this machine.
/// Thread: it serves on one that it owns.  Owns: the socket and the thread.
class FileServer {
 public:
  explicit FileServer(std::string content) : content_(std::move(content)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(::bind(socket_, generic, size), 0);
    EXPECT_EQ(::listen(socket_, 4), 0);
    EXPECT_EQ(::getsockname(socket_, generic, &size), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  FileServer(const FileServer&) = delete;
  FileServer& operator=(const FileServer&) = delete;
  ~FileServer() {
    ::shutdown(socket_, SHUT_RDWR);
    thread_.join();
    ::close(socket_);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

 private:
  void serve() const {
    for (;;) {
      const int connection = ::accept(socket_, nullptr, nullptr);
      if (connection < 0) return;
      reply(connection);
      ::close(connection);
    }
  }
  void reply(int connection) const {
    std::string request;
    std::array<char, 4096> piece{};
    while (request.find("\r\n\r\n") == std::string::npos) {
      const ssize_t bytes = ::recv(connection, piece.data(), piece.size(), 0);
      if (bytes <= 0) return;
      request.append(piece.data(), static_cast<std::size_t>(bytes));
    }
    const std::string all =
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(content_.size()) +
        "\r\nConnection: close\r\n\r\n" + content_;
    for (std::size_t sent = 0; sent < all.size();) {
      const ssize_t bytes = ::send(connection, &all[sent], all.size() - sent, MSG_NOSIGNAL);
      if (bytes <= 0) return;
      sent += static_cast<std::size_t>(bytes);
    }
  }

  const std::string content_;
  const int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::uint16_t port_ = 0;
  std::thread thread_;
};

const std::string kWeights(3'000'000, 'x');
constexpr const char* kWeightsSha256 =
    "e55b8bdf621ddaa8f462c74745db9680d3bb7536a9cf854f8d6668b34a287890";

struct ModelStoreContract : testing::Test {
  /// Runs setup with a model of 3 MB to its end. Returns its lines; `status` is its exit status.
  std::vector<std::string> setUp(const std::string& whisper, const std::string& sha256) {
    const FileServer server(kWeights);
    const std::string command = "env -u http_proxy QUILLBACK_MODEL_URL=" + server.url() + " " +
                                SMALL_MODEL + " --home " + home.path().string() + " --whisper " +
                                whisper + " --bytes 3000000 --sha256 " + sha256 +
                                " --voice-bytes 3000000 --voice-sha256 " + sha256 + " --retry-ms 5";
    FILE* const output = ::popen(command.c_str(), "r");
    std::vector<std::string> lines;
    std::array<char, 1000> line{};
    while (std::fgets(line.data(), line.size(), output) != nullptr) lines.emplace_back(line.data());
    status = ::pclose(output);
    return lines;
  }

  ScratchFolder home{};
  ConfigManager config{home.path().string()};
  int status = -1;
};

TEST_F(ModelStoreContract, TheApplicationFindsTheModelThatSetupDownloads) {
  EXPECT_FALSE(config.weightsExist("large-v3"));
  const auto lines = setUp("on", kWeightsSha256);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(config.weightsExist("large-v3"));
  EXPECT_TRUE(config.weightsExist(config.readWhisperModel()));
  EXPECT_FALSE(config.weightsExist("medium"));
  EXPECT_EQ(std::filesystem::file_size(config.weightsFolder("large-v3") + "/ggml-large-v3.bin"),
            kWeights.size());

  std::vector<double> shown;
  for (const std::string& line : lines) {
    if (const auto progress = parseProgress(line)) shown.push_back(progress->fraction);
  }
  ASSERT_FALSE(shown.empty());
  EXPECT_EQ(shown.back(), 1.0);
}

TEST_F(ModelStoreContract, TheApplicationFindsNoModelWhereTheDownloadWasWrong) {
  setUp("on", std::string(64, '0'));
  EXPECT_NE(status, 0);
  EXPECT_TRUE(std::filesystem::exists(config.weightsFolder("large-v3")));
  EXPECT_FALSE(config.weightsExist("large-v3"));
}

TEST_F(ModelStoreContract, TheApplicationFindsTheModelOfABuildWithoutWhisper) {
  setUp("off", kWeightsSha256);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(config.weightsExist("large-v3"));
}

}  // namespace
}  // namespace voxtrel
