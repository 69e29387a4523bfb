#include "quillback/model/ChosenModel.h"

#include <optional>

#include "quillback/model/ModelStore.h"

namespace voxtrel::quillback {

namespace {

enum class NoteStep { none, write, remove };

/// What brings the manifest of the window's model up to date.
NoteStep nextStep(const std::string& home, const std::string& chosen) {
  const std::string window(kWindowModel);
  if (inspectStore(home, window)) return NoteStep::none;
  const std::optional<Manifest> manifest = readManifest(home, window);
  const std::string noted = manifest ? manifest->chosen : "";
  const bool isOther = !chosen.empty() && chosen != window;
  if (isOther && inspectStore(home, chosen)) {
    return noted == chosen ? NoteStep::none : NoteStep::write;
  }
  return noted.empty() ? NoteStep::none : NoteStep::remove;
}

}  // namespace

SetupResult noteChosen(const std::string& home, const std::string& chosen,
                       const std::string& writtenBy,
                       const std::function<SetupResult(ModelFolder& folder)>& lock) {
  if (nextStep(home, chosen) == NoteStep::none) return {};
  const std::string window(kWindowModel);
  ModelFolder folder(home, window);
  if (auto locked = lock(folder); !locked) return locked;
  // A setup that had the lock may have changed what is there.
  switch (nextStep(home, chosen)) {
    case NoteStep::write:
      return folder.writeManifest({window, std::string(kPocketSphinx), {}, writtenBy, chosen});
    case NoteStep::remove:
      return folder.removeManifest();
    case NoteStep::none:
      break;
  }
  return {};
}

}  // namespace voxtrel::quillback
