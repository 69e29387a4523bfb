#include "quillback/insertion/clipboard/X11Clipboard.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "common/posix/Pipe.h"

namespace voxtrel::quillback {
namespace {

/// How long the desktop gets for noticing what was copied.
constexpr std::chrono::milliseconds kTakeTimeout{1000};
constexpr std::chrono::milliseconds kAtOnce{0};
constexpr xcb_atom_t kNoAtom = XCB_ATOM_NONE;
/// Of text whose form the owner may choose.
constexpr const char* kAnyText = "TEXT";
constexpr const char* kUtf8String = "UTF8_STRING";

/// The server's clock wraps around.
bool isBefore(xcb_timestamp_t first, xcb_timestamp_t second) {
  return static_cast<std::int32_t>(first - second) < 0;
}

}  // namespace

std::unique_ptr<X11Clipboard> X11Clipboard::open(Loop& loop) {
  auto server = XConnection::open();
  if (!server) return nullptr;
  std::unique_ptr<X11Clipboard> clipboard(new X11Clipboard(std::move(server), loop));
  if (clipboard->stamp_ == kNoAtom) return nullptr;
  clipboard->watch_ = loop.watch(clipboard->server_->descriptor(),
                                 [self = clipboard.get()] { self->handleEvents(); });
  return clipboard;
}

X11Clipboard::X11Clipboard(std::unique_ptr<XConnection> server, Loop& loop)
    : server_(std::move(server)),
      loop_(loop),
      atoms_(*server_, {"CLIPBOARD", "TARGETS", "TIMESTAMP", "_QUILLBACK_STAMP"}),
      clipboard_(atoms_.of("CLIPBOARD")),
      targets_(atoms_.of("TARGETS")),
      timestamp_(atoms_.of("TIMESTAMP")),
      stamp_(atoms_.of("_QUILLBACK_STAMP")),
      window_(makeHiddenWindow(*server_)) {
  server_->flush();
}

/// Without STRING, which is Latin-1 here.
void X11Clipboard::put(const std::string& text) {
  offer({{kUtf8String, text}, {"text/plain;charset=utf-8", text}, {"text/plain", text}}, nullptr,
        nullptr);
}

void X11Clipboard::offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) {
  content_ = std::move(content);
  onRead_ = std::move(onRead);
  onOffered_ = std::move(onOffered);
  nameTypes();
  takeTimeout_.reset();
  if (onOffered_) {
    const bool isWhole = std::ranges::find(types_, kNoAtom) == types_.end();
    takeTimeout_ = loop_.after(isWhole ? kTakeTimeout : kAtOnce, [this] { endOffer(false); });
  }
  requestTime();
  // Events that came with the atoms are already here, and the descriptor does not tell of them.
  loop_.post([this, isAlive = std::weak_ptr(isAlive_)] {
    if (!isAlive.expired()) handleEvents();
  });
}

void X11Clipboard::nameTypes() {
  std::vector<std::string> names;
  for (const auto& entry : content_) names.push_back(entry.first);
  atoms_.learn(names);
  types_.clear();
  for (const std::string& name : names) types_.push_back(atoms_.of(name));
}

/// Becoming the owner needs the server's time, which the event of this change has.
void X11Clipboard::requestTime() {
  xcb_change_property(server_->get(), XCB_PROP_MODE_APPEND, window_, stamp_, XCB_ATOM_STRING, 8, 0,
                      nullptr);
  server_->flush();
}

void X11Clipboard::handleEvents() {
  const auto isAlive = std::weak_ptr(isAlive_);
  while (const auto event = server_->nextEvent()) {
    handle(*event);
    if (isAlive.expired()) return;
  }
  server_->flush();
  if (server_->isBroken()) watch_.reset();
}

void X11Clipboard::handle(const xcb_generic_event_t& event) {
  switch (eventType(event)) {
    case XCB_PROPERTY_NOTIFY:
      own(eventAs<xcb_property_notify_event_t>(event));
      break;
    case XCB_SELECTION_REQUEST:
      return serve(eventAs<xcb_selection_request_event_t>(event));
    case XCB_SELECTION_CLEAR:
      // A clear from before our latest copy is outdated.
      if (isBefore(eventAs<xcb_selection_clear_event_t>(event).time, ownedSince_)) break;
      isOwner_ = false;
      content_.clear();
      types_.clear();
      onRead_ = nullptr;
      break;
    default:
      break;
  }
  if (selection_) selection_->handle(event);
}

void X11Clipboard::own(const xcb_property_notify_event_t& event) {
  if (event.window != window_ || event.atom != stamp_) return;
  ownedSince_ = event.time;
  isOwner_ = true;
  xcb_set_selection_owner(server_->get(), window_, clipboard_, event.time);
}

