#include "voxtrel/platform/posix/ChildTest.h"

namespace voxtrel {

StartedChild ChildTest::start(const std::string& executable, const Words& words,
                              const std::string& folder) {
  StartedChild child;
  ChildOptions options;
  options.executable = executable;
  options.arguments = words;
  options.workingDirectory = folder;
  options.onOutput = [record = child.record](std::string_view bytes) { record->addOutput(bytes); };
  options.onExit = [record = child.record](int status) { record->setStatus(status); };
  const auto result = launcher_.start(std::move(options));
  if (result) {
    child.process = *result;
  } else {
    child.failure = result.error();
  }
  return child;
}

StartedChild ChildTest::engine(const Words& commands) {
  Words words{"run"};
  words.insert(words.end(), commands.begin(), commands.end());
  StartedChild child = start(SCRIPTED_ENGINE, words);
  EXPECT_EQ(child.failure, "");
  return child;
}

std::optional<int> ChildTest::statusOf(const Words& commands) {
  const StartedChild child = engine(commands);
  const auto status = child.record->waitForStatus();
  EXPECT_FALSE(child.record->isLate());
  return status;
}

std::string ChildTest::outputOf(const Words& commands) {
  const StartedChild child = engine(commands);
  EXPECT_TRUE(child.record->waitForStatus().has_value());
  EXPECT_FALSE(child.record->isLate());
  return child.record->output();
}

}  // namespace voxtrel
