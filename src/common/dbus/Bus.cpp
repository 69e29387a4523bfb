#include "common/dbus/Bus.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace voxtrel {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

int runHandler(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
  // A copy, because the handler may end the connection.
  const Bus::Handler call = *static_cast<Bus::Handler*>(handler);
  call(*message);
  return 0;
}

void deleteHandler(void* handler) {
  delete static_cast<Bus::Handler*>(handler);
}

/// `timeUs`: of CLOCK_MONOTONIC, which steady_clock reads too.
milliseconds timeUntil(std::uint64_t timeUs) {
  const auto now =
      std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch());
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(microseconds(timeUs) - now));
}

}  // namespace

bool isError(sd_bus_message& reply) {
  return sd_bus_message_is_method_error(&reply, nullptr) != 0;
}

void Bus::Close::operator()(sd_bus* bus) const {
  sd_bus_close_unref(bus);
}

std::unique_ptr<Bus> Bus::open(Kind kind, std::unique_ptr<BusWait> wait,
                               std::function<void()> onClosed) {
  sd_bus* bus = nullptr;
  const int result = kind == Kind::session ? sd_bus_open_user(&bus) : sd_bus_open_system(&bus);
  if (result < 0) return nullptr;
  return std::unique_ptr<Bus>(new Bus(bus, std::move(wait), std::move(onClosed)));
}

Bus::Bus(sd_bus* bus, std::unique_ptr<BusWait> wait, std::function<void()> onClosed)
    : onClosed_(std::move(onClosed)), bus_(bus), wait_(std::move(wait)) {
  wait_->start(sd_bus_get_fd(bus), [this] { process(); });
  waitForMore();
}

Bus::~Bus() = default;

void Bus::call(const Method& method, const Write& write, Handler onReply) {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(bus_.get(), &message, method.service, method.path,
                                     method.interface, method.name) < 0) {
    return;
  }
  write(*message);
  auto handler = std::make_unique<Handler>(std::move(onReply));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(bus_.get(), &slot, message, runHandler, handler.get(), 0) >= 0) {
    sd_bus_slot_set_destroy_callback(slot, deleteHandler);
    sd_bus_slot_set_floating(slot, 1);  // lives until the reply or the end of the connection
    sd_bus_slot_unref(slot);
    static_cast<void>(handler.release());
  }
  sd_bus_message_unref(message);
  waitForMore();
}

std::string Bus::name() const {
  const char* name = nullptr;
  // Before that it would wait for the bus.
  if (sd_bus_is_ready(bus_.get()) <= 0) return {};
  return sd_bus_get_unique_name(bus_.get(), &name) < 0 ? "" : name;
}

void Bus::onSignal(const std::string& rule, Handler handler) {
  signalHandlers_.push_back(std::make_unique<Handler>(std::move(handler)));
  sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), runHandler, nullptr,
                         signalHandlers_.back().get());
  waitForMore();
}

void Bus::process() {
  int progress = isBroken_ ? -1 : 1;
  while (progress > 0) progress = sd_bus_process(bus_.get(), nullptr);
  progress < 0 ? end() : waitForMore();
}

/// What sd-bus waits for can change with every step. An end is told from the loop, not to who just called.
void Bus::waitForMore() {
  const int events = sd_bus_get_events(bus_.get());
  std::uint64_t timeUs = UINT64_MAX;
  isBroken_ = events < 0 || sd_bus_get_timeout(bus_.get(), &timeUs) < 0;
  if (isBroken_) return wait_->waitFor(false, milliseconds(0));
  const bool hasTime = timeUs != UINT64_MAX;
  wait_->waitFor((events & POLLOUT) != 0,
                 hasTime ? std::optional(timeUntil(timeUs)) : std::nullopt);
}

void Bus::end() {
  wait_->stop();
  if (const auto onClosed = std::exchange(onClosed_, nullptr)) onClosed();
}

}  // namespace voxtrel
