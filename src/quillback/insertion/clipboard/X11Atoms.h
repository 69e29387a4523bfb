#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/x11/XConnection.h"

namespace voxtrel::quillback {

/// The X server's numbers for names. Each is asked for once: a busy server's late answer must not take a type
/// away from what is offered again.
/// Thread: the loop's.  Borrows: XConnection (must outlive this).
/// Fails by: XCB_ATOM_NONE; a name that is left out.
class X11Atoms {
 public:
  X11Atoms(const XConnection& server, const std::vector<std::string>& names) : server_(server) {
    learn(names);
  }

  /// Asks for these names together.
  void learn(const std::vector<std::string>& names);
  xcb_atom_t of(const std::string& name);
  /// The names of atoms that a program has listed as bytes, asked for together.
  std::vector<std::string> names(std::string_view list);

 private:
  const XConnection& server_;
  std::map<std::string, xcb_atom_t> known_;
};

}  // namespace voxtrel::quillback
