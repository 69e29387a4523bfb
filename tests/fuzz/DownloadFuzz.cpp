// Several downloads into the same folder from a server that answers as the bytes say: rightly, wrongly, with a
// page, with too much, cut off. Between them the disk may change. A download never ends well with wrong bytes,
// a reply without the file's length never costs what had arrived, and an honest server always helps.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/FuzzEntry.h"
#include "fuzz/ServerScript.h"
#include "quillback/model/Download.h"

namespace {

using namespace voxtrel;
using namespace voxtrel::quillback;
namespace fs = std::filesystem;

constexpr std::size_t kFileBytes = 3000;
constexpr int kMaxRequests = 20;
std::size_t wholeCount = 0;

std::string madeContent() {
  std::string content(kFileBytes, '\0');
  std::uint32_t state = 7;
  for (char& byte : content) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return content;
}

struct Lines final : Output {
  void print(std::string_view line) override {
    require(!line.empty() && line.find('\n') == std::string_view::npos, "a line is one line");
    last = line;
  }
  std::string last;
};

/// What is the same in all rounds.
struct World {
  std::string content = madeContent();
  std::string sha256 = [this] {
    Sha256 hash;
    hash.add(content);
    return hash.digest();
  }();
  FilePin pin{"f.bin", kFileBytes, sha256, "/f.bin"};
  std::string folder = fuzzFolder();
  StopSignals stop{StopSignals::InheritedIgnores::keep, {}};
  TransferLimits limits = [] {
    TransferLimits some;
    some.retryDelay = std::chrono::milliseconds(0);
    return some;
  }();

