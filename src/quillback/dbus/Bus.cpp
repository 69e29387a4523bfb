#include "quillback/dbus/Bus.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace voxtrel::quillback {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

/// How often a full socket is tried again; the loop only watches for input.
constexpr milliseconds kWriteRetry{20};

int runHandler(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
  // A copy, because the handler may end the connection.
  const Bus::Handler call = *static_cast<Bus::Handler*>(handler);
  call(*message);
  return 0;
}

void deleteHandler(void* handler) {
  delete static_cast<Bus::Handler*>(handler);
}

/// `timeUs`: of CLOCK_MONOTONIC, which the loop's clock reads too.
milliseconds timeUntil(std::uint64_t timeUs, Loop::TimePoint now) {
  const auto left =
      microseconds(timeUs) - std::chrono::duration_cast<microseconds>(now.time_since_epoch());
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(left));
}

}  // namespace

bool isError(sd_bus_message& reply) {
  return sd_bus_message_is_method_error(&reply, nullptr) != 0;
}

void Bus::Close::operator()(sd_bus* bus) const {
  sd_bus_close_unref(bus);
}

std::unique_ptr<Bus> Bus::open(Kind kind, Loop& loop, std::function<void()> onClosed) {
  sd_bus* bus = nullptr;
  const int result = kind == Kind::session ? sd_bus_open_user(&bus) : sd_bus_open_system(&bus);
  if (result < 0) return nullptr;
  return std::unique_ptr<Bus>(new Bus(bus, loop, std::move(onClosed)));
}

Bus::Bus(sd_bus* bus, Loop& loop, std::function<void()> onClosed)
    : loop_(loop), onClosed_(std::move(onClosed)), bus_(bus) {
  watch_ = loop_.watch(sd_bus_get_fd(bus), [this] { process(); });
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

void Bus::onSignal(const std::string& rule, Handler handler) {
  signalHandlers_.push_back(std::make_unique<Handler>(std::move(handler)));
  sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), runHandler, nullptr,
                         signalHandlers_.back().get());
  waitForMore();
}

void Bus::process() {
  int progress = 0;
  do {
    progress = sd_bus_process(bus_.get(), nullptr);
  } while (progress > 0);
  progress < 0 ? end() : waitForMore();
}

/// What sd-bus waits for can change with every step.
void Bus::waitForMore() {
  timer_.reset();
  const int events = sd_bus_get_events(bus_.get());
  std::uint64_t timeUs = UINT64_MAX;
  if (events < 0 || sd_bus_get_timeout(bus_.get(), &timeUs) < 0) {
    timer_ = loop_.after(milliseconds(0), [this] { end(); });
  } else if ((events & POLLOUT) != 0) {
    timer_ = loop_.after(kWriteRetry, [this] { process(); });
  } else if (timeUs != UINT64_MAX) {
    timer_ = loop_.after(timeUntil(timeUs, loop_.now()), [this] { process(); });
  }
}

void Bus::end() {
  watch_.reset();
  timer_.reset();
  if (const auto onClosed = std::exchange(onClosed_, nullptr)) onClosed();
}

}  // namespace voxtrel::quillback
