#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <cstdio>

namespace {

void write(const QString& path, const QByteArray& text) {
  QFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(text);
}

}  // namespace

/// A window with one text field, whose text is in the file named by the first argument after every
/// change, as UTF-8. The file is there once the field has the focus; the window's number is in another
/// of that name with ".window" behind it.
int main(int argumentCount, char** arguments) {
  const QApplication application(argumentCount, arguments);
  if (argumentCount != 2) {
    std::fputs("usage: quillback-text-field FILE\n", stderr);
    return 2;
  }
  QPlainTextEdit field;
  const QString path = QString::fromLocal8Bit(arguments[1]);
  const auto save = [&] { write(path, field.toPlainText().toUtf8()); };
  QObject::connect(&field, &QPlainTextEdit::textChanged, save);
  QObject::connect(&application, &QApplication::focusChanged, [&](QWidget*, QWidget* now) {
    if (now == &field) save();
  });
  field.show();
  field.setFocus();
  write(path + ".window", QByteArray::number(field.winId()) + '\n');
  return QApplication::exec();
}
