#include "quillback/model/ModelPin.h"

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {

namespace {

constexpr std::string_view kHttp = "http://";
constexpr std::string_view kHttps = "https://";

// One revision of each repository.
constexpr std::string_view kWhisperPath =
    "/ggerganov/whisper.cpp/resolve/5359861c739e955e79d9a303bcbc70fb988958b1/";
constexpr std::string_view kParakeetPath =
    "/ggml-org/parakeet-GGUF/resolve/35156454d1a39de06863303dd209fd2bed6ee079/";
constexpr std::string_view kVoiceDetectionPath =
    "/ggml-org/whisper-vad/resolve/9ffd54a1e1ee413ddf265af9913beaf518d1639b/";

constexpr std::uint64_t kMegabyte = 1'000'000;

/// Everything after "http://" or "https://"; empty for other URLs.
std::string_view afterScheme(std::string_view url) {
  for (const std::string_view scheme : {kHttp, kHttps}) {
    if (url.starts_with(scheme)) return url.substr(scheme.size());
  }
  return {};
}

FilePin filePin(std::string_view folder, std::string name, std::uint64_t sizeBytes,
                std::string sha256) {
  std::string path = std::string(folder).append(name);
  return {std::move(name), sizeBytes, std::move(sha256), std::move(path)};
}

ModelPin whisperPin(const std::string& name, std::uint64_t sizeBytes, std::string sha256,
                    std::uint64_t memoryMegabytes, double seconds) {
  return {name,
          ModelFamily::whisper,
          filePin(kWhisperPath, "ggml-" + name + ".bin", sizeBytes, std::move(sha256)),
          name.ends_with(".en") ? Languages::english : Languages::all,
          memoryMegabytes * kMegabyte,
          seconds};
}

ModelPin parakeetPin(const std::string& kind, std::uint64_t sizeBytes, std::string sha256,
                     std::uint64_t memoryMegabytes, double seconds) {
  return {"parakeet-v3-" + kind,
          ModelFamily::parakeet,
          filePin(kParakeetPath, "ggml-parakeet-tdt-0.6b-v3-" + kind + ".bin", sizeBytes,
                  std::move(sha256)),
          Languages::european,
          memoryMegabytes * kMegabyte,
          seconds,
          "CC-BY-4.0, by NVIDIA"};
}

}  // namespace

const std::vector<ModelPin>& pinnedModels() {
  static const std::vector<ModelPin> kPins = {
      whisperPin("tiny", 77'691'713,
                 "be07e048e1e599ad46341c8d2a135645097a538221678b7acdd1b1919c6e1b21", 280, 0.35),
      whisperPin("tiny.en", 77'704'715,
                 "921e4cf8686fdd993dcd081a5da5b6c365bfde1162e72b08d75ac75289920b1f", 280, 0.35),
      whisperPin("base", 147'951'465,
                 "60ed5bc3dd14eea856493d334349b405782ddcaf0028d4b5df4088345fba2efe", 390, 0.6),
      whisperPin("base.en", 147'964'211,
                 "a03779c86df3323075f5e796cb2ce5029f00ec8869eee3fdfb897afe36c6d002", 390, 0.6),
      whisperPin("small-q5_1", 190'085'487,
                 "ae85e4a935d7a567bd102fe55afc16bb595bdb618e11b2fc7591bc08120411bb", 550, 1.9),
      whisperPin("small", 487'601'967,
                 "1be3a9b2063867b937e64e2ec7483364a79917e157fa98c5d94b5c1fffea987b", 850, 1.9),
      whisperPin("small.en", 487'614'201,
                 "c6138d6d58ecc8322097e0f987c32f1be8bb0a18532a3f88f734d1bbf9c41e5d", 850, 1.9),
      whisperPin("medium-q5_0", 539'212'467,
                 "19fea4b380c3a618ec4723c3eef2eb785ffba0d0538cf43f8f235e7b3b34220f", 1100, 6),
      parakeetPin("q4_0", 355'615'679,
                  "aa7fe2f5fb47d863ca23e8b1d490632d63a2599f515268b6d6bd656158dad45e", 450, 1.1),
      parakeetPin("q8_0", 668'757'119,
                  "4d64e9e96c2792186d072fde0034df0ad670cf680a2f53069052ead827fd600e", 740, 1.7),
      whisperPin("large-v3-turbo-q5_0", 574'041'195,
                 "394221709cd5ad1f40c46e6031ca61bce88931e6e088c188294c6d5a55ffa7e2", 1000, 20),
      whisperPin("large-v3-turbo-q8_0", 874'188'075,
                 "317eb69c11673c9de1e1f0d459b253999804ec71ac4c23c17ecf5fbe24e259a1", 1300, 16),
      whisperPin("large-v3-turbo", 1'624'555'275,
                 "1fc70f774d38eb169993ac391eea357ef47c88757ef72ee5943879b7e8e2bc69", 2000, 18),
      whisperPin("large-v3-q5_0", 1'081'140'203,
                 "d75795ecff3f83b5faa89d1900604ad8c780abd5739fae406de19f23ecd98ad1", 1500, 40),
      whisperPin("large-v3", 3'095'033'483,
                 "64d182b440b98d5203c4f9bd541544d84c605196c4f7b845dfa11fb23594d1e2", 3500, 46)};
  return kPins;
}

const ModelPin* pinNamed(const std::vector<ModelPin>& pins, std::string_view name) {
  const auto found = std::ranges::find(pins, name, &ModelPin::model);
  return found == pins.end() ? nullptr : &*found;
}

std::string namesOf(const std::vector<ModelPin>& pins) {
  std::string names;
  for (const ModelPin& pin : pins) names += (names.empty() ? "" : " ") + pin.model;
  return names;
}

const FilePin& voiceDetectionPin() {
  static const FilePin kPin =
      filePin(kVoiceDetectionPath, "ggml-silero-v6.2.0.bin", 885'098,
              "2aa269b785eeb53a82983a20501ddf7c1d9c48e33ab63a41391ac6c9f7fb6987");
  return kPin;
}

std::string_view describe(Languages languages) {
  switch (languages) {
    case Languages::english:
      return "English";
    case Languages::european:
      return "25 European languages";
    case Languages::all:
      break;
  }
  return "99 languages";
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
