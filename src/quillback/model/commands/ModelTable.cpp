#include "quillback/model/commands/ModelTable.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "quillback/model/ModelStore.h"
#include "quillback/model/ProgressLine.h"

namespace voxtrel::quillback {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kColumns = 6;
constexpr const char* kUnknown = "-";
using Cells = std::array<std::string, kColumns>;

Cells headings() {
  return {"Name", "Size", "Memory", "5 s of speech", "Languages", ""};
}

/// Numbers stand at the right of their column.
constexpr std::array<bool, kColumns> kIsNumber = {false, true, true, true, false, false};

ModelRow rowOf(const ModelPin& pin, std::optional<double> timeFactor) {
  ModelRow row{pin.model, pin.weights.sizeBytes, std::string(describe(pin.languages)),
               pin.memoryBytes};
  if (timeFactor) row.seconds = expectedSeconds(pin, *timeFactor);
  row.licence = pin.licence;
  return row;
}

std::string marksOf(const ModelRow& row) {
  std::string marks;
  const auto add = [&marks](bool isSet, const char* mark) {
    if (isSet) marks += (marks.empty() ? "" : ", ") + std::string(mark);
  };
  add(row.isHere, "here");
  add(row.isInUse, "in use");
  add(row.isAdvised, "advised");
  add(row.isCustom, "your own");
  return marks;
}

Cells cellsOf(const ModelRow& row) {
  return {row.name,
          formatMegabytes(row.sizeBytes),
          row.memoryBytes ? formatMegabytes(*row.memoryBytes) : kUnknown,
          row.seconds ? secondsText(*row.seconds) : kUnknown,
          row.languages.empty() ? kUnknown : row.languages,
          marksOf(row)};
}

std::string lineOf(const Cells& cells, const std::array<std::size_t, kColumns>& widths) {
  std::string line;
  for (std::size_t i = 0; i < kColumns; ++i) {
    const std::string blanks(widths.at(i) - cells.at(i).size(), ' ');
    line += kIsNumber.at(i) ? blanks + cells.at(i) : cells.at(i) + blanks;
    line += "  ";
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

Json jsonOf(const ModelRow& row) {
  const auto orNull = [](const auto& value) { return value ? Json(*value) : Json(); };
  return {{"name", row.name},
          {"size", row.sizeBytes},
          {"languages", row.languages.empty() ? Json() : Json(row.languages)},
          {"memory", orNull(row.memoryBytes)},
          {"seconds_for_5_s_of_speech", orNull(row.seconds)},
          {"licence", row.licence.empty() ? Json() : Json(row.licence)},
          {"here", row.isHere},
          {"in_use", row.isInUse},
          {"advised", row.isAdvised},
          {"custom", row.isCustom}};
}

void printJson(const ModelContext& context, const std::vector<ModelRow>& rows, Output& output) {
  Json models = Json::array();
  for (const ModelRow& row : rows) models.push_back(jsonOf(row));
  const Json json = {{"whisper", context.hasWhisper},
                     {"runs_on", context.runsOn.empty() ? Json() : Json(context.runsOn)},
                     {"in_use", context.names.inUse()},
                     {"models", models}};
  output.print(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void printTable(const ModelContext& context, const std::vector<ModelRow>& rows, Output& output) {
  if (!context.runsOn.empty()) output.print(context.runsOn);
  for (const std::string& line : formatTable(rows)) output.print(line);
  for (const ModelRow& row : rows) {
    if (!row.licence.empty()) output.print(row.name + ": " + row.licence + ".");
  }
  if (!std::ranges::any_of(rows, &ModelRow::isInUse)) {
    output.print("The settings choose " + context.names.inUse() + ", which is not known.");
  }
  output.print(
      R"("quillback setup --model NAME" fetches a model, "quillback use NAME" chooses it.)");
}

}  // namespace

std::vector<ModelRow> modelRows(const ModelContext& context, std::optional<double> timeFactor) {
  std::vector<ModelRow> rows;
  for (const ModelPin& pin : context.pins) rows.push_back(rowOf(pin, timeFactor));
  for (const std::string& name : customModels(context.home)) {
    if (pinNamed(context.pins, name) != nullptr) continue;
    const auto manifest = readManifest(context.home, name);
    rows.push_back({name, manifest->files.empty() ? 0 : manifest->files.front().sizeBytes});
    rows.back().isCustom = true;
  }
  const ModelPin* const advised = advise(context.pins, timeFactor.value_or(1.0), context.spoken);
  for (ModelRow& row : rows) {
    row.isHere = inspectStore(context.home, row.name).has_value();
    row.isInUse = row.name == context.names.inUse();
    row.isAdvised = advised != nullptr && row.name == advised->model;
  }
  return rows;
}

std::vector<std::string> formatTable(const std::vector<ModelRow>& rows) {
  std::vector<Cells> table{headings()};
  for (const ModelRow& row : rows) table.push_back(cellsOf(row));
  std::array<std::size_t, kColumns> widths{};
  for (const Cells& cells : table) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths.at(i) = std::max(widths.at(i), cells.at(i).size());
    }
  }
  std::vector<std::string> lines;
  lines.reserve(table.size());
  for (const Cells& cells : table) lines.push_back(lineOf(cells, widths));
  return lines;
}

int listModels(const ModelContext& context, bool isJson, Output& output) {
  if (!context.hasWhisper && !isJson) {
    output.print(
        "This build has only its embedded recogniser, PocketSphinx for English; models need a "
        "build "
        "with Whisper.");
    return 0;
  }
  const bool isMeasured = context.hasWhisper && context.measureSpeed;
  const std::optional<double> timeFactor = isMeasured ? context.measureSpeed() : std::nullopt;
  const std::vector<ModelRow> rows =
      context.hasWhisper ? modelRows(context, timeFactor) : std::vector<ModelRow>();
  if (isJson) {
    printJson(context, rows, output);
  } else {
    printTable(context, rows, output);
  }
  return 0;
}

}  // namespace voxtrel::quillback
