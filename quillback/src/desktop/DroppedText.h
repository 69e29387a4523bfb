#pragma once

#include "ports/TextSink.h"

namespace quillback {

/// The words go nowhere but to the output.
/// Thread: the loop's.
class DroppedText final : public TextSink {
 public:
  void insert(const std::string& /*text*/) override {}
};

}  // namespace quillback
