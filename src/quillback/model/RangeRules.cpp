#include "quillback/model/RangeRules.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace voxtrel::quillback {

namespace {

constexpr int kOk = 200;
constexpr int kPartialContent = 206;
constexpr int kRangeNotSatisfiable = 416;
constexpr std::array<int, 7> kPassingFaults = {408, 425, 429, 500, 502, 503, 504};

/// Takes a number and the character after it (none: the end) off the front of `text`.
std::optional<std::uint64_t> takeNumber(std::string_view& text, char after) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (after == '\0') return text.empty() ? std::optional(number) : std::nullopt;
  if (!text.starts_with(after)) return std::nullopt;
  text.remove_prefix(1);
  return number;
}

ReplyAction judgePartial(const RangeAsk& ask, const HttpReply& reply) {
  const std::optional<ContentRange> range = parseContentRange(reply.contentRange.value_or(""));
  const ContentRange wanted{ask.offset, ask.totalBytes - 1, ask.totalBytes};
  if (ask.offset == 0 || range != wanted) return ReplyAction::askAnew;
  if (reply.contentLength.value_or(ask.totalBytes - ask.offset) != ask.totalBytes - ask.offset) {
    return ReplyAction::askAnew;
  }
  const bool isSameFile = ask.etag.empty() || reply.etag.empty() || ask.etag == reply.etag;
  return isSameFile ? ReplyAction::append : ReplyAction::askAnew;
}

}  // namespace

std::optional<ContentRange> parseContentRange(std::string_view text) {
  constexpr std::string_view kUnit = "bytes ";
  const bool isBytes = text.size() > kUnit.size() &&
                       std::equal(kUnit.begin(), kUnit.end(), text.begin(), [](char want, char c) {
                         return want == c || (c >= 'A' && want == (c | 0x20));
                       });
  if (!isBytes) return std::nullopt;
  text.remove_prefix(std::min(text.find_first_not_of(' ', kUnit.size()), text.size()));

  const auto first = takeNumber(text, '-');
  const auto last = first ? takeNumber(text, '/') : std::nullopt;
  const auto totalBytes = last ? takeNumber(text, '\0') : std::nullopt;
  if (!totalBytes || *first > *last || *last >= *totalBytes) return std::nullopt;
  return ContentRange{*first, *last, *totalBytes};
}

ReplyAction judgeReply(const RangeAsk& ask, const HttpReply& reply) {
  if (reply.status == kOk) {
    if (reply.contentLength.value_or(ask.totalBytes) != ask.totalBytes) {
      return ReplyAction::wrongFile;
    }
    return ask.offset == 0 ? ReplyAction::append : ReplyAction::restart;
  }
  if (reply.status == kPartialContent) return judgePartial(ask, reply);
  if (reply.status == kRangeNotSatisfiable && ask.offset > 0) return ReplyAction::askAnew;
  return std::ranges::count(kPassingFaults, reply.status) > 0 ? ReplyAction::retry
                                                              : ReplyAction::refuse;
}

std::string ifRangeOf(std::string_view etag, std::string_view lastModified) {
  // A weak tag promises the same meaning, not the same bytes.
  if (etag.size() > 2 && etag.starts_with('"') && etag.ends_with('"')) return std::string(etag);
  return std::string(lastModified);
}

}  // namespace voxtrel::quillback
