#include "common/pulse/DefaultSource.h"

#include <cstdint>
#include <future>
#include <optional>
#include <utility>

#include "common/pulse/PulseLibrary.h"

namespace voxtrel {
namespace {

/// One question to the sound server, or one after each change of its sources.
/// Thread: one constructs, asks and destroys it.  Owns: the connection and its thread.
class Search {
 public:
  Search(const PulseLibrary& pulse, bool waitsForSource)
      : pulse_(pulse), waitsForSource_(waitsForSource), loop_(pulse.pa_threaded_mainloop_new()) {}
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
  ~Search();

  /// Without a timeout it waits for ever.
  SourceSearch run(std::optional<std::chrono::milliseconds> timeout);

 private:
  static Search& self(void* search) { return *static_cast<Search*>(search); }
  bool connect();
  void contextChanged();
  void followChanges();
  void askForServer();
  void askForSource(const char* name);
  /// What was asked is answered by a callback; without the operation it never will.
  void expect(pa_operation* question);
  void finish(SourceSearch result);
  void finishWithError();

  const PulseLibrary& pulse_;
  const bool waitsForSource_;
  pa_threaded_mainloop* const loop_;
  pa_context* context_ = nullptr;
  bool isFinished_ = false;
  std::promise<SourceSearch> result_;
};

Search::~Search() {
  if (loop_ == nullptr) return;
  pulse_.pa_threaded_mainloop_stop(loop_);
  if (context_ != nullptr) {
    pulse_.pa_context_set_state_callback(context_, nullptr, nullptr);
    pulse_.pa_context_disconnect(context_);
    pulse_.pa_context_unref(context_);
  }
  pulse_.pa_threaded_mainloop_free(loop_);
}

SourceSearch Search::run(std::optional<std::chrono::milliseconds> timeout) {
  if (loop_ == nullptr || !connect()) return SourceSearch::unknown;
  std::future<SourceSearch> result = result_.get_future();
  if (pulse_.pa_threaded_mainloop_start(loop_) < 0) return SourceSearch::unknown;
  const bool isThere = !timeout || result.wait_for(*timeout) == std::future_status::ready;
  return isThere ? result.get() : SourceSearch::unknown;
}

bool Search::connect() {
  pa_proplist* const properties = pulse_.pa_proplist_new();
  pulse_.pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "quillback check");
  context_ = pulse_.pa_context_new_with_proplist(pulse_.pa_threaded_mainloop_get_api(loop_),
                                                 nullptr, properties);
  pulse_.pa_proplist_free(properties);
  if (context_ == nullptr) return false;
  pulse_.pa_context_set_state_callback(
      context_, [](pa_context*, void* search) { self(search).contextChanged(); }, this);
  if (pulse_.pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    finishWithError();
  }
  return true;
}

void Search::contextChanged() {
  const pa_context_state_t state = pulse_.pa_context_get_state(context_);
  if (state == PA_CONTEXT_READY && waitsForSource_) followChanges();
  if (state == PA_CONTEXT_READY) askForServer();
  if (!PA_CONTEXT_IS_GOOD(state)) finishWithError();
}

void Search::followChanges() {
  pulse_.pa_context_set_subscribe_callback(
      context_,
      [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* search) {
        self(search).askForServer();
      },
      this);
  constexpr auto kChanges = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER |
                                                                PA_SUBSCRIPTION_MASK_SOURCE);
  expect(pulse_.pa_context_subscribe(context_, kChanges, nullptr, nullptr));
}

void Search::askForServer() {
  expect(pulse_.pa_context_get_server_info(
      context_,
      [](pa_context*, const pa_server_info* server, void* search) {
        if (server == nullptr) return self(search).finishWithError();
        if (server->default_source_name == nullptr) {
          return self(search).finish(SourceSearch::noSource);
        }
        self(search).askForSource(server->default_source_name);
      },
      this));
}

void Search::askForSource(const char* name) {
  expect(pulse_.pa_context_get_source_info_by_name(
      context_, name,
      [](pa_context*, const pa_source_info* source, int, void* search) {
        const bool isOne = source != nullptr && source->monitor_of_sink == PA_INVALID_INDEX;
        self(search).finish(isOne ? SourceSearch::found : SourceSearch::noSource);
      },
      this));
}

void Search::expect(pa_operation* question) {
  if (question == nullptr) return finishWithError();
  pulse_.pa_operation_unref(question);
}

void Search::finish(SourceSearch result) {
  if (waitsForSource_ && result == SourceSearch::noSource) return;
  if (!std::exchange(isFinished_, true)) result_.set_value(result);
}

void Search::finishWithError() {
  const bool isAbsent = pulse_.pa_context_errno(context_) == PA_ERR_CONNECTIONREFUSED;
  finish(isAbsent ? SourceSearch::noServer : SourceSearch::unknown);
}

}  // namespace

SourceSearch searchDefaultSource(std::chrono::milliseconds timeout) {
  const PulseLibrary* const pulse = PulseLibrary::get();
  return pulse == nullptr ? SourceSearch::noServer : Search(*pulse, false).run(timeout);
}

SourceSearch awaitDefaultSource() {
  const PulseLibrary* const pulse = PulseLibrary::get();
  const bool isFound = pulse != nullptr && Search(*pulse, true).run({}) == SourceSearch::found;
  return isFound ? SourceSearch::found : SourceSearch::noServer;
}

}  // namespace voxtrel
