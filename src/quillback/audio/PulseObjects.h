#pragma once

#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/stream.h>
#include <pulse/thread-mainloop.h>

#include <memory>

namespace voxtrel::quillback {

/// Ends libpulse's objects; none of them calls back any more.
struct PulseEnd {
  void operator()(pa_threaded_mainloop* thread) const { pa_threaded_mainloop_free(thread); }
  void operator()(pa_operation* operation) const { pa_operation_unref(operation); }
  void operator()(pa_context* context) const {
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
  }
  void operator()(pa_stream* stream) const {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
  }
};

template <class Object>
using PulsePointer = std::unique_ptr<Object, PulseEnd>;

}  // namespace voxtrel::quillback
