#include "platform/linux/XInputQuery.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdlib>
#include <memory>

namespace voxtrel {
namespace {

constexpr std::uint16_t kMajorVersion = 2;

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

}  // namespace

bool offersXInput2(const char* display) {
  const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(display, nullptr));
  if (xcb_connection_has_error(connection.get()) != 0) return false;
  // To send a request of an extension that is missing would end the connection.
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
  if (extension == nullptr || extension->present == 0) return false;
  const auto question = xcb_input_xi_query_version(connection.get(), kMajorVersion, 0);
  const std::unique_ptr<xcb_input_xi_query_version_reply_t, Free> answer(
      xcb_input_xi_query_version_reply(connection.get(), question, nullptr));
  return answer && answer->major_version >= kMajorVersion;
}

}  // namespace voxtrel
