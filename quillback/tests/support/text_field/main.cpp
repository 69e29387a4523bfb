#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <cstdio>

/// A window with one text field, whose text is in the file named by the first argument after every
/// change, as UTF-8. The file is there once the field has the focus.
int main(int argumentCount, char** arguments) {
  const QApplication application(argumentCount, arguments);
  if (argumentCount != 2) {
    std::fputs("usage: quillback-text-field FILE\n", stderr);
    return 2;
  }
  QPlainTextEdit field;
  const auto save = [&] {
    QFile file(QString::fromLocal8Bit(arguments[1]));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
    file.write(field.toPlainText().toUtf8());
  };
  QObject::connect(&field, &QPlainTextEdit::textChanged, save);
  QObject::connect(&application, &QApplication::focusChanged, [&](QWidget*, QWidget* now) {
    if (now == &field) save();
  });
  field.show();
  field.activateWindow();
  field.setFocus();
  return QApplication::exec();
}
