#include "quillback/model/RangeRules.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace voxtrel::quillback {

namespace {

constexpr std::size_t kMaxHeaderValueBytes = 512;
constexpr int kOk = 200;
constexpr int kPartialContent = 206;
constexpr int kRangeNotSatisfiable = 416;
constexpr std::array<std::string_view, 2> kPageTypes = {"text/html", "application/xhtml+xml"};
constexpr std::array<int, 7> kTemporaryErrors = {408, 425, 429, 500, 502, 503, 504};

/// Removes a number and the character `after` it ('\0': the end) from the front of `text`.
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

ReplyAction judgePartial(const RangeRequest& request, const HttpReply& reply) {
  const std::optional<ContentRange> range = parseContentRange(reply.contentRange.value_or(""));
  const ContentRange wanted{request.offset, request.totalBytes - 1, request.totalBytes};
  if (request.offset == 0 || range != wanted) return ReplyAction::refetch;
  if (reply.contentLength.value_or(request.totalBytes - request.offset) !=
      request.totalBytes - request.offset) {
    return ReplyAction::refetch;
  }
  const bool isSameFile = request.etag.empty() || reply.etag.empty() || request.etag == reply.etag;
  return isSameFile ? ReplyAction::append : ReplyAction::refetch;
}

}  // namespace

bool isHeaderValue(std::string_view value) {
  return value.size() <= kMaxHeaderValueBytes &&
         std::ranges::all_of(value, [](char c) { return c >= ' ' && c < '\x7f'; });
}

bool isWebPage(std::string_view contentType) {
  const std::string_view type = contentType.substr(0, contentType.find_first_of("; \t"));
  return std::ranges::any_of(kPageTypes, [type](std::string_view page) {
    return std::ranges::equal(page, type, [](char want, char c) {
      return want == (c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c);
    });
  });
}

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

ReplyAction judgeReply(const RangeRequest& request, const HttpReply& reply) {
  const bool isBody = reply.status == kOk || reply.status == kPartialContent;
  if (isBody && isWebPage(reply.contentType)) return ReplyAction::webPage;
  if (reply.status == kOk) {
    if (reply.contentLength.value_or(request.totalBytes) != request.totalBytes) {
      return ReplyAction::wrongFile;
    }
    return request.offset == 0 ? ReplyAction::append : ReplyAction::restart;
  }
  if (reply.status == kPartialContent) return judgePartial(request, reply);
  if (reply.status == kRangeNotSatisfiable && request.offset > 0) return ReplyAction::refetch;
  return std::ranges::count(kTemporaryErrors, reply.status) > 0 ? ReplyAction::retry
                                                                : ReplyAction::refuse;
}

std::string ifRangeOf(std::string_view etag, std::string_view lastModified) {
  // A weak tag does not promise the same bytes.
  if (etag.size() > 2 && etag.starts_with('"') && etag.ends_with('"')) return std::string(etag);
  return std::string(lastModified);
}

}  // namespace voxtrel::quillback
