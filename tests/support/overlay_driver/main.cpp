// The recording overlay on the real desktop, without the rest of the application. Reads commands as
// lines from standard input; see Driver.h.

#include <QGuiApplication>
#include <QSocketNotifier>
#include <cstdio>
#include <iostream>
#include <string>

#include "support/overlay_driver/Driver.h"

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  voxtrel::testing::Driver driver;
  QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &input, [&] {
    std::string command;
    do {
      if (!std::getline(std::cin, command)) return QGuiApplication::quit();
      driver.obey(command);
    } while (std::cin.rdbuf()->in_avail() > 0);
  });
  return QGuiApplication::exec();
}
