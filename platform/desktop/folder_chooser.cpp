#include "platform/desktop/folder_chooser.h"

#include <sys/stat.h>

#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QWindow>

namespace dunmere {
namespace {

/// QFileDialog stores its layout and history when it closes. This program stores nothing, so its settings go to
/// /dev/null.
void keepNoSettings() {
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

/// Qt's own dialog takes the rows that are selected in its list before what was typed, and while it still fills that
/// list it may select some by itself. Here the typed path holds for a user who has just typed it.
class FolderDialog : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

  void accept() override {
    const auto* const line = findChild<QLineEdit*>();
    if (line != nullptr && line->hasFocus()) {
      for (auto* const list : findChildren<QAbstractItemView*>()) list->clearSelection();
    }
    QFileDialog::accept();
  }
};

/// Qt's own dialog puts its list of completions over the line; while that has the focus, rows that the dialog selects
/// by itself overwrite what is being typed.
void completeNothing(const QFileDialog& dialog) {
  if (auto* const line = dialog.findChild<QLineEdit*>()) line->setCompleter(nullptr);
}

/// Puts the dialog above the window that the user is working in, which is no widget.
void placeAboveActiveWindow(QFileDialog& dialog) {
  QWindow* const active = QGuiApplication::focusWindow();
  if (active == nullptr) return;
  dialog.winId();  // makes the window handle
  dialog.windowHandle()->setTransientParent(active);
}

std::optional<FileUrl> folderAt(const QString& text) {
  if (text.contains(QChar::ReplacementCharacter)) return std::nullopt;
  const std::string bytes = QFile::encodeName(text).toStdString();
  struct stat status{};
  if (stat(bytes.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return std::nullopt;
  return FileUrl(bytes);
}

}  // namespace

std::optional<FileUrl> showFolderChooser(const std::string& message) {
  keepNoSettings();
  FolderDialog dialog(nullptr, QString::fromStdString(message), QDir::homePath());
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  // Qt's own dialog would otherwise rename folders and delete them for good.
  dialog.setOption(QFileDialog::ReadOnly);
  completeNothing(dialog);
  placeAboveActiveWindow(dialog);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const QStringList chosen = dialog.selectedFiles();
  // With several it is not clear which one was meant.
  if (chosen.size() != 1) return std::nullopt;
  return folderAt(chosen.constFirst());
}

}  // namespace dunmere
