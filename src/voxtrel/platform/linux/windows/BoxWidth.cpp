#include "voxtrel/platform/linux/windows/BoxWidth.h"

#include <QGridLayout>
#include <QMessageBox>

namespace voxtrel {

void widen(QMessageBox& box, int widthPt) {
  if (auto* const grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(widthPt, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
}

}  // namespace voxtrel
