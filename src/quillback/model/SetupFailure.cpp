#include "quillback/model/SetupFailure.h"

#include <cerrno>

namespace voxtrel::quillback {

SetupFailure fileFailure(std::error_code error, const std::string& folder, bool isKept) {
  switch (error.value()) {
    case ECANCELED:
      return interruption(isKept);
    case ENOSPC:
    case EDQUOT:  // the user's quota is used up
    case EFBIG:   // the limit on a file's size is reached
      return {SetupExit::noSpace, "Setup failed: the disk is full. Make room in " + folder +
                                      " and run setup again" +
                                      (isKept ? "; what has arrived is kept." : ".")};
    default:
      return {SetupExit::unwritable, "Setup failed: the store in " + folder +
                                         " cannot be written (" + error.message() +
                                         "). Check its permissions and run setup again."};
  }
}

SetupFailure interruption(bool isKept) {
  return {SetupExit::interrupted,
          isKept ? "Setup was interrupted. Run it again to continue; what has arrived is kept."
                 : "Setup was interrupted. Run it again to download the file."};
}

}  // namespace voxtrel::quillback
