// Runs a fuzz entry that stands for a server: on random choices, and on HTTP replies with a little damage; the
// same in every run. An argument sets the number of rounds. Fails if too few replies were whole.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "fuzz/ServerScript.h"

namespace {

constexpr int kRounds = 2000;

class ServerInputs {
 public:
  std::string next() {
    if (below(4) == 0) return choices();
    std::string text(1, static_cast<char>(below(2)));
    text += reply();
    for (std::size_t damages = below(3); damages > 0; --damages) damage(text);
    return text;
  }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }

  std::string choices() {
    std::string bytes(2 * below(120), '\0');
    for (char& byte : bytes) byte = static_cast<char>(below(256));
    return bytes;
  }

  std::string reply() {
    static constexpr std::array<const char*, 8> kStatus = {
        "200 OK",   "206 Partial Content", "404 Not Found", "416 No",
        "503 Wait", "302 Found",           "204 Nothing",   "100 Continue"};
    const std::size_t length = below(900);
    std::string head = std::string("HTTP/1.1 ") + kStatus[below(kStatus.size())] + "\r\n";
    for (const std::string& line :
         {"Content-Length: " + std::to_string(length), std::string("ETag: \"v1\""),
          std::string("Last-Modified: Mon, 01 Jan 2024 00:00:00 GMT"),
          std::string("Content-Type: text/html; charset=utf-8"),
          std::string("Content-Range: bytes 400-999/1000"), std::string("Location: /elsewhere"),
          std::string("Content-Encoding: gzip"), std::string("Connection: close")}) {
      if (below(2) == 0) head += line + "\r\n";
    }
    const std::string body(length, 'x');
    if (below(4) > 0) return head + "\r\n" + body;
    std::array<char, 16> size{};
    std::snprintf(size.data(), size.size(), "%zx", length);
    return head + "Transfer-Encoding: chunked\r\n\r\n" + size.data() + "\r\n" + body +
           "\r\n0\r\n\r\n";
  }

  void damage(std::string& text) {
    static constexpr std::array<const char*, 8> kPieces = {"\r\n", "\n", "\r\n\r\n", ":",
                                                           " ",    "-",  "\xff",     "0"};
    const std::size_t at = 1 + below(text.size());
    switch (below(4)) {
      case 0:
        text.insert(at, kPieces[below(kPieces.size())]);
        break;
      case 1:
        text.erase(at, below(40));
        break;
      case 2:
        if (at < text.size()) text[at] = static_cast<char>(below(256));
        break;
      default:
        text.resize(at);
    }
  }

  std::mt19937 random_{17};
};

}  // namespace

int main(int argumentCount, char** arguments) {
  const int rounds = argumentCount > 1 ? std::atoi(arguments[1]) : kRounds;
  ServerInputs inputs;
  for (int round = 0; round < rounds; ++round) {
    const std::string input = inputs.next();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::printf("%d inputs, %zu whole bodies\n", rounds, voxtrel::wholeBodies());
  return voxtrel::wholeBodies() > static_cast<std::size_t>(rounds) / 20 ? 0 : 1;
}
