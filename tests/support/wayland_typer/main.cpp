#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <string>

#include "quillback/insertion/wayland/WaylandInsertion.h"
#include "quillback/loop/EpollLoop.h"

using namespace voxtrel::quillback;

namespace {

/// Types each text that standard input brings, up to its zero byte; one that begins with the byte 1 is
/// copied. Prints what happened, with the milliseconds that it took.
class TextsOnInput {
 public:
  explicit TextsOnInput(EpollLoop& loop)
      : loop_(loop),
        wayland_(loop,
                 [](const std::string& text, const std::string& why) {
                   std::printf("refused %s: %s\n", why.c_str(), text.c_str());
                 }),
        watch_(loop.watch(STDIN_FILENO, [this] { read(); })) {
    std::printf("type %d copy %d\n", wayland_.canType() ? 1 : 0, wayland_.canCopy() ? 1 : 0);
    std::fflush(stdout);
  }

 private:
  void read() {
    std::array<char, 65536> bytes{};
    const ssize_t size = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (size <= 0) return loop_.stop();
    input_.append(bytes.data(), static_cast<std::size_t>(size));
    for (std::size_t end = 0; (end = input_.find('\0')) != std::string::npos;) {
      insert(input_.substr(0, end));
      input_.erase(0, end + 1);
    }
  }

  void insert(const std::string& text) {
    if (text.starts_with('\x01')) {
      std::printf("copied %d\n", wayland_.copy(text.substr(1)) ? 1 : 0);
      std::fflush(stdout);
      return;
    }
    if (!wayland_.canType()) {
      std::puts("cannot type");
      std::fflush(stdout);
      return;
    }
    const auto begun = loop_.now();
    wayland_.type(text, [this, begun] {
      const std::chrono::duration<double, std::milli> took = loop_.now() - begun;
      std::printf("typed %.1f\n", took.count());
      std::fflush(stdout);
    });
  }

  EpollLoop& loop_;
  WaylandInsertion wayland_;
  std::string input_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace

int main() {
  EpollLoop loop;
  const TextsOnInput texts(loop);
  loop.run();
  return 0;
}
