#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

#include "common/posix/FileDescriptor.h"

namespace voxtrel::testing {

/// An X server for one client. It accepts the connection and then offers at most one extension.
/// Thread: the test's; serves on a second one.  Fails by: an exception, which fails the test.
class XServerDouble {
 public:
  struct Offer {
    bool hasExtension = false;
    std::uint16_t majorVersion = 0;  ///< 0: the version request is an error
  };

  explicit XServerDouble(Offer offer) : offer_(offer) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    void* const generic = &address;
    socklen_t size = sizeof address;
    if (::bind(listener_.get(), static_cast<sockaddr*>(generic), size) != 0 ||
        ::listen(listener_.get(), 1) != 0 ||
        ::getsockname(listener_.get(), static_cast<sockaddr*>(generic), &size) != 0) {
      throw std::runtime_error("cannot listen on the loopback");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~XServerDouble() {
    ::shutdown(listener_.get(), SHUT_RDWR);
    thread_.join();
  }
  XServerDouble(const XServerDouble&) = delete;
  XServerDouble& operator=(const XServerDouble&) = delete;

  /// The display name for xcb.
  std::string display() const {
    constexpr int kPortOfDisplay0 = 6000;
    return "127.0.0.1:" + std::to_string(port_ - kPortOfDisplay0);
  }

 private:
  using Bytes = std::array<std::uint8_t, 256>;

  void serve() const {
    const FileDescriptor client(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    Bytes request{};
    if (::read(client.get(), request.data(), request.size()) < 12) return;
    greet(client.get());
    std::uint16_t sequence = 0;
    for (;;) {
      if (!readAll(client.get(), request.data(), 4)) return;
      std::uint16_t lengthWords = 0;
      std::memcpy(&lengthWords, request.data() + 2, 2);
      if (!readAll(client.get(), request.data() + 4, std::size_t{lengthWords} * 4 - 4)) return;
      reply(client.get(), request[0], ++sequence);
    }
  }

  static bool readAll(int from, std::uint8_t* to, std::size_t count) {
    return ::recv(from, to, count, MSG_WAITALL) == static_cast<ssize_t>(count);
  }

  static void greet(int client) {
    constexpr std::uint16_t kScreenBytes = 40;
    xcb_setup_t setup{};
    setup.status = 1;
    setup.protocol_major_version = 11;
    setup.length = (sizeof setup - 8 + kScreenBytes) / 4;
    setup.resource_id_mask = 0x1fffff;
    setup.maximum_request_length = 0xffff;
    setup.roots_len = 1;
    const std::array<std::uint8_t, kScreenBytes> screen{};
    ::send(client, &setup, sizeof setup, MSG_NOSIGNAL);
    ::send(client, screen.data(), screen.size(), MSG_NOSIGNAL);
  }

  void reply(int client, std::uint8_t opcode, std::uint16_t sequence) const {
    std::array<std::uint8_t, 32> message{1};
    std::memcpy(message.data() + 2, &sequence, 2);
    if (opcode == XCB_QUERY_EXTENSION) {
      message[8] = offer_.hasExtension ? 1 : 0;
      message[9] = kExtension;
    } else if (opcode == kExtension && offer_.majorVersion != 0) {
      std::memcpy(message.data() + 8, &offer_.majorVersion, 2);
    } else if (opcode == kExtension) {
      message[0] = 0;  // an error
      message[1] = 1;
    } else if (opcode != XCB_GET_INPUT_FOCUS) {
      return;
    }
    ::send(client, message.data(), message.size(), MSG_NOSIGNAL);
  }

  static constexpr std::uint8_t kExtension = 131;
  const Offer offer_;
  const FileDescriptor listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  int port_ = 0;
  std::thread thread_;
};

}  // namespace voxtrel::testing
