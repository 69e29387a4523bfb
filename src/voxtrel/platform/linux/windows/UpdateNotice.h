#pragma once

#include <string>
#include <utility>

#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/linux/windows/NoticeBox.h"

namespace voxtrel {

/// Tells the user which version this is: a build that has no feed of newer ones.
/// Thread: the main thread.  Owns: the box.
class UpdateNotice final : public Updater {
 public:
  explicit UpdateNotice(std::string version) : version_(std::move(version)) {}

  void checkForUpdates() override {
    box_.show("Voxtrel Updates", QString::fromStdString("Voxtrel " + version_),
              "This build has no update feed.");
  }

 private:
  std::string version_;
  NoticeBox box_;
};

}  // namespace voxtrel
