#include <gtest/gtest.h>

#include <vector>

#include "quillback/app/CommandLine.h"

namespace voxtrel::quillback {
namespace {

using Command = CommandLine::Command;

tl::expected<CommandLine, std::string> parse(std::vector<const char*> arguments) {
  return parseCommandLine(arguments);
}

TEST(CommandLineTest, KnowsItsCommands) {
  EXPECT_EQ(parse({"run"})->command, Command::run);
  EXPECT_EQ(parse({"retry"})->command, Command::retry);
  EXPECT_EQ(parse({"check"})->command, Command::check);
  EXPECT_FALSE(parse({"check", "x"}));
  EXPECT_EQ(parse({"ask"})->command, Command::ask);
  EXPECT_FALSE(parse({"ask", "x"}));
  for (const char* word : {"press", "release", "toggle"}) {
    const auto key = parse({"key", word});
    ASSERT_TRUE(key);
    EXPECT_EQ(key->command, Command::key);
    EXPECT_EQ(key->argument, word);
  }
  EXPECT_FALSE(parse({"key"}));
  EXPECT_FALSE(parse({"key", "status"}));
  EXPECT_EQ(parse({"--help"})->command, Command::help);
  EXPECT_EQ(parse({"--version"})->command, Command::version);
  const CommandLine setup = parse({"setup", "--model", "large-v3"}).value();
  EXPECT_EQ(setup.command, Command::setup);
  EXPECT_EQ(setup.argument, "large-v3");
  EXPECT_EQ(parse({"setup", "--model=base"})->argument, "base");
  EXPECT_EQ(parse({"setup"})->command, Command::setup);
  EXPECT_EQ(parse({"setup"})->argument, "");
  const CommandLine transcribe = parse({"transcribe", "a b.wav"}).value();
  EXPECT_EQ(transcribe.command, Command::transcribe);
  EXPECT_EQ(transcribe.argument, "a b.wav");
  EXPECT_EQ(parse({"transcribe", "--", "--help"})->argument, "--help");
}

TEST(CommandLineTest, TheRecognisersProcessGetsItsArgumentsAsTheyAreAndIsNotInTheHelp) {
  const CommandLine line = parse({"recognise", "a", "--help", ""}).value();
  EXPECT_EQ(line.command, Command::recognise);
  EXPECT_EQ(line.rest, (std::vector<std::string>{"a", "--help", ""}));
  EXPECT_EQ(helpText().find("recognise "), std::string::npos);
}

TEST(CommandLineTest, SetupTakesAFileAfterTheModel) {
  const std::vector<std::vector<const char*>> ways{{"setup", "--model", "mine", "--file", "a b"},
                                                   {"setup", "--model=mine", "--file=a b"},
                                                   {"setup", "--model=mine", "--file", "a b"}};
  for (const auto& way : ways) {
    const auto line = parse(way);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->argument, "mine");
    EXPECT_EQ(line->file, "a b");
  }
}

TEST(CommandLineTest, KnowsTheCommandsAboutModels) {
  EXPECT_EQ(parse({"models"})->command, Command::models);
  EXPECT_FALSE(parse({"models"})->isJson);
  EXPECT_TRUE(parse({"models", "--json"})->isJson);
  EXPECT_EQ(parse({"use", "base"})->command, Command::use);
  EXPECT_EQ(parse({"use", "base"})->argument, "base");
  EXPECT_EQ(parse({"remove", "base"})->command, Command::remove);
  EXPECT_EQ(parse({"remove", "base"})->argument, "base");
}

TEST(CommandLineTest, SaysWhatIsWrongInOneLine) {
  const std::vector<std::vector<const char*>> mistakes{{},
                                                       {""},
                                                       {"Run"},
                                                       {"run", "now"},
                                                       {"setup", "--modelbase"},
                                                       {"setup", "--file", "a"},
                                                       {"setup", "--model", "a", "--file"},
                                                       {"setup", "--model", "a", "--file="},
                                                       {"models", "--jso"},
                                                       {"models", "--json", "x"},
                                                       {"use"},
                                                       {"use", "a", "b"},
                                                       {"remove"},
                                                       {"setup", "large-v3"},
                                                       {"setup", "--model"},
                                                       {"setup", "--model", "a", "b"},
                                                       {"transcribe"},
                                                       {"transcribe", "a", "b"},
                                                       {"retry", "all"},
                                                       {"--version", "x"},
                                                       {"--nonsense"}};
  for (const auto& arguments : mistakes) {
    const auto line = parse(arguments);
    ASSERT_FALSE(line);
    EXPECT_FALSE(line.error().empty());
    EXPECT_EQ(line.error().find('\n'), std::string::npos);
  }
}

TEST(CommandLineTest, HelpNamesEveryCommand) {
  for (const char* word : {"run", "setup [--model", "models", "use NAME", "remove NAME",
                           "transcribe", "retry", "--help", "--version"}) {
    EXPECT_NE(helpText().find(word), std::string::npos) << word;
  }
}

}  // namespace
}  // namespace voxtrel::quillback
