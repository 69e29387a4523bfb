#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillback/insertion/paste/Pipes.h"
#include "quillback/ports/PasteClipboard.h"

namespace voxtrel::quillback {

/// A text as programs ask for it, old X11 ones too.
ClipboardContent textContent(const std::string& text);

/// Reads all types of what another program has copied, one after the other. Text comes first, and is read
/// under one of its names only.
/// Thread: the loop's.  Borrows: Loop (must outlive this).
/// Fails by: leaving out what cannot be read.
class ContentReader {
 public:
  using OnPipe = std::function<void(FileDescriptor pipe)>;
  /// Asks for one type; the pipe may come later, and is not open if the type cannot be had.
  using OpenPipe = std::function<void(const std::string& type, OnPipe onPipe)>;

  /// Nothing is read before `start`. `pause`: between one type and the next.
  ContentReader(const std::vector<std::string>& types, OpenPipe openPipe,
                std::chrono::milliseconds pause, Loop& loop);
  ContentReader(const ContentReader&) = delete;
  ContentReader& operator=(const ContentReader&) = delete;

  /// `onContent` is called once, maybe before this returns, and may destroy this.
  void start(PasteClipboard::OnContent onContent);
  /// What has come so far. The type that is being read is still read to its end, for nothing.
  ClipboardContent stop();
  bool isBusy() const { return isBusy_; }

 private:
  void readNext();
  void readFrom(FileDescriptor pipe);
  void add(std::string bytes);

  std::vector<std::string> types_;  // that are still to be read, the last one first
  std::vector<std::string> texts_;  // the names of the text
  OpenPipe openPipe_;
  std::chrono::milliseconds pause_;
  Loop& loop_;
  PasteClipboard::OnContent onContent_;
  std::string type_;  // that is being read
  bool isBusy_ = false;
  std::unique_ptr<Loop::Timer> timer_;
  std::size_t size_ = 0;
  ClipboardContent content_;
  std::unique_ptr<PipeReader> reader_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace voxtrel::quillback
