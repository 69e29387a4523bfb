#pragma once

#include <map>
#include <memory>
#include <string>

#include "quillback/insertion/wayland/Compositor.h"

struct zwlr_foreign_toplevel_manager_v1;
struct zwlr_foreign_toplevel_handle_v1;
struct wl_array;

namespace voxtrel::quillback {

/// Which window is the active one, as far as the compositor tells its task bars.
/// Thread: the loop's.  Borrows: Compositor (must outlive this).
class ActiveWindow {
 public:
  /// A window that has not been active yet has none; ids are not used again.
  using Id = int;
  static constexpr Id kNone = 0;

  /// Null if the compositor does not tell.
  [[nodiscard]] static std::unique_ptr<ActiveWindow> open(const Compositor& compositor);
  ActiveWindow(const ActiveWindow&) = delete;
  ActiveWindow& operator=(const ActiveWindow&) = delete;
  ~ActiveWindow();

  Id id() const;

 private:
  struct Window {
    Id id = kNone;
    bool isActive = false;
  };
  struct Callbacks;

  explicit ActiveWindow(zwlr_foreign_toplevel_manager_v1* manager);

  zwlr_foreign_toplevel_manager_v1* manager_;
  std::map<zwlr_foreign_toplevel_handle_v1*, Window> windows_;
  Id nextId_ = kNone + 1;
};

}  // namespace voxtrel::quillback
