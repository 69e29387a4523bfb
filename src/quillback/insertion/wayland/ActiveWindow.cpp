#include "quillback/insertion/wayland/ActiveWindow.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "wlr-foreign-toplevel-v1-client.h"

namespace voxtrel::quillback {

/// What the compositor calls.
struct ActiveWindow::Callbacks {
  using Handle = zwlr_foreign_toplevel_handle_v1;
  using Manager = zwlr_foreign_toplevel_manager_v1;

  static void appeared(void* data, Manager* /*manager*/, Handle* handle) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener kListener{
        named, named, moved, moved, changed, done, closed};
    auto* const self = static_cast<ActiveWindow*>(data);
    self->windows_.emplace(handle, Window{self->nextId_++, false});
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener, self);
  }
  static void finished(void* /*data*/, Manager* /*manager*/) {}
  static void named(void* /*data*/, Handle* /*handle*/, const char* /*name*/) {}
  static void moved(void* /*data*/, Handle* /*handle*/, wl_output* /*output*/) {}
  static void changed(void* data, Handle* handle, wl_array* states) {
    const std::span all(static_cast<const std::uint32_t*>(states->data),
                        states->size / sizeof(std::uint32_t));
    auto& window = static_cast<ActiveWindow*>(data)->windows_[handle];
    window.isActive = std::ranges::count(all, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != 0;
  }
  static void done(void* /*data*/, Handle* /*handle*/) {}
  static void closed(void* data, Handle* handle) {
    static_cast<ActiveWindow*>(data)->windows_.erase(handle);
    zwlr_foreign_toplevel_handle_v1_destroy(handle);
  }
};

std::unique_ptr<ActiveWindow> ActiveWindow::open(const Compositor& compositor) {
  auto* const manager = compositor.bind<zwlr_foreign_toplevel_manager_v1>(
      zwlr_foreign_toplevel_manager_v1_interface, 1);
  if (manager == nullptr) return nullptr;
  return std::unique_ptr<ActiveWindow>(new ActiveWindow(manager));
}

ActiveWindow::ActiveWindow(zwlr_foreign_toplevel_manager_v1* manager) : manager_(manager) {
  static constexpr zwlr_foreign_toplevel_manager_v1_listener kListener{Callbacks::appeared,
                                                                       Callbacks::finished};
  zwlr_foreign_toplevel_manager_v1_add_listener(manager_, &kListener, this);
}

ActiveWindow::~ActiveWindow() {
  for (const auto& [handle, window] : windows_) zwlr_foreign_toplevel_handle_v1_destroy(handle);
  zwlr_foreign_toplevel_manager_v1_destroy(manager_);
}

ActiveWindow::Id ActiveWindow::id() const {
  const auto active =
      std::ranges::find_if(windows_, [](const auto& window) { return window.second.isActive; });
  return active == windows_.end() ? kNone : active->second.id;
}

}  // namespace voxtrel::quillback
