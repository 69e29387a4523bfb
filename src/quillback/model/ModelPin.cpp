#include "quillback/model/ModelPin.h"

#include <algorithm>

namespace voxtrel::quillback {

namespace {

constexpr std::string_view kHttp = "http://";
constexpr std::string_view kHttps = "https://";

/// Everything after "http://" or "https://"; empty for other URLs.
std::string_view afterScheme(std::string_view url) {
  for (const std::string_view scheme : {kHttp, kHttps}) {
    if (url.starts_with(scheme)) return url.substr(scheme.size());
  }
  return {};
}

}  // namespace

const std::vector<ModelPin>& pinnedModels() {
  static const std::vector<ModelPin> kPins = {
      {"large-v3", "ggml-large-v3.bin", 3'095'033'483,
       "64d182b440b98d5203c4f9bd541544d84c605196c4f7b845dfa11fb23594d1e2", "https://huggingface.co",
       "/ggerganov/whisper.cpp/resolve/5359861c739e955e79d9a303bcbc70fb988958b1/"
       "ggml-large-v3.bin"}};
  return kPins;
}

bool isBaseUrl(std::string_view url) {
  const bool isPrintable = std::ranges::all_of(url, [](char c) { return c > ' ' && c < '\x7f'; });
  return isPrintable && !hostOf(url).empty();
}

std::string hostOf(std::string_view url) {
  std::string_view authority = afterScheme(url);
  authority = authority.substr(0, authority.find_first_of("/?#"));
  return std::string(authority.substr(authority.rfind('@') + 1));
}

}  // namespace voxtrel::quillback
