#pragma once

#include <memory>

#include "voxtrel/platform/kissfft/PlainVectorMath.h"

namespace voxtrel::testing {

/// Real vector steps; `hasTransform` decides whether a transform can be made.
struct FakeVectorMath : PlainVectorMath {
  std::unique_ptr<RealFft> makeRealFft() const override {
    return hasTransform ? PlainVectorMath::makeRealFft() : nullptr;
  }
  bool hasTransform = true;
};

}  // namespace voxtrel::testing
