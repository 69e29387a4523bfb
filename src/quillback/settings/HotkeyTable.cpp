#include "quillback/settings/HotkeyTable.h"

#include <algorithm>

namespace voxtrel::quillback {
namespace {

template <class Value>
std::optional<Hotkey> firstWith(Value Hotkey::*field, const Value& value) {
  const auto* row = std::ranges::find(kHotkeys, value, field);
  if (row == kHotkeys.end()) return std::nullopt;
  return *row;
}

}  // namespace

std::optional<Hotkey> hotkeyNamed(std::string_view name) {
  return firstWith(&Hotkey::name, name);
}

std::optional<Hotkey> hotkeyWithCode(std::int64_t code) {
  return firstWith(&Hotkey::code, code);
}

}  // namespace voxtrel::quillback
