#pragma once

class QMessageBox;

namespace voxtrel {

/// Makes a box, which is as narrow as its first text by itself, at least this wide inside.
void widen(QMessageBox& box, int widthPt);

}  // namespace voxtrel
