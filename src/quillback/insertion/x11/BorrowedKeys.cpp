#include "quillback/insertion/x11/BorrowedKeys.h"

#include <span>

namespace voxtrel::quillback {
namespace {

constexpr std::uint8_t kWordBits = 32;
constexpr std::uint32_t kMaxWords = 2048;
constexpr std::uint32_t kMinBorrowedCode = 8;
constexpr std::uint32_t kMaxBorrowedCode = 255;
constexpr std::uint32_t kAllLocks = 0xFF;

}  // namespace

/// The server takes the claim back when our connection ends, however that happens.
BorrowedKeys::BorrowedKeys(const XConnection& server)
    : server_(server),
      claimAtom_(server.atom("_QUILLBACK_TYPER")),
      recordAtom_(server.atom("_QUILLBACK_BORROWED_KEYS")),
      window_(xcb_generate_id(server.get())) {
  xcb_create_window(server.get(), XCB_COPY_FROM_PARENT, window_, server.root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

BorrowedKeys::Record BorrowedKeys::claim() {
  if (isOwner_) return {};
  const auto current = server_.reply<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(server_.get(), claimAtom_));
  if (!current || current->owner != XCB_NONE) return {};
  xcb_set_selection_owner(server_.get(), window_, claimAtom_, XCB_CURRENT_TIME);
  isOwner_ = true;
  return read();
}

BorrowedKeys::Record BorrowedKeys::read() const {
  Record record;
  const auto property = server_.reply<xcb_get_property_reply_t>(xcb_get_property(
      server_.get(), 0, server_.root(), recordAtom_, XCB_ATOM_CARDINAL, 0, kMaxWords));
  if (!property || property->format != kWordBits || property->value_len == 0) return record;
  const std::span words(static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())),
                        property->value_len);
  record.locks = static_cast<std::uint8_t>(words[0] <= kAllLocks ? words[0] : 0);
  for (std::size_t i = 1; i + 1 < words.size(); i += 2) {
    if (words[i] < kMinBorrowedCode || words[i] > kMaxBorrowedCode || words[i + 1] == XCB_NO_SYMBOL)
      continue;
    record.spares.emplace_back(static_cast<std::uint8_t>(words[i]), words[i + 1]);
  }
  return record;
}

void BorrowedKeys::write(const Record& record) const {
  if (!isOwner_) return;
  if (record.isEmpty()) {
    xcb_delete_property(server_.get(), server_.root(), recordAtom_);
    return;
  }
  std::vector<std::uint32_t> words{record.locks};
  for (const auto& [code, keysym] : record.spares) {
    words.push_back(code);
    words.push_back(keysym);
  }
  xcb_change_property(server_.get(), XCB_PROP_MODE_REPLACE, server_.root(), recordAtom_,
                      XCB_ATOM_CARDINAL, kWordBits, static_cast<std::uint32_t>(words.size()),
                      words.data());
}

}  // namespace voxtrel::quillback
