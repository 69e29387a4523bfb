#include "quillback/model/SetupExit.h"

#include <array>
#include <cerrno>
#include <system_error>

namespace voxtrel::quillback {

namespace {

constexpr std::array<SetupExitMeaning, 9> kExits = {{
    {SetupExit::done, "the model is ready"},
    {SetupExit::usage, "unknown model, or a wrong address in QUILLBACK_MODEL_URL"},
    {SetupExit::network, "the server could not be reached, or the connection failed"},
    {SetupExit::http, "the server answered, but not with the file"},
    {SetupExit::noSpace, "not enough free space"},
    {SetupExit::unwritable, "the store could not be written"},
    {SetupExit::wrongFile, "what was downloaded is not the expected file"},
    {SetupExit::locked, "the store could not be locked"},
    {SetupExit::interrupted, "interrupted by a signal; what has arrived is kept"},
}};

}  // namespace

std::span<const SetupExitMeaning> setupExits() {
  return kExits;
}

SetupFailure writeFailure(int error, const std::string& folder) {
  // A quota and a limit on a file's length are ways of being full, too.
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) {
    return {SetupExit::noSpace, "Setup failed: the disk is full. Make room in " + folder +
                                    " and run setup again; what has arrived is kept."};
  }
  return {SetupExit::unwritable, "Setup failed: the store in " + folder + " cannot be written (" +
                                     std::generic_category().message(error) +
                                     "). Check its permissions and run setup again."};
}

SetupFailure interruption() {
  return {SetupExit::interrupted,
          "Setup was interrupted. Run it again to go on from what has arrived."};
}

}  // namespace voxtrel::quillback