void X11Clipboard::endOffer(bool isThere) {
  takeTimeout_.reset();
  isDesktops_ = isThere;
  const OnOffered onOffered = std::exchange(onOffered_, nullptr);
  onOffered(isThere);
}

void X11Clipboard::serve(const xcb_selection_request_event_t& request) {
  // Old programs name no property and mean the one named like the target.
  const xcb_atom_t property = request.property == XCB_NONE ? request.target : request.property;
  const bool isOurs = isOwner_ && request.selection == clipboard_ &&
                      (request.time == XCB_CURRENT_TIME || !isBefore(request.time, ownedSince_));
  const bool isWritten = isOurs && write(request, property);
  xcb_selection_notify_event_t reply{};
  reply.response_type = XCB_SELECTION_NOTIFY;
  reply.time = request.time;
  reply.requestor = request.requestor;
  reply.selection = request.selection;
  reply.target = request.target;
  reply.property = isWritten ? property : XCB_NONE;
  std::array<char, 32> event{};
  static_assert(sizeof reply <= event.size());
  std::copy_n(static_cast<const char*>(static_cast<const void*>(&reply)), sizeof reply,
              event.data());
  xcb_send_event(server_->get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.data());
  server_->flush();
  if (!isWritten) return;
  if (request.target == targets_) isDesktops_ = true;
  if (request.target == targets_ && onOffered_) return endOffer(true);
  const auto type = std::ranges::find(types_, request.target);
  if (type == types_.end() || !onRead_) return;
  const OnRead onRead = onRead_;
  onRead(content_[static_cast<std::size_t>(type - types_.begin())].first, loop_.now());
}

bool X11Clipboard::write(const xcb_selection_request_event_t& request, xcb_atom_t property) {
  const auto put = [&](xcb_atom_t type, std::size_t count, const void* data) {
    xcb_change_property(server_->get(), XCB_PROP_MODE_REPLACE, request.requestor, property, type,
                        32, static_cast<std::uint32_t>(count), data);
    return true;
  };
  if (request.target == timestamp_) return put(XCB_ATOM_INTEGER, 1, &ownedSince_);
  if (request.target != targets_) return writeContent(request, property);
  std::vector<xcb_atom_t> offered{targets_, timestamp_};
  offered.insert(offered.end(), types_.begin(), types_.end());
  return put(XCB_ATOM_ATOM, offered.size(), offered.data());
}

bool X11Clipboard::writeContent(const xcb_selection_request_event_t& request, xcb_atom_t property) {
  const auto found = std::ranges::find(types_, request.target);
  if (found == types_.end()) return false;
  const auto& [name, bytes] = content_[static_cast<std::size_t>(found - types_.begin())];
  // One request carries hours of speech; what is longer is refused.
  constexpr std::size_t kRequestHeaderBytes = 64;
  const std::size_t limit = std::size_t{4} * xcb_get_maximum_request_length(server_->get());
  if (bytes.size() + kRequestHeaderBytes > limit) return false;
  xcb_atom_t type = request.target;
  if (name == kAnyText) type = atoms_.of(kUtf8String);
  xcb_change_property(server_->get(), XCB_PROP_MODE_REPLACE, request.requestor, property, type, 8,
                      static_cast<std::uint32_t>(bytes.size()), bytes.data());
  return true;
}

/// What we hold ourselves is not read through the server.
void X11Clipboard::read(OnContent onContent) {
  reader_.reset();
  writers_.clear();
  if (isOwner_) return onContent(content_);
  onContent_ = std::move(onContent);
  selection_ = std::make_unique<X11SelectionReader>(*server_, atoms_, clipboard_);
  selection_->read(targets_, [this](const std::string& atoms) { readTypes(atoms); });
}

void X11Clipboard::readTypes(std::string_view atoms) {
  reader_ = std::make_unique<ContentReader>(
      atoms_.names(atoms),
      [this](const std::string& type, const ContentReader::OnPipe& onPipe) {
        openPipe(type, onPipe);
      },
      std::chrono::milliseconds(0), loop_);
  if (onContent_) reader_->start(std::exchange(onContent_, nullptr));
}

void X11Clipboard::openPipe(const std::string& type, const ContentReader::OnPipe& onPipe) {
  selection_->read(atoms_.of(type), [this, onPipe](std::string bytes) {
    auto pipe = Pipe::open();
    if (!pipe) return onPipe({});
    writers_.remove_if([](const PipeWriter& writer) { return writer.isDone(); });
    writers_.emplace_back(std::move(pipe->writeEnd), std::move(bytes), loop_, [](bool) {});
    onPipe(std::move(pipe->readEnd));
  });
}

ClipboardContent X11Clipboard::stopReading() {
  onContent_ = nullptr;
  return reader_ ? reader_->stop() : ClipboardContent();
}

}  // namespace voxtrel::quillback
