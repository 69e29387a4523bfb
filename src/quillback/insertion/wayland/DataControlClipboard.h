#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quillback/insertion/paste/ContentReader.h"
#include "quillback/insertion/wayland/Compositor.h"

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace voxtrel::quillback {

/// The clipboard of a compositor with data-control: no window and no focus is needed. Its content lives
/// here, until another program copies something. What others copy is read only when asked for.
/// Thread: the loop's.  Borrows: Compositor, Loop (must outlive this).
/// Fails by: null from `open`.
class DataControlClipboard final : public PasteClipboard {
 public:
  [[nodiscard]] static std::unique_ptr<DataControlClipboard> open(Compositor& compositor,
                                                                  Loop& loop);
  DataControlClipboard(const DataControlClipboard&) = delete;
  DataControlClipboard& operator=(const DataControlClipboard&) = delete;
  ~DataControlClipboard() override;

  void read(OnContent onContent) override;
  ClipboardContent stopReading() override;
  void offer(ClipboardContent content, OnOffered onOffered, OnRead onRead) override;
  bool holdsOffer() const override { return source_ != nullptr; }
  bool seesReads() const override { return true; }
  bool isWatched() const override { return false; }

 private:
  struct Callbacks;
  using Offer = zwlr_data_control_offer_v1;

  DataControlClipboard(Compositor& compositor, Loop& loop, zwlr_data_control_manager_v1* manager);
  void setSource(zwlr_data_control_source_v1* source);
  void dropSource();
  void dropOffer(Offer* offer);
  void send(const std::string& type, FileDescriptor pipe);
  FileDescriptor receive(const std::string& type);

  Compositor& compositor_;
  Loop& loop_;
  zwlr_data_control_manager_v1* manager_;
  zwlr_data_control_device_v1* device_;
  zwlr_data_control_source_v1* source_ = nullptr;  // of our content, while it is the clipboard's
  ClipboardContent content_;
  OnRead onRead_;
  std::map<Offer*, std::vector<std::string>> offers_;  // of others and their types
  Offer* current_ = nullptr;                           // what the clipboard has
  std::unique_ptr<ContentReader> reader_;
  std::list<PipeWriter> writers_;
};

}  // namespace voxtrel::quillback
