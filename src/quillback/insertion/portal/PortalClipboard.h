#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "quillback/dbus/Portal.h"
#include "quillback/insertion/paste/ContentReader.h"

namespace voxtrel::quillback {

/// The clipboard of a portal's session, as GNOME offers it: no window and no focus is needed.
/// Thread: the loop's.  Borrows: Portal, Loop (must outlive this).
class PortalClipboard final : public PasteClipboard {
 public:
  static constexpr const char* kInterface = "org.freedesktop.portal.Clipboard";

  PortalClipboard(Portal& portal, Loop& loop);
  PortalClipboard(const PortalClipboard&) = delete;
  PortalClipboard& operator=(const PortalClipboard&) = delete;

  /// From now on this is the clipboard of the session; nothing is known about it yet.
  void attach(const std::string& session);
  /// The session is over.
  void detach();

  void read(OnContent onContent) override;
  ClipboardContent stopReading() override;
  void offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) override;
  bool holdsOffer() const override { return isOurs_; }
  bool seesReads() const override { return true; }
  bool isWatched() const override { return true; }

 private:
  /// A program that reads what we offered.
  struct Transfer {
    std::string type;
    std::uint32_t serial;
    Loop::TimePoint begun;
  };

  void onOwner(sd_bus_message& signal);
  void onTransfer(sd_bus_message& signal);
  void send(const Transfer& transfer, FileDescriptor pipe);
  void endTransfer(std::uint32_t serial, bool isWhole);
  void openPipe(const std::string& type, const ContentReader::OnPipe& onPipe);
  bool isOfOurSession(sd_bus_message& signal) const;

  Portal& portal_;
  Loop& loop_;
  std::string session_;             // its path; empty while there is none
  std::vector<std::string> types_;  // that others offer
  bool isOurs_ = false;
  ClipboardContent content_;
  OnRead onRead_;
  std::unique_ptr<ContentReader> reader_;
  std::list<PipeWriter> writers_;
};

}  // namespace voxtrel::quillback
