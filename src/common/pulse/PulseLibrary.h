#pragma once

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/rtclock.h>
#include <pulse/stream.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>

namespace voxtrel {

/// libpulse's functions, by their own names. Loaded at the first recording: with its codecs the library takes
/// a megabyte, and most of the time nothing records.
/// Thread: any.  Owns: the library, until the process ends.
class PulseLibrary {
 public:
  /// Null if libpulse is not installed, or lacks one of these functions.
  static const PulseLibrary* get();
  PulseLibrary(const PulseLibrary&) = delete;
  PulseLibrary& operator=(const PulseLibrary&) = delete;

 private:
  PulseLibrary();
  ~PulseLibrary() = default;
  template <class Function>
  Function find(const char* name);

  void* const library_;
  bool isComplete_ = true;

 public:
#define VOXTREL_PULSE(name) decltype(&::name) const name = find<decltype(&::name)>(#name)
  VOXTREL_PULSE(pa_context_connect);
  VOXTREL_PULSE(pa_context_disconnect);
  VOXTREL_PULSE(pa_context_errno);
  VOXTREL_PULSE(pa_context_get_server_info);
  VOXTREL_PULSE(pa_context_get_source_info_by_name);
  VOXTREL_PULSE(pa_context_get_state);
  VOXTREL_PULSE(pa_context_new_with_proplist);
  VOXTREL_PULSE(pa_context_rttime_new);
  VOXTREL_PULSE(pa_context_rttime_restart);
  VOXTREL_PULSE(pa_context_set_state_callback);
  VOXTREL_PULSE(pa_context_set_subscribe_callback);
  VOXTREL_PULSE(pa_context_subscribe);
  VOXTREL_PULSE(pa_context_unref);
  VOXTREL_PULSE(pa_frame_size);
  VOXTREL_PULSE(pa_mainloop_api_once);
  VOXTREL_PULSE(pa_operation_unref);
  VOXTREL_PULSE(pa_proplist_free);
  VOXTREL_PULSE(pa_proplist_new);
  VOXTREL_PULSE(pa_proplist_sets);
  VOXTREL_PULSE(pa_rtclock_now);
  VOXTREL_PULSE(pa_stream_connect_record);
  VOXTREL_PULSE(pa_stream_disconnect);
  VOXTREL_PULSE(pa_stream_drop);
  VOXTREL_PULSE(pa_stream_get_sample_spec);
  VOXTREL_PULSE(pa_stream_get_state);
  VOXTREL_PULSE(pa_stream_new);
  VOXTREL_PULSE(pa_stream_peek);
  VOXTREL_PULSE(pa_stream_set_read_callback);
  VOXTREL_PULSE(pa_stream_set_state_callback);
  VOXTREL_PULSE(pa_stream_unref);
  VOXTREL_PULSE(pa_strerror);
  VOXTREL_PULSE(pa_threaded_mainloop_free);
  VOXTREL_PULSE(pa_threaded_mainloop_get_api);
  VOXTREL_PULSE(pa_threaded_mainloop_new);
  VOXTREL_PULSE(pa_threaded_mainloop_set_name);
  VOXTREL_PULSE(pa_threaded_mainloop_start);
  VOXTREL_PULSE(pa_threaded_mainloop_stop);
#undef VOXTREL_PULSE
};

}  // namespace voxtrel
