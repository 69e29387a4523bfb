#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quillback/model/commands/ModelCommands.h"

namespace voxtrel::quillback {

/// One model in the table of `quillback models`.
struct ModelRow {
  std::string name;
  std::uint64_t sizeBytes = 0;
  std::string languages = {};  ///< empty: unknown
  std::optional<std::uint64_t> memoryBytes = {};
  std::optional<double> seconds = {};  ///< for five seconds of speech on this machine
  std::string licence = {};            ///< to be named; empty: none
  bool isHere = false;
  bool isInUse = false;
  bool isAdvised = false;
  bool isCustom = false;
};

/// The known models and those that the user brought. `timeFactor`: see ModelContext::measureSpeed.
std::vector<ModelRow> modelRows(const ModelContext& context, std::optional<double> timeFactor);

/// The table for people, one text for each line.
std::vector<std::string> formatTable(const std::vector<ModelRow>& rows);

/// `quillback models`: prints the table, or one line of JSON. Returns the exit status, which is 0.
int listModels(const ModelContext& context, bool isJson, Output& output);

}  // namespace voxtrel::quillback
