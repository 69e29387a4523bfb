#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "common/settings/ConfigManager.h"
#include "quillback/model/Manifest.h"
#include "quillback/model/commands/ModelCommands.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {

/// Keeps the lines.
struct KeptLines final : Output {
  void print(std::string_view line) override { lines.emplace_back(line); }
  std::vector<std::string> lines;
};

/// A home folder with a store and settings, for the commands about models.
struct ModelFixture : testing::Test {
  ModelFixture() {
    context.home = home.path().string();
    context.hasWhisper = true;
    context.version = "0.0.1";
  }

  /// Makes a complete model of 7 and 5 bytes.
  void put(const std::string& name, bool isCustom = false) const {
    const std::string hash(64, '0');
    const ModelPin* const pin = pinNamed(context.pins, name);
    const std::string weights = pin != nullptr ? pin->weights.name : "ggml-" + name + ".bin";
    write(name, weights, "weights");
    write(name, voiceDetectionPin().name, "voice");
    write(name, "manifest.json",
          formatManifest({name,
                          "whisper",
                          {{weights, 7, hash}, {voiceDetectionPin().name, 5, hash}},
                          "test",
                          "",
                          isCustom}));
  }
  /// Leaves the window's folder as a setup of the chosen model does.
  void putNote(const std::string& chosen) const {
    write("large-v3", "manifest.json",
          formatManifest({"large-v3", "pocketsphinx", {}, "test", chosen}));
  }
  void write(const std::string& model, const std::string& file, std::string_view bytes) const {
    home.write(".local/share/quillback/weights/whisper-" + model + "/" + file, bytes);
  }
  std::string folder(const std::string& model) const { return config().weightsFolder(model); }
  ConfigManager config() const { return ConfigManager(home.path().string()); }

  ScratchFolder home{};
  ModelContext context;
  KeptLines output;
};

}  // namespace voxtrel::quillback
