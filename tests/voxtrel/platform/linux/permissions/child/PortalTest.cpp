#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <cstdlib>
#include <memory>
#include <optional>

#include "common/posix/Confinement.h"
#include "support/FakePorts.h"
#include "support/PortalDouble.h"
#include "support/PrivateBus.h"
#include "support/ScratchFolder.h"
#include "voxtrel/platform/linux/application/QtMainLoop.h"
#include "voxtrel/platform/linux/dbus/AsyncCall.h"
#include "voxtrel/platform/linux/permissions/SandboxMicrophoneAccess.h"

namespace voxtrel {
namespace {

using testing::FakeLog;
using testing::PortalDouble;
using testing::PrivateBus;

constexpr const char* kClient = "client";
constexpr const char* kPortal = "portal";
constexpr uint kGranted = 0;

/// A private bus with the application and, if the test wants one, a portal.
struct PortalFixture : ::testing::Test {
  PortalFixture() : portal(std::make_unique<PortalDouble>(bus.connect(kPortal))) {}
  ~PortalFixture() override {
    access.reset();
    portal.reset();
    QDBusConnection::disconnectFromBus(kClient);
    QDBusConnection::disconnectFromBus(kPortal);
  }

  template <typename Condition>
  static bool becomes(Condition condition, int limitMs = 10000) {
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < limitMs) {
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return condition();
  }
  /// Lets messages arrive.
  static void settle() {
    becomes([] { return false; }, 200);
  }

  void ask() {
    access->request([this](bool granted) {
      ++replies;
      isGranted = granted;
    });
    EXPECT_EQ(replies, 0) << "replied before the request returned";
  }
  bool hasReply() {
    return becomes([this] { return replies > 0; });
  }

  static QString tokenIn(const QDBusMessage& call) {
    return qdbus_cast<QVariantMap>(call.arguments().at(2)).value("handle_token").toString();
  }
  static QString handleFor(const QDBusMessage& call) {
    return "/org/freedesktop/portal/desktop/request/" + call.service().mid(1).replace('.', '_') +
           '/' + tokenIn(call);
  }

