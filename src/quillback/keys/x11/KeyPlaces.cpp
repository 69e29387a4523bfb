#include "quillback/keys/x11/KeyPlaces.h"

#include <linux/input-event-codes.h>

#include <array>
#include <cstring>
#include <map>
#include <string>

#include "common/x11/XcbXkb.h"

namespace voxtrel::quillback {
namespace {

/// An X server's code minus evdev's.
constexpr int kCodeOffset = 8;

/// A key, and the name of its place in XKB's keycode tables.
struct Place {
  int evdevCode;
  std::string_view name;
};
constexpr std::array<Place, 11> kPlaces = {{{KEY_ESC, "ESC"},
                                            {KEY_LEFTSHIFT, "LFSH"},
                                            {KEY_RIGHTSHIFT, "RTSH"},
                                            {KEY_RIGHTMETA, "RWIN"},
                                            {KEY_RIGHTCTRL, "RCTL"},
                                            {KEY_RIGHTALT, "RALT"},
                                            {KEY_BACKSLASH, "BKSL"},
                                            {KEY_F5, "FK05"},
                                            {KEY_F6, "FK06"},
                                            {KEY_F7, "FK07"},
                                            {KEY_F8, "FK08"}}};

using Names = std::map<std::string, int, std::less<>>;

constexpr std::size_t kNameBytes = 4;  // shorter names are padded with zeros

std::string text(const char* name) {
  return {name, strnlen(name, kNameBytes)};
}

/// The server's key names and aliases, with their codes.
Names namedKeys(const XConnection& server) {
  constexpr std::uint32_t kWanted = XCB_XKB_NAME_DETAIL_KEY_NAMES | XCB_XKB_NAME_DETAIL_KEY_ALIASES;
  const auto reply = server.reply<xcb_xkb_get_names_reply_t>(
      xcb_xkb_get_names(server.get(), XCB_XKB_ID_USE_CORE_KBD, kWanted));
  if (!reply) return {};
  xcb_xkb_get_names_value_list_t lists{};
  xcb_xkb_get_names_value_list_unpack(xcb_xkb_get_names_value_list(reply.get()), reply->nTypes,
                                      reply->indicators, reply->virtualMods, reply->groupNames,
                                      reply->nKeys, reply->nKeyAliases, reply->nRadioGroups,
                                      reply->which, &lists);
  Names names;
  for (int i = 0; i < reply->nKeys; ++i) {
    names.emplace(text(lists.keyNames[i].name), reply->firstKey + i);
  }
  for (int i = 0; i < reply->nKeyAliases; ++i) {
    const auto real = names.find(text(lists.keyAliases[i].real));
    if (real != names.end()) names.emplace(text(lists.keyAliases[i].alias), real->second);
  }
  return names;
}

int keyCode(const Names& names, int evdevCode) {
  for (const Place& place : kPlaces) {
    if (place.evdevCode != evdevCode) continue;
    const auto found = names.find(place.name);
    if (found != names.end()) return found->second;
  }
  return evdevCode + kCodeOffset;
}

}  // namespace

PushToTalk::Codes keyPlaces(const XConnection& server, const Hotkey& hotkey) {
  const Names names = namedKeys(server);
  return {.hotkey = keyCode(names, hotkey.evdevCode),
          .escape = keyCode(names, KEY_ESC),
          .leftShift = keyCode(names, KEY_LEFTSHIFT),
          .rightShift = keyCode(names, KEY_RIGHTSHIFT),
          .needsShift = hotkey.needsShift};
}

}  // namespace voxtrel::quillback
