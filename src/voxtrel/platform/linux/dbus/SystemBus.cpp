#include "voxtrel/platform/linux/dbus/SystemBus.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace voxtrel {

namespace {

using std::chrono::microseconds;

int runHandler(sd_bus_message* message, void* handler, sd_bus_error*) {
  (*static_cast<SystemBus::Handler*>(handler))(message);
  return 0;
}

void deleteHandler(void* handler) {
  delete static_cast<SystemBus::Handler*>(handler);
}

/// `timeUs`: of CLOCK_MONOTONIC, which steady_clock reads too.
microseconds timeUntil(std::uint64_t timeUs) {
  const auto now =
      std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch());
  return std::max(microseconds(0), microseconds(timeUs) - now);
}

}  // namespace

void SystemBus::Unref::operator()(sd_bus* bus) const {
  sd_bus_close_unref(bus);
}

std::unique_ptr<SystemBus> SystemBus::open(std::function<void()> onClosed) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_system(&bus) < 0) return nullptr;
  return std::unique_ptr<SystemBus>(new SystemBus(bus, std::move(onClosed)));
}

SystemBus::SystemBus(sd_bus* bus, std::function<void()> onClosed)
    : onClosed_(std::move(onClosed)),
      bus_(bus),
      readable_(sd_bus_get_fd(bus), QSocketNotifier::Read),
      writable_(sd_bus_get_fd(bus), QSocketNotifier::Write) {
  timeout_.setSingleShot(true);
  QObject::connect(&readable_, &QSocketNotifier::activated, &timeout_, [this] { process(); });
  QObject::connect(&writable_, &QSocketNotifier::activated, &timeout_, [this] { process(); });
  QObject::connect(&timeout_, &QTimer::timeout, &timeout_, [this] { process(); });
  watch();
}

SystemBus::~SystemBus() {
  readable_.setEnabled(false);
  writable_.setEnabled(false);
}

void SystemBus::onSignal(const std::string& rule, Handler handler) {
  signalHandlers_.push_back(std::make_unique<Handler>(std::move(handler)));
  sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), runHandler, nullptr,
                         signalHandlers_.back().get());
  watch();
}

void SystemBus::call(const Call& call, Handler onReply) {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(bus_.get(), &message, call.service, call.path, call.interface,
                                     call.method) < 0) {
    return;
  }
  for (const std::string& argument : call.arguments) {
    sd_bus_message_append_basic(message, 's', argument.c_str());
  }
  auto handler = std::make_unique<Handler>(std::move(onReply));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(bus_.get(), &slot, message, runHandler, handler.get(), 0) >= 0) {
    sd_bus_slot_set_destroy_callback(slot, deleteHandler);
    sd_bus_slot_set_floating(slot, 1);  // lives until the reply or the end of the connection
    sd_bus_slot_unref(slot);
    static_cast<void>(handler.release());
  }
  sd_bus_message_unref(message);
  watch();
}

void SystemBus::process() {
  int progress = 0;
  do {
    progress = sd_bus_process(bus_.get(), nullptr);
  } while (progress > 0);
  if (progress < 0) {
    fail();
  } else {
    watch();
  }
}

/// What sd-bus waits for can change with every step.
void SystemBus::watch() {
  const int events = sd_bus_get_events(bus_.get());
  if (events < 0) return fail();
  readable_.setEnabled((events & POLLIN) != 0);
  writable_.setEnabled((events & POLLOUT) != 0);
  std::uint64_t timeUs = 0;
  if (sd_bus_get_timeout(bus_.get(), &timeUs) >= 0 && timeUs != UINT64_MAX) {
    timeout_.start(std::chrono::ceil<std::chrono::milliseconds>(timeUntil(timeUs)));
  } else {
    timeout_.stop();
  }
}

void SystemBus::fail() {
  readable_.setEnabled(false);
  writable_.setEnabled(false);
  timeout_.stop();
  if (const auto onClosed = std::exchange(onClosed_, nullptr)) onClosed();
}

}  // namespace voxtrel
