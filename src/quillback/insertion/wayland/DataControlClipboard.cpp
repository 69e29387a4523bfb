#include "quillback/insertion/wayland/DataControlClipboard.h"

#include <array>
#include <utility>

#include "wlr-data-control-v1-client.h"

namespace voxtrel::quillback {
namespace {

/// What programs ask for, old X11 ones too.
constexpr std::array kTextTypes{"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING",
                                "TEXT"};

}  // namespace

/// What the compositor calls.
struct DataControlClipboard::Callbacks {
  using Device = zwlr_data_control_device_v1;
  using Offer = zwlr_data_control_offer_v1;
  using Source = zwlr_data_control_source_v1;

  // What others copy is not read.
  static void offered(void* /*data*/, Device* /*device*/, Offer* /*offer*/) {}
  static void selected(void* /*data*/, Device* /*device*/, Offer* offer) {
    if (offer != nullptr) zwlr_data_control_offer_v1_destroy(offer);
  }
  static void finished(void* /*data*/, Device* /*device*/) {}

  static void send(void* data, Source* /*source*/, const char* /*type*/, int pipe) {
    auto* const self = static_cast<DataControlClipboard*>(data);
    self->writers_.remove_if([](const PipeWriter& writer) { return writer.isDone(); });
    self->writers_.emplace_back(FileDescriptor(pipe), self->text_, self->loop_);
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
      Callbacks::offered, Callbacks::selected, Callbacks::finished, Callbacks::selected};
  zwlr_data_control_device_v1_add_listener(device_, &kListener, this);
  compositor_.flush();
}

DataControlClipboard::~DataControlClipboard() {
  dropSource();
  zwlr_data_control_device_v1_destroy(device_);
  zwlr_data_control_manager_v1_destroy(manager_);
  compositor_.flush();
}

void DataControlClipboard::dropSource() {
  if (auto* const source = std::exchange(source_, nullptr)) {
    zwlr_data_control_source_v1_destroy(source);
  }
  text_.clear();
}

void DataControlClipboard::put(const std::string& text) {
  static constexpr zwlr_data_control_source_v1_listener kListener{Callbacks::send,
                                                                  Callbacks::cancelled};
  // The old one is destroyed last, so that the clipboard is never empty in between.
  auto* const before =
      std::exchange(source_, zwlr_data_control_manager_v1_create_data_source(manager_));
  text_ = text;
  zwlr_data_control_source_v1_add_listener(source_, &kListener, this);
  for (const char* type : kTextTypes) zwlr_data_control_source_v1_offer(source_, type);
  zwlr_data_control_device_v1_set_selection(device_, source_);
  if (before != nullptr) zwlr_data_control_source_v1_destroy(before);
  compositor_.flush();
}

}  // namespace voxtrel::quillback
