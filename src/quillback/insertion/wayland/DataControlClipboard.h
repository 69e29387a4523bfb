#pragma once

#include <list>
#include <memory>
#include <string>

#include "quillback/insertion/wayland/Compositor.h"
#include "quillback/insertion/wayland/PipeWriter.h"

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace voxtrel::quillback {

/// The clipboard of a compositor with data-control: no window and no focus is needed. Its text lives
/// here, until another program copies something.
/// Thread: the loop's.  Borrows: Compositor, Loop (must outlive this).
/// Fails by: null from `open`.
class DataControlClipboard {
 public:
  [[nodiscard]] static std::unique_ptr<DataControlClipboard> open(Compositor& compositor,
                                                                  Loop& loop);
  DataControlClipboard(const DataControlClipboard&) = delete;
  DataControlClipboard& operator=(const DataControlClipboard&) = delete;
  ~DataControlClipboard();

  void put(const std::string& text);

 private:
  struct Callbacks;

  DataControlClipboard(Compositor& compositor, Loop& loop, zwlr_data_control_manager_v1* manager);
  void dropSource();

  Compositor& compositor_;
  Loop& loop_;
  zwlr_data_control_manager_v1* manager_;
  zwlr_data_control_device_v1* device_;
  zwlr_data_control_source_v1* source_ = nullptr;  // of our text, while it is the clipboard's
  std::string text_;
  std::list<PipeWriter> writers_;
};

}  // namespace voxtrel::quillback
