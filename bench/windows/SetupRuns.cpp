#include "windows/SetupRuns.h"

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTimer>
#include <cstdlib>
#include <string_view>

#include "overlay/Figures.h"
#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/linux/application/QtMainLoop.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/QtFormWindows.h"
#include "voxtrel/platform/posix/ExecutableFolder.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/PosixScheduling.h"

namespace bench {

namespace {

using namespace voxtrel;

constexpr int kLines = 200'000;
constexpr std::chrono::milliseconds kProbe{5};

struct SelfAsEngine : ApplicationBundle {
  std::optional<std::string> auxiliaryExecutable(std::string_view) const override {
    return executablePath();
  }
};

double threadsMilliseconds() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Measures the longest gap between two ticks of the main loop's timer and the longest time the main
/// thread worked in one. The difference is other programs' work on a busy machine.
class Probe {
 public:
  Probe() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
    timer_.start(kProbe);
  }
  double longestMs() const { return longestMs_; }
  double longestWorkMs() const { return longestWorkMs_; }

 private:
  void tick() {
    longestMs_ = std::max(longestMs_, bench::millisecondsSince(last_));
    last_ = Clock::now();
    const double worked = threadsMilliseconds();
    longestWorkMs_ = std::max(longestWorkMs_, worked - lastWorkedMs_);
    lastWorkedMs_ = worked;
  }

  QTimer timer_;
  Clock::time_point last_ = Clock::now();
  double lastWorkedMs_ = threadsMilliseconds();
  double longestMs_ = 0, longestWorkMs_ = 0;
};

const QTextDocument& logDocument() {
  for (QWidget* const widget : QApplication::allWidgets()) {
    const auto* const log = qobject_cast<QPlainTextEdit*>(widget);
    if (log != nullptr) return *log->document();
  }
  std::abort();
}

}  // namespace

int beTheChild() {
  const bool isBuffered = std::getenv("VOXTREL_BENCH_BUFFERED") != nullptr;
  std::setvbuf(stdout, nullptr, isBuffered ? _IOFBF : _IOLBF, 1U << 16U);
  for (int line = 0; line < kLines; ++line) {
    std::printf("Fetching model-%05d-of-99999.safetensors: part %d\n", line % 100'000, line);
  }
  return EXIT_SUCCESS;
}

int readBare(const std::string& self) {
  int ends[2];
  if (::pipe(ends) != 0) return EXIT_FAILURE;
  const auto start = Clock::now();
  if (::fork() == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::execl(self.c_str(), "quillback", "setup", nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  char buffer[1U << 16U];
  long long bytes = 0;
  for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;) bytes += count;
  ::wait(nullptr);
  std::printf("%.1f\n", bench::millisecondsSince(start));
  if (bytes < kLines) return EXIT_FAILURE;
  return EXIT_SUCCESS;
}

int showWindow() {
  QtMainLoop mainLoop;
  SelfAsEngine engine;
  PosixChildProcessLauncher children;
  ThreadedBackgroundQueue background;
  DesktopColors colors;
  QtFormWindows windows(colors);
  const auto form = ModelDownloadView::create({engine, background, children, mainLoop}, {}, {});
  const auto window = windows.makeWindow({"Voxtrel Setup", 420, 340}, form);
  const auto start = Clock::now();
  window->makeKeyAndOrderFront();
  Probe probe;
  QTimer untilTheEnd;
  double endShownMs = 0;
  QObject::connect(&untilTheEnd, &QTimer::timeout, [&] {
    const QTextDocument& log = logDocument();
    if (log.lastBlock().text() != "Done!") return;
    if (endShownMs == 0) endShownMs = bench::millisecondsSince(start);
    const auto shown = static_cast<std::size_t>(log.blockCount());
    if (shown < form->logLines().size()) return;
    std::printf("%.1f %.1f %.1f %.1f\n", endShownMs, probe.longestMs(), probe.longestWorkMs(),
                bench::millisecondsSince(start));
    QCoreApplication::exit(shown == form->logLines().size() && shown >= kLines + 2 ? 0 : 1);
  });
  untilTheEnd.start(kProbe);
  const int status = QApplication::exec();
  form->setOnChange({});
  return status;
}

}  // namespace bench
