#include "quillback/model/PartBlocks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "quillback/model/Manifest.h"

namespace voxtrel::quillback {

namespace {

/// Removes a number and the blank behind it from the front of `line`.
std::optional<std::uint64_t> takeOffset(std::string_view& line) {
  std::uint64_t number = 0;
  const char* const last = line.data() + line.size();
  const auto [end, error] = std::from_chars(line.data(), last, number);
  if (error != std::errc() || end == last || *end != ' ') return std::nullopt;
  line.remove_prefix(static_cast<std::size_t>(end - line.data()) + 1);
  return number;
}

std::optional<PartBlock> parsePartBlock(std::string_view line) {
  const auto begin = takeOffset(line);
  const auto end = begin ? takeOffset(line) : std::nullopt;
  if (!end || *begin >= *end || !isSha256(line)) return std::nullopt;
  return PartBlock{*begin, *end, std::string(line)};
}

}  // namespace

std::string formatPartBlock(const PartBlock& block) {
  return std::to_string(block.begin) + ' ' + std::to_string(block.end) + ' ' + block.sha256 + '\n';
}

std::vector<PartBlock> parsePartBlocks(std::string_view text) {
  std::vector<PartBlock> blocks;
  std::uint64_t reached = 0;
  for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;) {
    auto block = parsePartBlock(text.substr(0, end));
    if (!block || block->begin < reached) break;
    reached = block->end;
    blocks.push_back(std::move(*block));
    text.remove_prefix(end + 1);
  }
  return blocks;
}

void PartBlocks::read() {
  const std::string text = readSmallFile(path_, kMaxPartBlocksBytes).value_or("");
  blocks_ = parsePartBlocks(text);
  std::size_t bytes = 0;
  for (const PartBlock& block : blocks_) bytes += formatPartBlock(block).size();
  hasOther_ = bytes < text.size();
}

FileResult PartBlocks::openToAppend() {
  if (file_.isOpen()) return {};
  file_ = FileDescriptor(::open(path_.c_str(),
                                O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                                kFileMode));
  return file_.isOpen() ? FileResult() : FileResult(systemFailure());
}

FileResult PartBlocks::add(PartBlock block) {
  if (hasOther_) {
    if (auto rewritten = rewrite(); !rewritten) return rewritten;
  }
  const auto written =
      openToAppend().and_then([&] { return writeAll(file_.get(), formatPartBlock(block)); });
  if (written) blocks_.push_back(std::move(block));
  hasOther_ = !written;
  return written;
}

FileResult PartBlocks::cut(std::uint64_t end) {
  const auto tooFar =
      std::ranges::find_if(blocks_, [end](const PartBlock& block) { return block.end > end; });
  if (tooFar == blocks_.end() && end > 0) return {};
  blocks_.erase(tooFar, blocks_.end());
  return rewrite();
}

FileResult PartBlocks::rewrite() {
  file_ = FileDescriptor();
  if (auto removed = removeFile(path_); !removed || blocks_.empty()) return removed;
  std::string text;
  for (const PartBlock& block : blocks_) text += formatPartBlock(block);
  return openToAppend().and_then([&] { return writeAll(file_.get(), text); });
}

}  // namespace voxtrel::quillback
