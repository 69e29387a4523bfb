#include "quillback/settings/EngineModelKey.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstddef>

namespace voxtrel::quillback {
namespace {

constexpr std::string_view kSection = "engine";
constexpr std::string_view kKey = "model";

using Parsed = tl::expected<toml::table, std::string>;

Parsed parsed(std::string_view text) {
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& error) {
    return tl::unexpected("it is not TOML (line " + std::to_string(error.source().begin.line) +
                          ")");
  }
}

/// Where a line of `text` begins; lines count from 1.
std::size_t lineStart(std::string_view text, std::size_t line) {
  std::size_t start = 0;
  for (std::size_t number = 1; number < line && start < text.size(); ++number) {
    start = std::min(text.find('\n', start), text.size() - 1) + 1;
  }
  return start;
}

/// The byte at a position, whose column counts characters from 1.
std::size_t offsetOf(std::string_view text, const toml::source_position& position) {
  const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; };
  std::size_t at = lineStart(text, position.line);
  for (std::size_t column = 1; column < position.column && at < text.size(); ++column) {
    do ++at;
    while (at < text.size() && continues(text[at]));
  }
  return at;
}

std::string_view lineEndOf(std::string_view text) {
  const std::size_t end = text.find('\n');
  return end != std::string_view::npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

/// Whether "[engine]" stands at `at`, perhaps with blanks inside.
bool isHeader(std::string_view text, std::size_t at) {
  const auto skip = [&](std::string_view expected) {
    at = std::min(text.find_first_not_of(" \t", at), text.size());
    const bool isThere = text.substr(at).starts_with(expected);
    at += isThere ? expected.size() : 0;
    return isThere;
  };
  return skip("[") && skip(kSection) && skip("]");
}

/// The section, if it has a header of its own.
const toml::table* sectionIn(const toml::table& file, std::string_view text) {
  const toml::table* const section = file[kSection].as_table();
  if (section == nullptr || section->is_inline()) return nullptr;
  return isHeader(text, offsetOf(text, section->source().begin)) ? section : nullptr;
}

std::string edited(std::string_view text, const toml::table& file, const std::string& value) {
  std::string result(text);
  if (const toml::node* const node = file[kSection][kKey].node()) {
    const std::size_t begin = offsetOf(text, node->source().begin);
    const std::size_t end = offsetOf(text, node->source().end);
    return result.replace(begin, std::max(begin, end) - begin, value);
  }
  const std::string lineEnd(lineEndOf(text));
  const std::string line = std::string(kKey) + " = " + value + lineEnd;
  if (const toml::table* const section = sectionIn(file, text)) {
    const std::size_t at = lineStart(text, section->source().begin.line + 1);
    const bool isLastLine = text[at - 1] != '\n';
    return result.insert(at, isLastLine ? lineEnd + line : line);
  }
  if (!text.empty() && !text.ends_with('\n')) result += lineEnd;
  if (!text.empty()) result += lineEnd;
  return result + "[" + std::string(kSection) + "]" + lineEnd + line;
}

}  // namespace

std::string engineModelOf(std::string_view text) {
  const Parsed file = parsed(text);
  return file ? (*file)[kSection][kKey].value_or(std::string()) : std::string();
}

tl::expected<std::string, std::string> withEngineModel(std::string_view text,
                                                       std::string_view model) {
  const Parsed file = parsed(text);
  if (!file) return tl::unexpected(file.error());
  const std::string value = std::string(1, '"').append(model).append(1, '"');
  std::string result = edited(text, *file, value);
  // Sections can be written in ways that take no further line.
  if (engineModelOf(result) == model) return result;
  return tl::unexpected(
      std::string("its section [engine] is written in a way that cannot be extended"));
}

}  // namespace voxtrel::quillback
