#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace voxtrel::quillback::bench {

inline std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream input(text);
  std::vector<std::string> words;
  for (std::string word; input >> word;) words.push_back(word);
  return words;
}

/// Number of words in `said` minus the edits (insertions, deletions, replacements) that lead to
/// `recognised`; at least 0.
inline std::size_t countOfRightWords(const std::vector<std::string>& said,
                                     const std::vector<std::string>& recognised) {
  std::vector<std::size_t> edits(recognised.size() + 1);
  std::iota(edits.begin(), edits.end(), std::size_t{0});
  for (std::size_t row = 1; row <= said.size(); ++row) {
    std::size_t diagonal = std::exchange(edits[0], row);
    for (std::size_t at = 1; at <= recognised.size(); ++at) {
      const std::size_t replaced = diagonal + (said[row - 1] == recognised[at - 1] ? 0U : 1U);
      diagonal = std::exchange(edits[at], std::min({edits[at] + 1, edits[at - 1] + 1, replaced}));
    }
  }
  return said.size() - std::min(said.size(), edits.back());
}

/// PocketSphinx's command line programs, with the same model and default options.
/// Thread: one.
class RecogniserYardstick {
 public:
  explicit RecogniserYardstick(std::string folder) : folder_(std::move(folder)) {}

  bool isThere() const {
    return !output("command -v pocketsphinx_continuous && command -v pocketsphinx_batch").empty();
  }

  /// Writes 16 kHz samples as NAME.wav and NAME.raw; returns the path of NAME.wav.
  std::string write(const std::string& name, const std::vector<std::int16_t>& samples) const {
    const std::string path = folder_ + "/" + name;
    const auto bytes = static_cast<std::uint32_t>(samples.size() * 2);
    const auto* const data = reinterpret_cast<const char*>(samples.data());
    std::ofstream wav(path + ".wav", std::ios::binary);
    const std::uint32_t header[] = {0x46464952, bytes + 36, 0x45564157, 0x20746D66,
                                    16,         0x00010001, 16000,      32000,
                                    0x00100002, 0x61746164, bytes};
    wav.write(reinterpret_cast<const char*>(header), sizeof header).write(data, bytes);
    std::ofstream(path + ".raw", std::ios::binary).write(data, bytes);
    return path + ".wav";
  }

  std::string continuous(const std::string& wavPath) const {
    return output("pocketsphinx_continuous -infile " + wavPath + " 2>/dev/null </dev/null");
  }

  std::string batch(const std::string& name) const {
    const std::string model = "/usr/share/pocketsphinx/model/en-us";
    std::ofstream(folder_ + "/list") << name << '\n';
    output("pocketsphinx_batch -adcin yes -cepdir " + folder_ + " -cepext .raw -ctl " + folder_ +
           "/list -hyp " + folder_ + "/heard -hmm " + model + "/en-us -lm " + model +
           "/en-us.lm.bin -dict " + model + "/cmudict-en-us.dict >/dev/null 2>&1 </dev/null");
    std::ifstream heard(folder_ + "/heard");
    std::string line;
    std::getline(heard, line);
    return line.substr(0, line.rfind('('));  // the score follows
  }

 private:
  struct Close {
    void operator()(std::FILE* pipe) const { ::pclose(pipe); }
  };

  static std::string output(const std::string& command) {
    const std::unique_ptr<std::FILE, Close> pipe(::popen(command.c_str(), "re"));
    std::string text;
    for (int byte = 0; pipe && (byte = std::fgetc(pipe.get())) != EOF;) {
      text += static_cast<char>(byte);
    }
    return text;
  }

  const std::string folder_;
};

}  // namespace voxtrel::quillback::bench
