#pragma once

#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <pulse/thread-mainloop.h>

#include <memory>

namespace voxtrel {

/// Gives libpulse's objects back to it.
struct PulseRelease {
  void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
  void operator()(pa_proplist* properties) const { pa_proplist_free(properties); }
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

using PulseLoop = std::unique_ptr<pa_threaded_mainloop, PulseRelease>;
using PulseProperties = std::unique_ptr<pa_proplist, PulseRelease>;
using PulseOperation = std::unique_ptr<pa_operation, PulseRelease>;
using PulseContext = std::unique_ptr<pa_context, PulseRelease>;
using PulseStream = std::unique_ptr<pa_stream, PulseRelease>;

}  // namespace voxtrel
