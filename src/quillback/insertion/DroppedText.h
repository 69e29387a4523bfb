#pragma once

#include "quillback/ports/TextSink.h"

namespace voxtrel::quillback {

/// The words go nowhere but to the output.
/// Thread: the loop's.
class DroppedText final : public TextSink {
 public:
  void insert(const std::string& /*text*/) override {}
};

}  // namespace voxtrel::quillback
