#pragma once

namespace voxtrel::quillback {

/// Opens /dev/null in place of standard input, output and error where they were handed down closed;
/// else the next file to be opened would take their numbers and get what is meant for them.
void keepStandardDescriptorsOpen();

}  // namespace voxtrel::quillback
