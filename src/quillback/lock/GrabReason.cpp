#include "quillback/lock/GrabReason.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrel::quillback {
namespace {

constexpr std::uint32_t kMaxAtoms = 32;
constexpr std::uint32_t kMaxClassWords = 64;  // of four bytes
constexpr int kMaxDepth = 16;
/// The focus is nowhere, or wherever the pointer is.
constexpr xcb_window_t kNoWindow = XCB_INPUT_FOCUS_POINTER_ROOT;

/// WM_CLASS of programs that show another machine and take the keyboard while they have the focus. The
/// beginning of the name counts.
constexpr std::array<std::string_view, 12> kOtherMachines = {
    "Virt-manager", "Virt-viewer",     "Remote-viewer", "VirtualBox", "Vmware",    "Qemu",
    "Gnome-boxes",  "org.gnome.Boxes", "org.remmina",   "Remmina",    "Vncviewer", "xfreerdp"};

std::vector<xcb_window_t> childrenOf(const XConnection& server, xcb_window_t window) {
  const auto tree = server.reply<xcb_query_tree_reply_t>(xcb_query_tree(server.get(), window));
  if (!tree) return {};
  const std::span children(xcb_query_tree_children(tree.get()),
                           static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
  return {children.begin(), children.end()};
}

/// The server's own window for compositors covers the screen and shows nothing by itself.
bool isServers(const XConnection& server, xcb_window_t window) {
  return (window & ~xcb_get_setup(server.get())->resource_id_mask) == 0;
}

/// Windows that are shown and that no window manager manages.
std::vector<xcb_window_t> unmanagedWindows(const XConnection& server) {
  const auto windows = childrenOf(server, server.root());
  std::vector<xcb_get_window_attributes_cookie_t> questions;
  questions.reserve(windows.size());
  for (const xcb_window_t window : windows) {
    questions.push_back(xcb_get_window_attributes(server.get(), window));
  }
  std::vector<xcb_window_t> unmanaged;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const auto found = server.reply<xcb_get_window_attributes_reply_t>(questions[i]);
    if (found && found->override_redirect != 0 && found->map_state == XCB_MAP_STATE_VIEWABLE &&
        found->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT && !isServers(server, windows[i])) {
      unmanaged.push_back(windows[i]);
    }
  }
  return unmanaged;
}

struct Area {
  std::int64_t left, top, right, bottom;
  std::int64_t size() const {
    return std::max<std::int64_t>(right - left, 0) * std::max<std::int64_t>(bottom - top, 0);
  }
};

std::optional<Area> areaOf(const XConnection& server, xcb_window_t window) {
  const auto found = server.reply<xcb_get_geometry_reply_t>(xcb_get_geometry(server.get(), window));
  if (!found) return std::nullopt;
  return Area{found->x, found->y, found->x + found->width, found->y + found->height};
}

/// A lock screen may have one window for each monitor.
bool coverScreen(const XConnection& server, const std::vector<xcb_window_t>& windows) {
  const auto screen = areaOf(server, server.root());
  if (!screen) return true;
  std::int64_t covered = 0;
  for (const xcb_window_t window : windows) {
    const Area area = areaOf(server, window).value_or(Area{});
    covered += Area{std::max(area.left, screen->left), std::max(area.top, screen->top),
                    std::min(area.right, screen->right), std::min(area.bottom, screen->bottom)}
                   .size();
  }
  return 2 * covered >= screen->size();
}

std::vector<xcb_atom_t> menuTypes(const XConnection& server) {
  std::vector<xcb_atom_t> types;
  for (const char* const kind : {"MENU", "DROPDOWN_MENU", "POPUP_MENU", "COMBO"}) {
    types.push_back(server.atom(std::string("_NET_WM_WINDOW_TYPE_") + kind));
  }
  return types;
}

bool isMenu(const XConnection& server, xcb_window_t window, xcb_atom_t typeProperty,
            const std::vector<xcb_atom_t>& menus) {
  const auto types = server.reply<xcb_get_property_reply_t>(
      xcb_get_property(server.get(), 0, window, typeProperty, XCB_ATOM_ATOM, 0, kMaxAtoms));
  if (!types || types->format != 32) return false;
  const std::span found(static_cast<const xcb_atom_t*>(xcb_get_property_value(types.get())),
                        types->value_len);
  return std::any_of(found.begin(), found.end(), [&](xcb_atom_t type) {
    return type != XCB_ATOM_NONE && std::find(menus.begin(), menus.end(), type) != menus.end();
  });
}

/// Its WM_CLASS: two texts, each of which ends in a zero.
bool showsOtherMachine(const XConnection& server, xcb_window_t window) {
  const auto found = server.reply<xcb_get_property_reply_t>(xcb_get_property(
      server.get(), 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, kMaxClassWords));
  if (!found || found->format != 8) return false;
  std::string_view names(static_cast<const char*>(xcb_get_property_value(found.get())),
                         found->value_len);
  const std::size_t end = std::min(names.find('\0'), names.size() - 1);
  const std::array<std::string_view, 2> both = {names.substr(0, end), names.substr(end + 1)};
  return std::any_of(kOtherMachines.begin(), kOtherMachines.end(), [&](std::string_view machine) {
    return both[0].starts_with(machine) || both[1].starts_with(machine);
  });
}

/// The window with the focus, or one around it.
bool focusShowsOtherMachine(const XConnection& server) {
  const auto focus = server.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(server.get()));
  xcb_window_t window = focus ? focus->focus : XCB_NONE;
  for (int depth = 0; depth < kMaxDepth && window > kNoWindow; ++depth) {
    if (showsOtherMachine(server, window)) return true;
    const auto tree = server.reply<xcb_query_tree_reply_t>(xcb_query_tree(server.get(), window));
    window = tree ? tree->parent : XCB_NONE;
  }
  return false;
}

}  // namespace

bool isGrabHarmless(const XConnection& server) {
  const auto windows = unmanagedWindows(server);
  if (coverScreen(server, windows)) return false;
  const xcb_atom_t type = server.atom("_NET_WM_WINDOW_TYPE");
  const auto menus = menuTypes(server);
  const bool hasMenu = std::any_of(windows.begin(), windows.end(), [&](xcb_window_t window) {
    return isMenu(server, window, type, menus);
  });
  return hasMenu || focusShowsOtherMachine(server);
}

}  // namespace voxtrel::quillback
