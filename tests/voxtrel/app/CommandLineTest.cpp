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

TEST(CommandLine, TakesARequestForTheProgramThatRuns) {
  EXPECT_EQ(parse({}).start, StartRequest::open);
  const std::pair<const char*, StartRequest> rows[] = {{"--settings", StartRequest::settings},
                                                       {"--restart", StartRequest::restart},
                                                       {"--quit", StartRequest::quit}};
  for (const auto& [argument, expected] : rows) {
    EXPECT_EQ(parse({argument}).request, Request::run);
    EXPECT_EQ(parse({argument}).start, expected);
    EXPECT_NE(parse({"--help"}).text.find(argument), std::string::npos);
    EXPECT_EQ(parse({argument, "--verbose"}).request, Request::usageError);
  }
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