  int argc = 1;
  char name[5] = "test";
  char* argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  PrivateBus bus;
  QDBusConnection client = bus.connect(kClient);
  std::unique_ptr<PortalDouble> portal;
  ScratchFolder folder;
  QtMainLoop mainLoop;
  FakeLog log;
  std::optional<SandboxMicrophoneAccess> access{std::in_place, mainLoop, log, client,
                                                folder.write("marker", "").string()};
  int replies = 0;
  bool isGranted = false;
};

struct MicrophonePortalFixture : PortalFixture {};

TEST_F(MicrophonePortalFixture, outsideASandboxItIsNotAskedAndAccessIsGranted) {
  access.emplace(mainLoop, log, client, (folder.path() / "no marker").string());
  ask();
  EXPECT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
  EXPECT_EQ(portal->calls, 0);
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(MicrophonePortalFixture, isAskedForTheMicrophoneForThisProcess) {
  std::optional<QDBusMessage> call;
  portal->onCall = [&](const QDBusMessage& message) { call = message; };
  ask();
  ASSERT_TRUE(becomes([&] { return call.has_value(); }));
  EXPECT_EQ(call->interface(), "org.freedesktop.portal.Device");
  EXPECT_EQ(call->member(), "AccessDevice");
  EXPECT_EQ(call->signature(), "uasa{sv}");
  EXPECT_EQ(call->arguments().at(0).toUInt(), static_cast<uint>(::getpid()));
  EXPECT_EQ(call->arguments().at(1).toStringList(), QStringList{"microphone"});
  EXPECT_NE(tokenIn(*call), "");
}

TEST_F(MicrophonePortalFixture, onlyResponseZeroGrants) {
  for (const uint response : {0U, 1U, 2U, 7U}) {
    replies = 0;
    portal->onCall = [&](const QDBusMessage& call) {
      portal->reply(call, QVariant::fromValue(QDBusObjectPath(handleFor(call))));
      portal->respond(call, handleFor(call), response);
    };
    ask();
    ASSERT_TRUE(hasReply()) << response;
    EXPECT_EQ(isGranted, response == kGranted) << response;
  }
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(MicrophonePortalFixture, theResponseMayArriveBeforeTheCallReturns) {
  portal->onCall = [&](const QDBusMessage& call) {
    portal->respond(call, handleFor(call), 1);
    portal->reply(call, QVariant::fromValue(QDBusObjectPath(handleFor(call))));
  };
  ask();
  ASSERT_TRUE(hasReply());
  EXPECT_FALSE(isGranted);
  settle();
  EXPECT_EQ(replies, 1);
}

TEST_F(MicrophonePortalFixture, theResponseMayArriveAtAnotherPath) {
  std::optional<QDBusMessage> call;
  portal->onCall = [&](const QDBusMessage& message) {
    call = message;
    portal->reply(message, QVariant::fromValue(QDBusObjectPath("/old/portals/path")));
  };
  ask();
  ASSERT_TRUE(becomes([&] { return call.has_value(); }));
  settle();
  portal->respond(*call, "/old/portals/path", 1);
  ASSERT_TRUE(hasReply());
  EXPECT_FALSE(isGranted);
}

TEST_F(MicrophonePortalFixture, theUserMayTakeTheirTime) {
  std::optional<QDBusMessage> call;
  portal->onCall = [&](const QDBusMessage& message) {
    call = message;
    portal->reply(message, QVariant::fromValue(QDBusObjectPath(handleFor(message))));
  };
  ask();
  ASSERT_TRUE(becomes([&] { return call.has_value(); }));
  settle();
  EXPECT_EQ(replies, 0);
  portal->respond(*call, handleFor(*call), kGranted);
  ASSERT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
}

TEST_F(MicrophonePortalFixture, grantsIfThePortalRefusesTheRequest) {
  portal->onCall = [&](const QDBusMessage& call) {
    portal->refuse(call, "org.freedesktop.portal.Error.NotAllowed");
  };
  ask();
  ASSERT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
  ASSERT_EQ(log.entries.size(), 1U);
  EXPECT_EQ(log.entries[0].message, "The desktop does not guard the microphone: not here");
}

TEST_F(MicrophonePortalFixture, grantsIfThePortalIsMissing) {
  portal.reset();
  ask();
  ASSERT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
  EXPECT_EQ(log.entries.size(), 1U);
}

TEST_F(MicrophonePortalFixture, grantsIfThePortalEndsBeforeTheResponse) {
  bool isAccepted = false;
  portal->onCall = [&](const QDBusMessage& call) {
    portal->reply(call, QVariant::fromValue(QDBusObjectPath(handleFor(call))));
    isAccepted = true;
  };
  ask();
  ASSERT_TRUE(becomes([&] { return isAccepted; }));
  settle();
  portal->leave();
  ASSERT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
  EXPECT_EQ(log.entries.size(), 1U);
}

TEST_F(MicrophonePortalFixture, grantsWithoutABus) {
  access.emplace(mainLoop, log, QDBusConnection("no such connection"),
                 (folder.path() / "marker").string());
  ask();
  ASSERT_TRUE(hasReply());
  EXPECT_TRUE(isGranted);
}

TEST_F(MicrophonePortalFixture, aResponseAfterTheEndOfTheRequesterIsIgnored) {
  std::optional<QDBusMessage> call;
  portal->onCall = [&](const QDBusMessage& message) { call = message; };
  ask();
  ASSERT_TRUE(becomes([&] { return call.has_value(); }));
  access.reset();
  portal->respond(*call, handleFor(*call), kGranted);
  settle();
  EXPECT_EQ(replies, 0);
}

struct ProtectedProgramFixture : PortalFixture {
  ~ProtectedProgramFixture() override { ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0); }
  static bool isOpen() { return ::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 1; }
};

TEST_F(ProtectedProgramFixture, canBeLookedAtUntilThePortalHasReplied) {
  ::unsetenv("VOXTREL_CORE");
  protectMemory();
  ASSERT_FALSE(isOpen());
  std::optional<QDBusMessage> call;
  portal->onCall = [&](const QDBusMessage& message) { call = message; };
  const auto method = QDBusMessage::createMethodCall(kPortalService, kPortalObject, "x.y", "Read");
  bool hasReply = false;
  callAsync<>(client, method, application, [&](const auto&) { hasReply = true; });
  EXPECT_TRUE(isOpen());
  ASSERT_TRUE(becomes([&] { return call.has_value(); }));
  EXPECT_TRUE(isOpen());
  portal->reply(*call, 1);
  ASSERT_TRUE(becomes([&] { return hasReply && !isOpen(); }));
}

TEST_F(ProtectedProgramFixture, isClosedAgainAfterAPortalThatIsMissing) {
  ::unsetenv("VOXTREL_CORE");
  portal->leave();
  const auto method = QDBusMessage::createMethodCall(kPortalService, kPortalObject, "x.y", "Read");
  startCall(client, method, kReplyTimeout);
  protectMemory();
  EXPECT_TRUE(isOpen());
  EXPECT_TRUE(becomes([] { return !isOpen(); }));
}

TEST_F(ProtectedProgramFixture, staysClosedForOtherServices) {
  ::unsetenv("VOXTREL_CORE");
  protectMemory();
  startCall(client, QDBusMessage::createMethodCall("x.y", "/x", "x.y", "Read"), kReplyTimeout);
  EXPECT_FALSE(isOpen());
  settle();
}

}  // namespace
}  // namespace voxtrel
