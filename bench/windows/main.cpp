// A setup run that prints 200,000 lines, in the download window and read by a bare loop.
//   windows-bench bare      reads and drops the child's output; prints the milliseconds
//   windows-bench window    shows it in the window; prints the milliseconds until "Done!" is shown, the
//                           longest gap in which the window did not react, the longest work of its
//                           thread in one go, and the time until every line can be scrolled to
//   windows-bench setup...  the child
// VOXTREL_BENCH_BUFFERED: the child writes 64 KB at a time, not line by line.
#include <QApplication>
#include <string_view>

#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "windows/SetupRuns.h"

int main(int argc, char** argv) {
  const std::string_view mode = argc > 1 ? argv[1] : "";
  if (mode == "setup") return bench::beTheChild();
  if (mode == "bare") return bench::readBare(voxtrel::executablePath());
  const QApplication application(argc, argv);
  return bench::showWindow();
}
