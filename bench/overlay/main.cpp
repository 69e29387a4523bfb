// How fast the overlay comes up and hears, beside the least that its parts take. Needs a display and
// a sound server whose default source hears what is played to the sink given as the argument.

#include <QGuiApplication>

#include "Hearing.h"
#include "Showing.h"

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  voxtrel::testing::RealOverlay ours;
  bench::benchFirstFrame(ours);
  bench::benchFirstBlock(ours);
  bench::benchSoundToEnergy(argc > 1 ? argv[1] : nullptr);
}
