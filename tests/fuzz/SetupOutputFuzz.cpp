// Any bytes as the setup's output: nothing breaks, and the figures are those in the line.

#include <string>
#include <string_view>

#include "common/base/Lines.h"
#include "fuzz/FuzzEntry.h"
#include "voxtrel/download/SetupOutput.h"

using namespace voxtrel;

namespace {

void requireWellFormed(std::string_view line, const SetupProgress& progress) {
  require(progress.fraction >= 0.0 && progress.fraction <= 1.0, "a fraction is one");
  for (const std::string& amount : {progress.downloadedMB, progress.totalMB}) {
    require(amount.size() > 3 && amount.ends_with(" MB"), "an amount has its unit");
    require(line.find(amount.substr(0, amount.size() - 3)) != std::string_view::npos,
            "an amount is copied from the line");
  }
  require(line.find("%)") != std::string_view::npos, "there is no progress without a percentage");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  forEachLine(text, [](std::string_view line) {
    const auto progress = parseProgress(line);
    if (progress) requireWellFormed(line, *progress);
    require(isLogged(line) == (line.find("MB /") == std::string_view::npos), "the log's rule");
    const std::string certain = "5 MB / 10 MB (50%)";
    const auto first = parseProgress(certain + std::string(line));
    require(first == SetupProgress{"5 MB", "10 MB", 0.5}, "the first figures count");
    const auto later = parseProgress(std::string(line) + " " + certain);
    if (progress) require(later == progress, "later figures do not count");
  });
  return 0;
}
