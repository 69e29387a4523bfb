// The steps of vDSP that the rig lacks.
#include <Accelerate/Accelerate.h>

#include <cmath>

extern "C" {

void vDSP_zvabs(const DSPSplitComplex* values, vDSP_Stride step, float* results,
                vDSP_Stride resultStep, vDSP_Length count) {
  for (vDSP_Length k = 0; k < count; ++k) {
    const vDSP_Stride i = static_cast<vDSP_Stride>(k) * step;
    results[static_cast<vDSP_Stride>(k) * resultStep] =
        std::sqrt(values->realp[i] * values->realp[i] + values->imagp[i] * values->imagp[i]);
  }
}

void vDSP_meanv(const float* values, vDSP_Stride step, float* mean, vDSP_Length count) {
  double sum = 0;
  for (vDSP_Length k = 0; k < count; ++k) sum += values[static_cast<vDSP_Stride>(k) * step];
  *mean = static_cast<float>(sum / static_cast<double>(count));
}
}
