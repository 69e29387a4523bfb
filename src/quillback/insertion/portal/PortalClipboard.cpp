#include "quillback/insertion/portal/PortalClipboard.h"

#include <fcntl.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <utility>

#include "quillback/dbus/BusEntries.h"

namespace voxtrel::quillback {
namespace {

/// GNOME counts a read as running for a moment after its end, and its portal crashes at one that is refused.
constexpr std::chrono::milliseconds kReadPause{100};
/// Stands for an empty clipboard: GNOME fills one that nobody holds with the last text, which is ours. No
/// program takes this type.
const ClipboardContent kNothing{{"application/x-voxtrel-nothing", ""}};

/// The descriptor in a reply, ours now; not open if there is none.
FileDescriptor pipeOf(sd_bus_message& reply) {
  int pipe = -1;
  if (isError(reply) || sd_bus_message_read(&reply, "h", &pipe) <= 0) return {};
  return FileDescriptor(::fcntl(pipe, F_DUPFD_CLOEXEC, 3));
}

void appendTypes(sd_bus_message& call, const ClipboardContent& content) {
  sd_bus_message_open_container(&call, 'e', "sv");
  sd_bus_message_append(&call, "s", "mime_types");
  sd_bus_message_open_container(&call, 'v', "as");
  sd_bus_message_open_container(&call, 'a', "s");
  for (const auto& entry : content) sd_bus_message_append(&call, "s", entry.first.c_str());
  sd_bus_message_close_container(&call);
  sd_bus_message_close_container(&call);
  sd_bus_message_close_container(&call);
}

void ignoreReply(sd_bus_message& /*reply*/) {}

}  // namespace

PortalClipboard::PortalClipboard(Portal& portal, Loop& loop) : portal_(portal), loop_(loop) {
  portal_.onSignal(kInterface, "SelectionOwnerChanged", [this](auto& signal) { onOwner(signal); });
  portal_.onSignal(kInterface, "SelectionTransfer", [this](auto& signal) { onTransfer(signal); });
}

void PortalClipboard::attach(const std::string& session) {
  detach();
  session_ = session;
}

void PortalClipboard::detach() {
  session_.clear();
  types_.clear();
  isOurs_ = false;
  content_.clear();
  onRead_ = nullptr;
  reader_.reset();
}

bool PortalClipboard::isOfOurSession(sd_bus_message& signal) const {
  const char* session = nullptr;
  return sd_bus_message_read(&signal, "o", &session) > 0 && session_ == session;
}

/// Without types the clipboard is empty.
void PortalClipboard::onOwner(sd_bus_message& signal) {
  if (!isOfOurSession(signal)) return;
  types_.clear();
  isOurs_ = false;
  forEntries(signal, [&](std::string_view key) {
    if (key == "session_is_owner") {
      const auto isOwner = readNumber(signal);
      isOurs_ = isOwner == 1U;
      return isOwner.has_value();
    }
    if (key != "mime_types") return false;
    const auto types = readTexts(signal);
    if (types) types_ = *types;
    return types.has_value();
  });
}

void PortalClipboard::offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) {
  content_ = std::move(content);
  onRead_ = std::move(onRead);
  portal_.call(
      kInterface, "SetSelection",
      [this](sd_bus_message& call) {
        sd_bus_message_append(&call, "o", session_.c_str());
        sd_bus_message_open_container(&call, 'a', "{sv}");
        appendTypes(call, content_.empty() ? kNothing : content_);
        sd_bus_message_close_container(&call);
      },
      [this, onOffered = std::move(onOffered), session = session_](sd_bus_message& reply) {
        isOurs_ = !isError(reply) && session == session_;
        if (onOffered) onOffered(isOurs_);
      });
}

void PortalClipboard::onTransfer(sd_bus_message& signal) {
  const char* type = nullptr;
  std::uint32_t serial = 0;
  if (!isOfOurSession(signal) || sd_bus_message_read(&signal, "su", &type, &serial) <= 0) return;
  portal_.call(
      kInterface, "SelectionWrite",
      [&](sd_bus_message& call) { sd_bus_message_append(&call, "ou", session_.c_str(), serial); },
      [this, serial, begun = loop_.now(), type = std::string(type)](sd_bus_message& reply) {
        send({type, serial, begun}, pipeOf(reply));
      });
}

void PortalClipboard::send(const Transfer& transfer, FileDescriptor pipe) {
  const auto entry =
      std::ranges::find(content_, transfer.type, &ClipboardContent::value_type::first);
  if (entry == content_.end() || !pipe.isOpen()) return endTransfer(transfer.serial, false);
  writers_.remove_if([](const PipeWriter& writer) { return writer.isDone(); });
  writers_.emplace_back(std::move(pipe), entry->second, loop_,
                        [this, transfer, onRead = onRead_](bool isWhole) {
                          endTransfer(transfer.serial, isWhole);
                          if (isWhole && onRead) onRead(transfer.type, transfer.begun);
                        });
}

void PortalClipboard::endTransfer(std::uint32_t serial, bool isWhole) {
  if (session_.empty()) return;
  portal_.call(
      kInterface, "SelectionWriteDone",
      [&](sd_bus_message& call) {
        sd_bus_message_append(&call, "oub", session_.c_str(), serial, isWhole ? 1 : 0);
      },
      ignoreReply);
}

/// Only what is surely granted: a session may not read what it holds itself, nor an empty clipboard, nor
/// two types at once.
void PortalClipboard::read(OnContent onContent) {
  if (isOurs_) return onContent(content_);
  if (types_.empty() || (reader_ && reader_->isBusy())) return onContent({});
  reader_ = std::make_unique<ContentReader>(
      types_,
      [this](const std::string& type, const ContentReader::OnPipe& onPipe) {
        openPipe(type, onPipe);
      },
      kReadPause, loop_);
  reader_->start(std::move(onContent));
}

void PortalClipboard::openPipe(const std::string& type, const ContentReader::OnPipe& onPipe) {
  portal_.call(
      kInterface, "SelectionRead",
      [&](sd_bus_message& call) {
        sd_bus_message_append(&call, "os", session_.c_str(), type.c_str());
      },
      [onPipe](sd_bus_message& reply) { onPipe(pipeOf(reply)); });
}

ClipboardContent PortalClipboard::stopReading() {
  return reader_ ? reader_->stop() : ClipboardContent();
}

}  // namespace voxtrel::quillback
