#include "voxtrel/platform/linux/permissions/EngineCheck.h"

#include <sys/prctl.h>

#include <QFile>
#include <csignal>
#include <utility>

namespace voxtrel {
namespace {

constexpr std::chrono::milliseconds kFirstWait{500};
/// An engine that waits for the desktop's portal takes up to five seconds.
constexpr std::chrono::seconds kTimeout{6};
constexpr int kNotSeen = 1;

/// The first line without "key: no, " and without its full stop.
std::string reasonIn(std::string_view output) {
  constexpr std::string_view kNo = "key: no, ";
  std::string_view line = output.substr(0, output.find('\n'));
  if (line.starts_with(kNo)) line.remove_prefix(kNo.size());
  if (line.ends_with('.')) line.remove_suffix(1);
  return std::string(line);
}

}  // namespace

KeyAnswer keyAnswer(bool hasExited, int status, std::string_view output) {
  if (!hasExited || status != kNotSeen) return {};
  return {.isSeen = false, .reason = reasonIn(output)};
}

EngineCheck::EngineCheck(std::function<std::string()> engine) : engine_(std::move(engine)) {
  process_.setStandardInputFile(QProcess::nullDevice());
  process_.setStandardErrorFile(QProcess::nullDevice());
  process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
  QObject::connect(&process_, &QProcess::finished, &limit_,
                   [this](int status, QProcess::ExitStatus how) {
                     const QByteArray output = process_.readAllStandardOutput();
                     reply(keyAnswer(how == QProcess::NormalExit, status, output.toStdString()));
                   });
  QObject::connect(&process_, &QProcess::errorOccurred, &limit_, [this](auto error) {
    if (error == QProcess::FailedToStart) reply({});
  });
  limit_.setSingleShot(true);
  QObject::connect(&limit_, &QTimer::timeout, &process_, [this] { process_.kill(); });
}

EngineCheck::~EngineCheck() {
  onReply_ = nullptr;
  if (process_.state() == QProcess::NotRunning) return;
  process_.kill();
  process_.waitForFinished();
}

void EngineCheck::ask(std::function<void(const KeyAnswer&)> onReply) {
  onReply_ = std::move(onReply);
  process_.start(QFile::decodeName(engine_().c_str()), {"check"});
  const bool waits = std::exchange(isFirst_, false) && onReply_;
  if (waits) process_.waitForFinished(static_cast<int>(kFirstWait.count()));
  if (process_.state() != QProcess::NotRunning) limit_.start(kTimeout);
}

void EngineCheck::reply(const KeyAnswer& answer) {
  limit_.stop();
  if (const auto onReply = std::exchange(onReply_, nullptr)) onReply(answer);
}

}  // namespace voxtrel
