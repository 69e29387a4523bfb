#pragma once

// A double of whisper.cpp's header: the part that the backend uses, with the same names, types and
// order of parameters, so that the backend compiles with either.

#include <cstddef>
#include <cstdint>

extern "C" {

enum ggml_log_level { GGML_LOG_LEVEL_NONE = 0 };
typedef void (*ggml_log_callback)(enum ggml_log_level level, const char* text, void* user_data);
typedef bool (*ggml_abort_callback)(void* data);

struct whisper_context;
struct whisper_state;

struct whisper_context_params {
  bool use_gpu;
};

enum whisper_sampling_strategy { WHISPER_SAMPLING_GREEDY, WHISPER_SAMPLING_BEAM_SEARCH };

typedef bool (*whisper_encoder_begin_callback)(struct whisper_context* ctx,
                                               struct whisper_state* state, void* user_data);

struct whisper_full_params {
  enum whisper_sampling_strategy strategy;
  int n_threads;
  bool translate;
  bool no_context;
  bool print_special;
  bool print_progress;
  bool print_realtime;
  bool print_timestamps;
  const char* language;
  whisper_encoder_begin_callback encoder_begin_callback;
  void* encoder_begin_callback_user_data;
  ggml_abort_callback abort_callback;
  void* abort_callback_user_data;
};

struct whisper_timings {
  float sample_ms;
  float encode_ms;
  float decode_ms;
  float batchd_ms;
  float prompt_ms;
};

void whisper_log_set(ggml_log_callback log_callback, void* user_data);
struct whisper_context_params whisper_context_default_params(void);
struct whisper_context* whisper_init_from_file_with_params(const char* path_model,
                                                           struct whisper_context_params params);
void whisper_free(struct whisper_context* ctx);
int whisper_lang_id(const char* lang);
struct whisper_full_params whisper_full_default_params(enum whisper_sampling_strategy strategy);
int whisper_full(struct whisper_context* ctx, struct whisper_full_params params,
                 const float* samples, int n_samples);
int whisper_full_n_segments(struct whisper_context* ctx);
const char* whisper_full_get_segment_text(struct whisper_context* ctx, int i_segment);
struct whisper_timings* whisper_get_timings(struct whisper_context* ctx);
void whisper_reset_timings(struct whisper_context* ctx);

}  // extern "C"
