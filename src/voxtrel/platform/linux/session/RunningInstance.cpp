#include "voxtrel/platform/linux/session/RunningInstance.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "voxtrel/platform/Desktop.h"

namespace voxtrel {
namespace {

constexpr std::chrono::milliseconds kReplyLimit{2000};
constexpr std::chrono::seconds kEndLimit{5};
constexpr const char* kInterface = "org.freedesktop.Application";

struct Action {
  StartRequest request;
  const char* name;
};
constexpr std::array<Action, 3> kActions = {{{StartRequest::settings, "settings"},
                                             {StartRequest::restart, "restart"},
                                             {StartRequest::quit, "quit"}}};

bool isRunning() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  return bus.isConnected() && bus.interface()->isServiceRegistered(kBundleIdentifier).value();
}

QVariantMap platformData() {
  const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  if (token.isEmpty()) return {};
  return {{"activation-token", token}};
}

QDBusMessage messageFor(StartRequest request) {
  const auto* const action = std::ranges::find(kActions, request, &Action::request);
  const bool isOpen = action == kActions.end();
  QDBusMessage message = QDBusMessage::createMethodCall(
      kBundleIdentifier, kInstancePath, kInterface, isOpen ? "Activate" : "ActivateAction");
  message.setAutoStartService(false);
  if (!isOpen) message << QString(action->name) << QVariantList();
  message << platformData();
  return message;
}

void waitForEnd() {
  QEventLoop loop;
  QDBusServiceWatcher watcher(kBundleIdentifier, QDBusConnection::sessionBus(),
                              QDBusServiceWatcher::WatchForUnregistration);
  QObject::connect(&watcher, &QDBusServiceWatcher::serviceUnregistered, &loop, &QEventLoop::quit);
  QTimer::singleShot(kEndLimit, &loop, &QEventLoop::quit);
  if (isRunning()) loop.exec();
}

}  // namespace

std::optional<StartRequest> requestOf(const QString& action) {
  const auto* const found = std::ranges::find_if(
      kActions, [&](const Action& each) { return action == QLatin1String(each.name); });
  if (found == kActions.end()) return std::nullopt;
  return found->request;
}

bool passOn(StartRequest request) {
  // Blocks, because a message still being sent would be lost with this process.
  const QDBusMessage reply = QDBusConnection::sessionBus().call(
      messageFor(request), QDBus::Block, static_cast<int>(kReplyLimit.count()));
  return reply.type() == QDBusMessage::ReplyMessage;
}

int passOnAndReport(StartRequest request, int& argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (!isRunning()) {
    std::fputs("voxtrel: it is not running in this session\n", stderr);
    return EXIT_FAILURE;
  }
  if (!passOn(request)) {
    std::fputs("voxtrel: it is running but does not reply\n", stderr);
    return EXIT_FAILURE;
  }
  if (request == StartRequest::quit) waitForEnd();
  return EXIT_SUCCESS;
}

}  // namespace voxtrel
