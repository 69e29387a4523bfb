#include "quillback/loop/FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace voxtrel::quillback {
namespace {

constexpr std::uint32_t kAppeared = IN_CREATE | IN_MOVED_TO | IN_ATTRIB;
constexpr std::uint32_t kDisappeared = IN_DELETE | IN_MOVED_FROM;
constexpr std::size_t kBufferBytes = 4096;

void report(const FolderWatch::Listener& listener, std::uint32_t what, const std::string& name) {
  if ((what & IN_Q_OVERFLOW) != 0) listener.onMissed();
  if (name.empty()) return;
  if ((what & kDisappeared) != 0) listener.onDisappeared(name);
  if ((what & kAppeared) != 0) listener.onAppeared(name);
}

}  // namespace

FolderWatch::FolderWatch(const std::string& folder)
    : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      isWatching_(inotify_add_watch(descriptor_.get(), folder.c_str(),
                                    kAppeared | kDisappeared | IN_ONLYDIR) >= 0) {}

void FolderWatch::read(const Listener& listener) const {
  std::array<char, kBufferBytes> buffer{};
  for (;;) {
    const ssize_t size = ::read(descriptor_.get(), buffer.data(), buffer.size());
    if (size <= 0) return;
    const char* at = buffer.data();
    while (at < buffer.data() + size) {
      inotify_event event{};
      std::memcpy(&event, at, sizeof event);
      report(listener, event.mask, event.len == 0 ? "" : at + sizeof event);
      at += sizeof event + event.len;
    }
  }
}

}  // namespace voxtrel::quillback
