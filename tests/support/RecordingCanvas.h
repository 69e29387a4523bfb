#pragma once

#include <string>
#include <vector>

#include "voxtrel/platform/Canvas.h"

namespace voxtrel::testing {

/// Records what is painted, in order.
struct RecordingCanvas : Canvas {
  struct FilledRoundedRect {
    Rect rect;
    double radius;
    Color color;
  };
  struct StrokedRoundedRect {
    Rect rect;
    double radius, lineWidth;
    Color color;
  };
  struct FilledOval {
    Rect rect;
    Color color;
  };

  void fillRoundedRect(const Rect& rect, double radius, const Color& color) override {
    operations += 'f';
    filled.push_back({rect, radius, color});
  }
  void strokeRoundedRect(const Rect& rect, double radius, double lineWidth,
                         const Color& color) override {
    operations += 's';
    stroked.push_back({rect, radius, lineWidth, color});
  }
  void fillOval(const Rect& rect, const Color& color) override {
    operations += 'o';
    ovals.push_back({rect, color});
  }

  std::string operations;  // one letter each: filled, stroked, oval
  std::vector<FilledRoundedRect> filled;
  std::vector<StrokedRoundedRect> stroked;
  std::vector<FilledOval> ovals;
};

}  // namespace voxtrel::testing
