// Latency of the overlay's window and sound, beside minimal programs. Needs a display and a sound
// server; the argument names the sink whose monitor is the default source.

#include <QGuiApplication>

#include "Latency.h"

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  voxtrel::testing::RealOverlay ours;
  bench::benchFirstFrame(ours);
  bench::benchFirstBlock(ours);
  bench::benchSoundToEnergy(argc > 1 ? argv[1] : nullptr);
}
