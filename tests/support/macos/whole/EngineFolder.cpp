#include "support/macos/whole/EngineFolder.h"

#include <system_error>

#include "support/scripted_engine/ControlSocket.h"

namespace voxtrel::testing {
namespace {

constexpr std::string_view kDone = "ok ";

std::string prefixOf(const std::filesystem::path& engine, EngineFolder::Mode mode) {
  return engine.string() + (mode == EngineFolder::Mode::setup ? ".setup" : "");
}

}  // namespace

EngineFolder::EngineFolder() {
  std::filesystem::create_directory(path());
  std::filesystem::copy_file(SCRIPTED_ENGINE, engine());
}

void EngineFolder::provideWeights() const {
  home_.write(".local/share/quillback/weights/whisper-large-v3/manifest.json", "{}");
}

void EngineFolder::scriptSetup(std::string_view commands) const {
  folder_.write("Voxtrel.app/quillback.setup.script", commands);
}

std::optional<int> EngineFolder::tell(const std::string& command, Mode mode) const {
  try {
    const std::string reply =
        scripted::ControlSocket::ask(prefixOf(engine(), mode) + ".control", command);
    return reply.starts_with(kDone) ? std::stoi(reply.substr(kDone.size())) : 0;
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace voxtrel::testing
