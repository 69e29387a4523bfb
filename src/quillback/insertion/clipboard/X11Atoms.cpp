#include "quillback/insertion/clipboard/X11Atoms.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace voxtrel::quillback {
namespace {

constexpr std::size_t kMaxNames = 64;

}  // namespace

void X11Atoms::learn(const std::vector<std::string>& names) {
  std::vector<std::pair<std::string, xcb_intern_atom_cookie_t>> questions;
  for (const std::string& name : names) {
    if (known_.contains(name)) continue;
    const auto size = static_cast<std::uint16_t>(name.size());
    questions.emplace_back(name, xcb_intern_atom(server_.get(), 0, size, name.data()));
  }
  for (const auto& [name, cookie] : questions) {
    const auto reply = server_.reply<xcb_intern_atom_reply_t>(cookie);
    if (reply) known_[name] = reply->atom;
  }
}

xcb_atom_t X11Atoms::of(const std::string& name) {
  learn({name});
  const auto found = known_.find(name);
  return found == known_.end() ? static_cast<xcb_atom_t>(XCB_ATOM_NONE) : found->second;
}

std::vector<std::string> X11Atoms::names(std::string_view list) {
  std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> questions;
  for (; list.size() >= sizeof(xcb_atom_t) && questions.size() < kMaxNames;
       list.remove_prefix(sizeof(xcb_atom_t))) {
    xcb_atom_t atom = XCB_ATOM_NONE;
    std::memcpy(&atom, list.data(), sizeof atom);
    questions.emplace_back(atom, xcb_get_atom_name(server_.get(), atom));
  }
  std::vector<std::string> names;
  for (const auto& [atom, cookie] : questions) {
    const auto reply = server_.reply<xcb_get_atom_name_reply_t>(cookie);
    if (!reply) continue;
    names.emplace_back(xcb_get_atom_name_name(reply.get()),
                       static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
    known_[names.back()] = atom;
  }
  return names;
}

}  // namespace voxtrel::quillback
