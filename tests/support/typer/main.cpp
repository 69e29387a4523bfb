#include <cstdio>
#include <fstream>

#include "quillback/insertion/x11/XTestTyper.h"
#include "support/FakeEnginePorts.h"
#include "support/PollLoop.h"

using namespace voxtrel::quillback;

/// Types the first argument into the window with the focus. Once the keyboard is restored, it writes what
/// was refused, a line for the reason and an empty line into the file named by the second argument.
int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) {
    std::fputs("usage: quillback-typer TEXT REPORT\n", stderr);
    return 2;
  }
  test::PollLoop loop;
  OwnKeys ownKeys(loop);
  test::FakeScreenLock lock;
  std::string report;
  auto typer =
      XTestTyper::open(loop, ownKeys, lock, [&](const std::string& text, const std::string& why) {
        report.append(text).append("\n").append(why);
      });
  if (!typer) {
    std::fputs(typer.error().c_str(), stderr);
    return 1;
  }
  (*typer)->type(arguments[1]);
  constexpr std::chrono::milliseconds kStep{5};
  while (!(*typer)->isIdle()) loop.runFor(kStep);
  typer->reset();
  std::ofstream(arguments[2]) << report << "\n\n";
  return 0;
}
