#include "quillback/recognition/process/Message.h"

#include <chrono>
#include <cstring>
#include <type_traits>

namespace voxtrel::quillback {
namespace {

using ContentSize = std::uint32_t;
constexpr std::size_t kHeaderBytes = sizeof(Message::Kind) + sizeof(ContentSize);

/// Puts values one after the other.
/// Thread: one.
class ContentWriter {
 public:
  template <typename Number>
  void number(Number value) {
    static_assert(std::is_arithmetic_v<Number>);
    const std::size_t at = content_.size();
    content_.resize(at + sizeof value);
    std::memcpy(content_.data() + at, &value, sizeof value);
  }
  void text(std::string_view value) {
    number(static_cast<ContentSize>(value.size()));
    content_ += value;
  }
  void lines(const std::vector<std::string>& values) {
    number(static_cast<ContentSize>(values.size()));
    for (const std::string& value : values) text(value);
  }
  const std::string& content() const { return content_; }

 private:
  std::string content_;
};

/// Takes them out in the same order.
/// Thread: one.
/// Fails by: isComplete; the values are then empty.
class ContentReader {
 public:
  explicit ContentReader(std::string_view content) : left_(content) {}

  template <typename Number>
  Number number() {
    static_assert(std::is_arithmetic_v<Number>);
    Number value{};
    const std::string_view bytes = take(sizeof value);
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
  }
  std::string text() { return std::string(take(number<ContentSize>())); }
  std::vector<std::string> lines() {
    std::vector<std::string> values;
    for (auto count = number<ContentSize>(); count > 0 && isValid_; --count) {
      values.push_back(text());
    }
    return values;
  }
  /// Nothing was missing and nothing is left.
  bool isComplete() const { return isValid_ && left_.empty(); }

 private:
  std::string_view take(std::size_t size) {
    isValid_ = isValid_ && size <= left_.size();
    if (!isValid_) return {};
    const std::string_view bytes = left_.substr(0, size);
    left_.remove_prefix(size);
    return bytes;
  }

  std::string_view left_;
  bool isValid_ = true;
};

bool isKnown(Message::Kind kind) {
  return kind >= Message::Kind::begin && kind <= Message::Kind::dropped;
}

}  // namespace

std::string encoded(const Message& message) {
  ContentWriter bytes;
  bytes.number(static_cast<std::uint8_t>(message.kind));
  bytes.text(message.content);
  return bytes.content();
}

Message samplesMessage(std::span<const std::int16_t> samples) {
  Message message{Message::Kind::samples, std::string(samples.size_bytes(), '\0')};
  if (!samples.empty()) std::memcpy(message.content.data(), samples.data(), samples.size_bytes());
  return message;
}

Message loadedMessage(const LoadReport& report) {
  ContentWriter content;
  content.number(report.isUsable);
  content.lines(report.lines);
  return {Message::Kind::loaded, content.content()};
}

Message resultMessage(const Transcription& result) {
  ContentWriter content;
  content.text(result.text);
  content.number(static_cast<std::int64_t>(result.encode.count()));
  content.number(static_cast<std::int64_t>(result.decode.count()));
  content.lines(result.lines);
  return {Message::Kind::result, content.content()};
}

std::optional<std::vector<std::int16_t>> readSamples(const Message& message) {
  std::vector<std::int16_t> samples(message.content.size() / sizeof(std::int16_t));
  const std::size_t size = samples.size() * sizeof(std::int16_t);
  if (message.kind != Message::Kind::samples || size != message.content.size()) return {};
  if (size > 0) std::memcpy(samples.data(), message.content.data(), size);
  return samples;
}

std::optional<LoadReport> readLoaded(const Message& message) {
  if (message.kind != Message::Kind::loaded) return {};
  ContentReader content(message.content);
  LoadReport report;
  // Any other byte than 0 or 1 would be no bool.
  report.isUsable = content.number<std::uint8_t>() != 0;
  report.lines = content.lines();
  if (!content.isComplete()) return {};
  return report;
}

std::optional<Transcription> readResult(const Message& message) {
  if (message.kind != Message::Kind::result) return {};
  ContentReader content(message.content);
  Transcription result;
  result.text = content.text();
  result.encode = std::chrono::microseconds(content.number<std::int64_t>());
  result.decode = std::chrono::microseconds(content.number<std::int64_t>());
  result.lines = content.lines();
  if (!content.isComplete()) return {};
  return result;
}

void MessageReader::append(std::string_view bytes) {
  bytes_.erase(0, start_);
  start_ = 0;
  bytes_ += bytes;
}

tl::expected<std::optional<Message>, MessageReader::Broken> MessageReader::next() {
  const std::string_view left = std::string_view(bytes_).substr(start_);
  if (left.size() < kHeaderBytes) return std::nullopt;
  ContentReader header(left.substr(0, kHeaderBytes));
  const auto kind = static_cast<Message::Kind>(header.number<std::uint8_t>());
  const std::size_t size = header.number<ContentSize>();
  if (!isKnown(kind) || size > kMaxMessageBytes) return tl::unexpected(Broken{});
  if (left.size() < kHeaderBytes + size) return std::nullopt;
  start_ += kHeaderBytes + size;
  return Message{kind, std::string(left.substr(kHeaderBytes, size))};
}

}  // namespace voxtrel::quillback
