#include <gtest/gtest.h>

#include <map>

#include "quillback/recognition/whisper/ProcessorModules.h"
#include "support/ScratchFolder.h"

namespace voxtrel::quillback {
namespace {

namespace fs = std::filesystem;

TEST(ProcessorModules, OnlyModulesForProcessorsAreFound) {
  const ScratchFolder folder;
  for (const char* name : {"libggml-cpu-b.so", "libggml-cpu-a.so", "libggml-vulkan.so",
                           "libggml-base.so", "libggml-cpu-c.so.1", "notes"}) {
    folder.write(name, "");
  }
  EXPECT_EQ(processorModules(folder.path()),
            (std::vector<fs::path>{folder.path() / "libggml-cpu-a.so",
                                   folder.path() / "libggml-cpu-b.so"}));
  EXPECT_TRUE(processorModules(folder.path() / "absent").empty());
}

TEST(ProcessorModules, TheBestIsFirstAndOneThatCannotRunIsNeverTaken) {
  const std::map<fs::path, int> scores{{"a", 5}, {"b", 0}, {"c", 64}, {"d", 5}};
  std::vector<fs::path> modules;
  for (const auto& [module, points] : scores) modules.push_back(module);
  const auto best = [&](int skipped) {
    return bestModule(modules, skipped, [&](const fs::path& module) { return scores.at(module); });
  };
  EXPECT_EQ(best(0), "c");
  EXPECT_EQ(best(1), "a");
  EXPECT_EQ(best(2), "d");
  EXPECT_EQ(best(3), "");
}

}  // namespace
}  // namespace voxtrel::quillback
