// Time of the whole analysis of a block of 512 samples, beside bare 512-point real transforms. They
// take turns, so that other load on the machine affects all of them.
#include <fftw3.h>
#include <kiss_fftr.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include "support/Samples.h"
#include "voxtrel/overlay/FFTBarView.h"
#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace {

using namespace voxtrel;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 2000;
constexpr int kCallsInARound = 50;

struct Contender {
  const char* name;
  std::function<void()> call;
  std::vector<double> nanoseconds;

  void run() {
    const auto start = Clock::now();
    for (int i = 0; i < kCallsInARound; ++i) call();
    const std::chrono::duration<double, std::nano> took = Clock::now() - start;
    nanoseconds.push_back(took.count() / kCallsInARound);
  }
  double median() {
    std::sort(nanoseconds.begin(), nanoseconds.end());
    return nanoseconds[nanoseconds.size() / 2];
  }
};

}  // namespace

int main() {
  const std::vector<float> samples = testing::noise(1);
  const testing::BufferOver block(samples);
  const PlainVectorMath math{};
  FFTBarView view({0, 0, 90, 21}, math);

  kiss_fftr_state* kissPlan = kiss_fftr_alloc(512, 0, nullptr, nullptr);
  std::array<kiss_fft_cpx, 257> kissBins{};
  float* fftwSamples = fftwf_alloc_real(512);
  fftwf_complex* fftwBins = fftwf_alloc_complex(257);
  fftwf_plan fftwPlan = fftwf_plan_dft_r2c_1d(512, fftwSamples, fftwBins, FFTW_MEASURE);
  std::copy(samples.begin(), samples.end(), fftwSamples);

  std::vector<Contender> contenders;
  contenders.push_back({"whole analysis, ns", [&] { view.processAudio(block); }, {}});
  contenders.push_back(
      {"KissFFT alone, ns", [&] { kiss_fftr(kissPlan, samples.data(), kissBins.data()); }, {}});
  contenders.push_back({"FFTW alone, ns", [&] { fftwf_execute(fftwPlan); }, {}});
  for (int round = 0; round < kRounds; ++round) {
    for (Contender& contender : contenders) contender.run();
  }

  for (Contender& contender : contenders) {
    std::printf("%s: %.0f\n", contender.name, contender.median());
  }
  std::printf("ratio to KissFFT (aim 1.2): %.2f\n",
              contenders[0].median() / contenders[1].median());
  std::printf("ratio to FFTW: %.2f\n", contenders[0].median() / contenders[2].median());
  fftwf_destroy_plan(fftwPlan);
  fftwf_free(fftwSamples);
  fftwf_free(fftwBins);
  kiss_fftr_free(kissPlan);
}
