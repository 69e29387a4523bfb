#include "quillback/insertion/wayland/DataControlClipboard.h"

#include <algorithm>
#include <utility>

#include "common/posix/Pipe.h"
#include "wlr-data-control-v1-client.h"

namespace voxtrel::quillback {

/// What the compositor calls.
struct DataControlClipboard::Callbacks {
  using Device = zwlr_data_control_device_v1;
  using Source = zwlr_data_control_source_v1;

  static void offered(void* data, Device* /*device*/, Offer* offer) {
    static constexpr zwlr_data_control_offer_v1_listener kListener{typed};
    static_cast<DataControlClipboard*>(data)->offers_[offer];
    zwlr_data_control_offer_v1_add_listener(offer, &kListener, data);
  }
  static void typed(void* data, Offer* offer, const char* type) {
    static_cast<DataControlClipboard*>(data)->offers_[offer].emplace_back(type);
  }
  static void selected(void* data, Device* /*device*/, Offer* offer) {
    auto* const self = static_cast<DataControlClipboard*>(data);
    self->dropOffer(std::exchange(self->current_, offer));
  }
  static void selectedPrimary(void* data, Device* /*device*/, Offer* offer) {
    static_cast<DataControlClipboard*>(data)->dropOffer(offer);
  }
  static void finished(void* /*data*/, Device* /*device*/) {}

  static void send(void* data, Source* source, const char* type, int pipe) {
    auto* const self = static_cast<DataControlClipboard*>(data);
    FileDescriptor end(pipe);
    if (source == self->source_) self->send(type, std::move(end));
  }
  static void cancelled(void* data, Source* source) {
    auto* const self = static_cast<DataControlClipboard*>(data);
    if (source == self->source_) self->dropSource();
  }
};

std::unique_ptr<DataControlClipboard> DataControlClipboard::open(Compositor& compositor,
                                                                 Loop& loop) {
  if (compositor.seat() == nullptr) return nullptr;
  auto* const manager =
      compositor.bind<zwlr_data_control_manager_v1>(zwlr_data_control_manager_v1_interface, 2);
  if (manager == nullptr) return nullptr;
  return std::unique_ptr<DataControlClipboard>(new DataControlClipboard(compositor, loop, manager));
}

DataControlClipboard::DataControlClipboard(Compositor& compositor, Loop& loop,
                                           zwlr_data_control_manager_v1* manager)
    : compositor_(compositor),
      loop_(loop),
      manager_(manager),
      device_(zwlr_data_control_manager_v1_get_data_device(manager, compositor.seat())) {
  static constexpr zwlr_data_control_device_v1_listener kListener{
      Callbacks::offered, Callbacks::selected, Callbacks::finished, Callbacks::selectedPrimary};
  zwlr_data_control_device_v1_add_listener(device_, &kListener, this);
  compositor_.flush();
}

DataControlClipboard::~DataControlClipboard() {
  dropSource();
  while (!offers_.empty()) dropOffer(offers_.begin()->first);
  zwlr_data_control_device_v1_destroy(device_);
  zwlr_data_control_manager_v1_destroy(manager_);
  compositor_.flush();
}

void DataControlClipboard::dropSource() {
  if (auto* const source = std::exchange(source_, nullptr)) {
    zwlr_data_control_source_v1_destroy(source);
  }
  content_.clear();
  onRead_ = nullptr;
}

void DataControlClipboard::dropOffer(Offer* offer) {
  if (offer == nullptr || offers_.erase(offer) == 0) return;
  if (offer == current_) current_ = nullptr;
  zwlr_data_control_offer_v1_destroy(offer);
}

void DataControlClipboard::offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) {
  content_ = std::move(content);
  onRead_ = std::move(onRead);
  setSource(content_.empty() ? nullptr : zwlr_data_control_manager_v1_create_data_source(manager_));
  compositor_.sync([onOffered = std::move(onOffered)] {
    if (onOffered) onOffered(true);
  });
}

void DataControlClipboard::setSource(zwlr_data_control_source_v1* source) {
  static constexpr zwlr_data_control_source_v1_listener kListener{Callbacks::send,
                                                                  Callbacks::cancelled};
  if (source != nullptr) {
    zwlr_data_control_source_v1_add_listener(source, &kListener, this);
    for (const auto& entry : content_) {
      zwlr_data_control_source_v1_offer(source, entry.first.c_str());
    }
  }
  zwlr_data_control_device_v1_set_selection(device_, source);
  // The old one is destroyed last, so that the clipboard is never empty in between.
  auto* const before = std::exchange(source_, source);
  if (before != nullptr) zwlr_data_control_source_v1_destroy(before);
}

void DataControlClipboard::send(const std::string& type, FileDescriptor pipe) {
  const auto entry = std::ranges::find(content_, type, &ClipboardContent::value_type::first);
  if (entry == content_.end()) return;
  writers_.remove_if([](const PipeWriter& writer) { return writer.isDone(); });
  writers_.emplace_back(std::move(pipe), entry->second, loop_,
                        [type, begun = loop_.now(), onRead = onRead_](bool isWhole) {
                          if (isWhole && onRead) onRead(type, begun);
                        });
}

/// What we hold ourselves is not read through the compositor.
void DataControlClipboard::read(OnContent onContent) {
  reader_.reset();
  if (source_ != nullptr || current_ == nullptr) return onContent(content_);
  reader_ = std::make_unique<ContentReader>(
      offers_[current_],
      [this](const std::string& type, const ContentReader::OnPipe& onPipe) {
        onPipe(receive(type));
      },
      std::chrono::milliseconds(0), loop_);
  reader_->start(std::move(onContent));
}

FileDescriptor DataControlClipboard::receive(const std::string& type) {
  auto pipe = Pipe::open();
  if (!pipe || current_ == nullptr) return {};
  zwlr_data_control_offer_v1_receive(current_, type.c_str(), pipe->writeEnd.get());
  compositor_.flush();
  return std::move(pipe->readEnd);
}

ClipboardContent DataControlClipboard::stopReading() {
  return reader_ ? reader_->stop() : ClipboardContent();
}

}  // namespace voxtrel::quillback