  ~World() { fs::remove_all(folder); }
  std::string part() const { return folder + "/f.bin.part"; }
  std::string partContent() const {
    std::ifstream file(part(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

const World& world() {
  static const World kWorld;
  return kWorld;
}

using Sent = tl::expected<void, HttpFailure>;

/// A server whose replies are chosen by the fuzzer.
/// Thread: one.  Borrows: the choices.
class Server {
 public:
  Server(FuzzChoices& choices, bool isHonest) : choices_(choices), isHonest_(isHonest) {}

  Sent answer(const HttpRequest& request, const HttpListener& listener);
  /// Whether a reply came that may replace what has arrived.
  bool mayReplace() const { return mayReplace_; }

 private:
  HttpReply replyTo(const HttpRequest& request);
  std::string bodyOf(const HttpReply& reply, const HttpRequest& request);
  Sent endOf(const HttpReply& reply, std::size_t sentBytes);

  FuzzChoices& choices_;
  bool isHonest_;
  bool mayReplace_ = false;
  int requests_ = 0;
};

HttpReply rightReply(const HttpRequest& request) {
  const std::uint64_t rest = kFileBytes - request.offset;
  HttpReply reply{request.offset > 0 ? 206 : 200, {}, rest, "\"v1\"", ""};
  if (request.offset > 0) {
    reply.contentRange = "bytes " + std::to_string(request.offset) + "-" +
                         std::to_string(kFileBytes - 1) + "/" + std::to_string(kFileBytes);
  }
  return reply;
}

HttpReply Server::replyTo(const HttpRequest& request) {
  HttpReply reply = rightReply(request);
  if (isHonest_ || choices_.below(3) == 0) return reply;
  constexpr std::array kStatus = {200, 206, 404, 416, 503, 200};
  if (choices_.oneOf(2)) reply.status = kStatus.at(choices_.below(kStatus.size()));
  if (choices_.oneOf(2)) reply.contentLength.reset();
  if (choices_.oneOf(4)) reply.contentLength = kFileBytes - choices_.below(2);
  if (choices_.oneOf(8)) reply.contentRange = "bytes 0-2999/3000";
  if (choices_.oneOf(8)) reply.contentRange.reset();
  constexpr std::array kTags = {"", "\"v2\"", "W/\"v1\"", "\"v1\""};
  reply.etag = kTags.at(choices_.below(kTags.size()));
  if (choices_.oneOf(4)) reply.lastModified = "Mon, 01 Jan 2024 00:00:00 GMT";
  if (choices_.oneOf(8)) reply.contentType = "text/html";
  return reply;
}

std::string Server::bodyOf(const HttpReply& reply, const HttpRequest& request) {
  const std::string& content = world().content;
  std::string body = content.substr(reply.status == 206 ? request.offset : 0);
  if (isHonest_) return body;
  switch (choices_.below(8)) {
    case 1:
      return "<html>page</html>";
    case 2:
      body[choices_.below(body.size())] ^= 1;
      return body;
    case 3:
      return body + "more";
    case 4:
      return body.substr(0, choices_.below(body.size() + 1));
    default:
      return body;
  }
}

Sent failure(HttpFailure::Kind kind, bool isRetryable = true) {
  return tl::unexpected(HttpFailure{kind, isRetryable, "so"});
}

/// How the library ends the transfer.
Sent Server::endOf(const HttpReply& reply, std::size_t sentBytes) {
  if (reply.contentLength && sentBytes < *reply.contentLength) {
    return failure(HttpFailure::Kind::network);
  }
  if (isHonest_) return {};
  switch (choices_.below(12)) {
    case 1:
      return failure(HttpFailure::Kind::network);
    case 2:
      return failure(HttpFailure::Kind::interrupted, false);
    default:
      return {};
  }
}

Sent Server::answer(const HttpRequest& request, const HttpListener& listener) {
  require(++requests_ <= kMaxRequests, "a download ends");
  require(request.offset < kFileBytes, "only missing bytes are requested");
  if (!isHonest_ && choices_.oneOf(10)) return failure(HttpFailure::Kind::unreachable);
  const HttpReply reply = replyTo(request);
  mayReplace_ = mayReplace_ || reply.status == 206 || reply.contentLength == kFileBytes;
  std::string body = bodyOf(reply, request);
  if (reply.contentLength) body.resize(std::min<std::size_t>(body.size(), *reply.contentLength));
  if (!listener.onReply(reply)) return failure(HttpFailure::Kind::rejected, false);
  const std::size_t piece = 1 + choices_.below(kFileBytes);
  for (std::size_t at = 0; at < body.size(); at += piece) {
    const std::string some = body.substr(at, piece);
    if (!listener.onBody(some)) return failure(HttpFailure::Kind::rejected, false);
  }
  return endOf(reply, body.size());
}

/// A crash, or a disk that does not keep what it was given. False: nothing happened.
bool damageDisk(FuzzChoices& choices) {
  const std::string part = world().part();
  std::string content = world().partContent();
  switch (choices.below(10)) {
    case 1:
      if (!content.empty()) content[choices.below(content.size())] ^= 1;
      std::ofstream(part, std::ios::binary) << content;
      return true;
    case 2:
      std::ofstream(part, std::ios::binary) << content.substr(0, choices.below(content.size() + 1));
      return true;
    case 3:
      fs::remove(part + ".json");
      return true;
    case 4:
      std::ofstream(part + ".blocks", std::ios::app) << "0 1" << content.substr(0, 9);
      return true;
    case 5:
      std::ofstream(part, std::ios::app) << std::string(choices.below(200), 'x');
      return true;
    default:
      return false;
  }
}

void tryDownload(FuzzChoices& choices, bool isHonest) {
  const bool isDamaged = !isHonest && damageDisk(choices);
  const std::string before = world().partContent();
  Server server(choices, isHonest);
  Lines lines;
  Download::Options options{world().pin,  world().folder, "http://127.0.0.1",
                            "",           "test",         world().limits,
                            world().stop, lines,          [](std::string_view) {}};
  options.send = [&server](const HttpRequest& request, const TransferLimits&, const StopSignals&,
                           const HttpListener& listener) {
    return server.answer(request, listener);
  };
  const SetupResult result = Download(std::move(options)).run();
  const std::string after = world().partContent();
  require(!result || after == world().content, "only the expected file is a success");
  require(result || !isHonest, "an honest server helps");
  if (result) ++wholeCount;
  if (isDamaged || server.mayReplace() || result) return;
  require(after.starts_with(before), "a reply without the length costs nothing");
  const bool saysKept = result.error().line.find("has arrived is kept") != std::string::npos;
  require(!saysKept || after.size() >= before.size(), "what is said to be kept is there");
}

}  // namespace

std::size_t voxtrel::wholeBodies() {
  return wholeCount;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const auto& entry : fs::directory_iterator(world().folder)) fs::remove_all(entry.path());
  FuzzChoices choices({data, size});
  while (!choices.areOver()) tryDownload(choices, false);
  tryDownload(choices, true);
  return 0;
}
