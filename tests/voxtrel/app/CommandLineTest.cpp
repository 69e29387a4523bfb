#include <gtest/gtest.h>

#include <vector>

#include "voxtrel/app/CommandLine.h"

namespace voxtrel {
namespace {

using Request = CommandLine::Request;

CommandLine parse(const std::vector<const char*>& arguments) {
  return parseCommandLine(arguments);
}

TEST(CommandLine, RunsTheApplicationWithoutArguments) {
  EXPECT_EQ(parse({}).request, Request::run);
}

TEST(CommandLine, PrintsTheVersionAndTheHelp) {
  EXPECT_EQ(parse({"--version"}).request, Request::printAndExit);
  EXPECT_EQ(parse({"--version"}).text, "voxtrel " + applicationVersion() + "\n");
  EXPECT_EQ(parse({"--help"}).request, Request::printAndExit);
  EXPECT_NE(parse({"--help"}).text.find("--version"), std::string::npos);
}

TEST(CommandLine, RefusesWhatItDoesNotKnowAndNamesIt) {
  for (const char* argument : {"--verbose", "-h", "run", ""}) {
    const CommandLine commandLine = parse({argument});
    EXPECT_EQ(commandLine.request, Request::usageError) << argument;
    EXPECT_NE(commandLine.text.find('"' + std::string(argument) + '"'), std::string::npos);
  }
}

}  // namespace
}  // namespace voxtrel
