#include "voxtrel/platform/linux/x11/XInputQuery.h"

#include <sys/uio.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace voxtrel {
namespace {

constexpr std::uint16_t kMajorVersion = 2;
constexpr std::uint8_t kQueryVersionRequest = 47;

xcb_extension_t& xInput() {
  static xcb_extension_t extension{"XInputExtension", 0};
  return extension;
}

/// The request as it is sent; xcb fills in the first half.
struct QueryVersion {
  std::uint8_t extension = 0;
  std::uint8_t request = 0;
  std::uint16_t lengthWords = 0;
  std::uint16_t majorVersion = kMajorVersion;
  std::uint16_t minorVersion = 0;
};
static_assert(sizeof(QueryVersion) == 8);

/// How the answer begins.
struct Version {
  std::uint8_t responseType;
  std::uint8_t unused;
  std::uint16_t sequence;
  std::uint32_t lengthWords;
  std::uint16_t majorVersion;
  std::uint16_t minorVersion;
};

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

/// The one request needed of the extension is no reason to load a library for all of them.
unsigned sendQueryVersion(xcb_connection_t* connection) {
  const xcb_protocol_request_t protocol{
      .count = 1, .ext = &xInput(), .opcode = kQueryVersionRequest, .isvoid = 0};
  QueryVersion query;
  std::array<iovec, 3> parts{};  // two are xcb's own
  parts[2] = {.iov_base = &query, .iov_len = sizeof query};
  return xcb_send_request(connection, XCB_REQUEST_CHECKED, &parts[2], &protocol);
}

}  // namespace

bool offersXInput2(const char* display) {
  const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(display, nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) return false;
  // To send a request of an extension that is missing would end the connection.
  const auto* const extension = xcb_get_extension_data(connection.get(), &xInput());
  if (extension == nullptr || extension->present == 0) return false;
  const unsigned question = sendQueryVersion(connection.get());
  xcb_generic_error_t* error = nullptr;
  const std::unique_ptr<void, Free> answer(xcb_wait_for_reply(connection.get(), question, &error));
  const std::unique_ptr<xcb_generic_error_t, Free> refusal(error);
  return answer && static_cast<const Version*>(answer.get())->majorVersion >= kMajorVersion;
}

}  // namespace voxtrel
