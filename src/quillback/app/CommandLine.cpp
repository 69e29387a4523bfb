#include "quillback/app/CommandLine.h"

#include <string_view>

namespace voxtrel::quillback {
namespace {

using Command = CommandLine::Command;
using Words = std::span<const std::string_view>;
using Parsed = tl::expected<CommandLine, std::string>;

std::string quoted(std::string_view word) {
  return std::string("\"").append(word).append("\"");
}

Parsed withoutArguments(Command command, std::string_view name, Words rest) {
  if (rest.empty()) return CommandLine{command, ""};
  return tl::unexpected(quoted(name).append(" takes no argument"));
}

/// Takes "--name VALUE" or "--name=VALUE" off the front of `rest`; false if something else is there.
bool takeOption(Words& rest, std::string_view name, std::string& value) {
  if (rest.empty() || !rest[0].starts_with(name)) return false;
  const std::string_view tail = rest[0].substr(name.size());
  if (tail.empty() && rest.size() < 2) return false;
  if (!tail.empty() && tail[0] != '=') return false;
  value = tail.empty() ? rest[1] : tail.substr(1);
  rest = rest.subspan(tail.empty() ? 2 : 1);
  return true;
}

Parsed setup(Words rest) {
  CommandLine line{Command::setup, ""};
  if (rest.empty()) return line;
  const bool hasModel = takeOption(rest, "--model", line.argument);
  const bool hasFile = hasModel && takeOption(rest, "--file", line.file);
  if (hasModel && rest.empty() && (!hasFile || !line.file.empty())) return line;
  return tl::make_unexpected(R"("setup" takes "--model NAME", and "--file PATH" after it)");
}

Parsed models(Words rest) {
  CommandLine line{Command::models, ""};
  line.isJson = rest.size() == 1 && rest[0] == "--json";
  if (rest.empty() || line.isJson) return line;
  return tl::make_unexpected(R"("models" takes nothing but "--json")");
}

Parsed withModel(Command command, std::string_view name, Words rest) {
  if (rest.size() == 1) return CommandLine{command, std::string(rest[0])};
  return tl::unexpected(quoted(name).append(" takes the name of one model"));
}

Parsed transcribe(Words rest) {
  if (!rest.empty() && rest[0] == "--") rest = rest.subspan(1);
  if (rest.size() == 1) return CommandLine{Command::transcribe, std::string(rest[0])};
  return tl::make_unexpected("\"transcribe\" takes one file");
}

Parsed key(Words rest) {
  const bool isKnown =
      rest.size() == 1 && (rest[0] == "press" || rest[0] == "release" || rest[0] == "toggle");
  if (isKnown) return CommandLine{Command::key, std::string(rest[0])};
  return tl::make_unexpected(R"("key" takes "press", "release" or "toggle")");
}

CommandLine withAnything(Command command, Words rest) {
  CommandLine line{command, ""};
  line.rest.assign(rest.begin(), rest.end());
  return line;
}

}  // namespace

std::string engineVersion() {
  return QUILLBACK_VERSION;
}

std::string helpText() {
  return "Usage: quillback run\n"
         "       quillback setup [--model NAME | --model advised | --model NAME --file PATH]\n"
         "       quillback models [--json]\n"
         "       quillback use NAME | remove NAME\n"
         "       quillback transcribe FILE.wav\n"
         "       quillback retry\n"
         "       quillback check\n"
         "       quillback key press | release | toggle\n"
         "       quillback ask\n"
         "       quillback --help | --version\n"
         "Turns speech into text: hold a key, speak, and the words are typed.\n"
         "\n"
         "  run         wait for the key and type what is said while it is held\n"
         "  setup       download a speech model and verify it: the one of the settings, or NAME\n"
         "  models      list the models: size, languages, time, which are here\n"
         "  use         choose a model in the settings\n"
         "  remove      remove a model's files\n"
         "  transcribe  print the words in a WAV file\n"
         "  retry       print the words of recordings whose words got lost\n"
         "  check       say whether the key can be seen here, and how words are inserted\n"
         "  key         be the key, for desktops whose settings run a program at a key\n"
         "  ask         after a refusal, have the desktop ask again whether words may be pasted\n"
         "\n"
         "The settings are in ~/.config/quillback/config.toml:\n"
         "  [model]   whisper_model = \"large-v3\", language = \"auto\", translate = false\n"
         "            prompt = \"...\", words = [\"Joanis\", \"CNRC\"], threads = 4\n"
         "  [audio]   hotkey = 'right_cmd' (the right Super key), or hotkey_code = 54\n"
         "  [engine]  model = \"base\" (instead of whisper_model), unload_after = 600 (seconds)\n"
         "  [output]  insert = \"type\", \"clipboard\" or \"none\"\n"
         "            paste = \"ctrl+v\", \"ctrl+shift+v\" (terminals) or \"shift+insert\"\n"
         "            replace = { \"new line\" = \"\\n\", \"full stop\" = \".\" }\n"
         "Escape drops the recording while the key is held.\n";
}

tl::expected<CommandLine, std::string> parseCommandLine(std::span<const char* const> arguments) {
  const std::vector<std::string_view> words(arguments.begin(), arguments.end());
  if (words.empty()) return tl::make_unexpected("no command");
  const Words rest = Words(words).subspan(1);
  if (words[0] == "run") return withoutArguments(Command::run, words[0], rest);
  if (words[0] == "setup") return setup(rest);
  if (words[0] == "models") return models(rest);
  if (words[0] == "use") return withModel(Command::use, words[0], rest);
  if (words[0] == "remove") return withModel(Command::remove, words[0], rest);
  if (words[0] == "transcribe") return transcribe(rest);
  if (words[0] == "retry") return withoutArguments(Command::retry, words[0], rest);
  if (words[0] == "check") return withoutArguments(Command::check, words[0], rest);
  if (words[0] == "key") return key(rest);
  if (words[0] == "ask") return withoutArguments(Command::ask, words[0], rest);
  if (words[0] == "recognise") return withAnything(Command::recognise, rest);
  if (words[0] == "advise") return withoutArguments(Command::advise, words[0], rest);
  if (words[0] == "microphone") return withAnything(Command::microphone, rest);
  if (words[0] == "--help" || words[0] == "-h")
    return withoutArguments(Command::help, words[0], rest);
  if (words[0] == "--version") return withoutArguments(Command::version, words[0], rest);
  return tl::unexpected("unknown command " + quoted(words[0]));
}

}  // namespace voxtrel::quillback
