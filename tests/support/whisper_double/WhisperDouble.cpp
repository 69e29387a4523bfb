#include "support/whisper_double/WhisperDouble.h"

#include <string_view>

using voxtrel::quillback::test::WhisperDouble;

struct whisper_context {
  int number = 0;
};

namespace {

whisper_context context;
whisper_timings timings{};

}  // namespace

WhisperDouble& WhisperDouble::instance() {
  static WhisperDouble it;
  return it;
}

WhisperDouble& WhisperDouble::fresh() {
  return instance() = {};
}

void whisper_log_set(ggml_log_callback log_callback, void* user_data) {
  // A silent log needs a function that does nothing; null means the default log.
  log_callback(GGML_LOG_LEVEL_NONE, "", user_data);
  WhisperDouble::instance().isLogSilenced = true;
}

whisper_context_params whisper_context_default_params() {
  return {true};
}

whisper_context* whisper_init_from_file_with_params(const char* path_model,
                                                    whisper_context_params /*params*/) {
  auto& it = WhisperDouble::instance();
  it.loadedFiles.emplace_back(path_model);
  if (!it.loads) return nullptr;
  ++it.contexts;
  return &context;
}

void whisper_free(whisper_context* /*ctx*/) {
  --WhisperDouble::instance().contexts;
}

int whisper_lang_id(const char* lang) {
  const std::string_view name(lang);
  return name == "en" ? 0 : name == "de" ? 2 : -1;
}

whisper_full_params whisper_full_default_params(whisper_sampling_strategy strategy) {
  whisper_full_params parameters{};
  parameters.strategy = strategy;
  parameters.n_threads = 4;
  parameters.print_progress = true;
  parameters.print_timestamps = true;
  parameters.language = "en";
  return parameters;
}

int whisper_full(whisper_context* ctx, whisper_full_params params, const float* samples,
                 int n_samples) {
  auto& it = WhisperDouble::instance();
  it.parameters = params;
  it.language = params.language;
  it.samples.assign(samples, samples + n_samples);
  for (int window = 0; window < it.encodings; ++window) {
    if (it.whileItComputes) it.whileItComputes();
    it.wasAborted =
        !params.encoder_begin_callback(ctx, nullptr, params.encoder_begin_callback_user_data) ||
        params.abort_callback(params.abort_callback_user_data);
    if (it.wasAborted) return -6;
  }
  return it.fullResult;
}

int whisper_full_n_segments(whisper_context* /*ctx*/) {
  return static_cast<int>(WhisperDouble::instance().segments.size());
}

const char* whisper_full_get_segment_text(whisper_context* /*ctx*/, int i_segment) {
  return WhisperDouble::instance().segments.at(static_cast<std::size_t>(i_segment)).c_str();
}

whisper_timings* whisper_get_timings(whisper_context* /*ctx*/) {
  timings.encode_ms = WhisperDouble::instance().encodeMs;
  return &timings;
}

void whisper_reset_timings(whisper_context* /*ctx*/) {
  ++WhisperDouble::instance().resets;
}
