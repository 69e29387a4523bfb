#include "voxtrel/platform/linux/session/AutostartEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <cstdlib>
#include <utility>

#include "common/base/Utf8.h"
#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/linux/session/DesktopEntryText.h"

namespace voxtrel {

namespace {

using Entry = std::map<std::string, std::string>;

/// More than any entry needs; it bounds the reading of a huge file.
constexpr qint64 kMaxBytes = qint64{64} * 1024;

std::string valueOf(const Entry& entry, const std::string& key) {
  const auto found = entry.find(key);
  return found == entry.end() ? std::string() : desktopEntryValue(found->second);
}

/// Searched for as the desktop does: a path as it is, a name in PATH.
bool isInstalled(const std::string& program) {
  const QString name = QFile::decodeName(program.c_str());
  if (!name.contains('/')) return !QStandardPaths::findExecutable(name).isEmpty();
  const QFileInfo file(name);
  return file.isFile() && file.isExecutable();
}

QByteArray textFor(const AutostartProgram& program) {
  const std::string text =
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Voxtrel\n"
      "Comment=Hold a key, speak, and read what you said\n"
      "Icon=" +
      std::string(kBundleIdentifier) + "\n" + "Exec=" + program.exec + "\n" +
      "TryExec=" + program.tryExec + "\n" +
      "Terminal=false\n"
      "X-GNOME-Autostart-enabled=true\n";
  return QByteArray::fromStdString(text);
}

/// Every program that an AppImage starts inherits its variables; they only apply to those inside it.
bool isInAppImage(const std::string& executable) {
  const char* const folder = std::getenv("APPDIR");
  if (folder == nullptr) return false;
  const QString inside = QFileInfo(QFile::decodeName(folder)).canonicalFilePath();
  return !inside.isEmpty() && QFile::decodeName(executable.c_str()).startsWith(inside + '/');
}

}  // namespace

std::string startedProgram(const std::string& executable) {
  const char* const image = std::getenv("APPIMAGE");
  const bool isNamed = image != nullptr && image[0] == '/';
  return isNamed && isInAppImage(executable) ? image : executable;
}

AutostartProgram autostartProgram(const std::string& executable, bool sandboxed) {
  if (sandboxed) return {std::string("flatpak run ") + kBundleIdentifier, "flatpak", false};
  return {desktopEntryCommand(executable), desktopEntryString(executable), true};
}

AutostartEntry::AutostartEntry(std::string configFolder, AutostartProgram program)
    : folder_(configFolder.empty() ? std::string() : std::move(configFolder) + "/autostart"),
      file_(folder_.empty() ? std::string() : folder_ + '/' + kBundleIdentifier + ".desktop"),
      program_(std::move(program)) {}

std::map<std::string, std::string> AutostartEntry::read() const {
  QFile file(QFile::decodeName(file_.c_str()));
  // Reading anything but a plain file, such as a pipe, could block.
  if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) return {};
  return readDesktopEntry(file.read(kMaxBytes).toStdString());
}

bool AutostartEntry::wouldStart(const Entry& entry) const {
  if (valueOf(entry, "Type") != "Application" || valueOf(entry, "Exec").empty()) return false;
  if (valueOf(entry, "Hidden") == "true") return false;
  if (valueOf(entry, "X-GNOME-Autostart-enabled") == "false") return false;
  const std::string tried = valueOf(entry, "TryExec");
  return tried.empty() || !program_.isReachable || isInstalled(tried);
}

bool AutostartEntry::isEnabled() const {
  return wouldStart(read());
}

bool AutostartEntry::enable() {
  if (isEnabled()) return true;
  const QByteArray text = textFor(program_);
  const QString folder = QFile::decodeName(folder_.c_str());
  if (folder.isEmpty() || !isValidUtf8(text.toStdString()) || !QDir().mkpath(folder)) return false;
  QSaveFile file(QFile::decodeName(file_.c_str()));
  return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
}

bool AutostartEntry::restore() {
  const QFileInfo file(QFile::decodeName(file_.c_str()));
  const bool isThere = file.exists() || file.isSymLink();  // a link to nothing is the user's, too
  return isThere ? isEnabled() : enable();
}

bool AutostartEntry::disable() {
  return !isEnabled() || QFile::remove(QFile::decodeName(file_.c_str()));
}

}  // namespace voxtrel
