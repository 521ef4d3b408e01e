#include "platform/desktop/folder_chooser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QListView>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>
#include <functional>

#include "tests/platform/desktop/event_loop.h"

namespace dunmere::test {
namespace {

/// A home folder of its own.
class FolderChooserTest : public testing::Test {
 protected:
  FolderChooserTest() {
    // The chooser asks for the home folder each time, so the test may move it.
    qputenv("HOME", QFile::encodeName(home()));
  }
  ~FolderChooserTest() override { qputenv("HOME", oldHome_); }

  QString home() const { return folder_.path(); }
  std::string path(const std::string& name) const { return QFile::encodeName(home()).toStdString() + "/" + name; }
  void makeFolder(const std::string& name) { ASSERT_EQ(::mkdir(path(name).c_str(), 0755), 0); }

  /// Runs the chooser and lets `user` act in the dialog once it is open.
  std::optional<FileUrl> choose(const std::function<void(QFileDialog&)>& user) {
    QTimer::singleShot(0, qApp, [&] {
      auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      user(*dialog);
      if (dialog->isVisible()) dialog->reject();  // so that a test that failed inside still ends
    });
    return showFolderChooser("Choose a folder (“here”)");
  }

 private:
  QTemporaryDir folder_;
  QByteArray oldHome_ = qgetenv("HOME");
};

QStringList entriesOf(const QString& folder) {
  return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// Types `name` as a user would and presses the dialog's own button.
void pick(QFileDialog& dialog, const QString& name) {
  auto* const line = dialog.findChild<QLineEdit*>();
  ASSERT_NE(line, nullptr);
  line->setText(name);
  static_cast<QDialog&>(dialog).accept();
}

TEST_F(FolderChooserTest, TheChosenFolderComesBack) {
  makeFolder("inner");
  EXPECT_EQ(choose([](QFileDialog& dialog) { pick(dialog, QStringLiteral("inner")); }), FileUrl(path("inner")));
}

TEST_F(FolderChooserTest, TheTypedFolderHoldsWhateverIsSelectedInTheList) {
  makeFolder("many");
  makeFolder("many/typed");
  const auto chosen = choose([&](QFileDialog& dialog) {
    auto* const list = dialog.findChild<QListView*>(QStringLiteral("listView"));
    ASSERT_TRUE(waitUntil([&] { return list->model()->rowCount(list->rootIndex()) == 1; }));
    auto* const line = dialog.findChild<QLineEdit*>();
    line->setFocus();
    ASSERT_TRUE(waitUntil([&] { return line->hasFocus(); }));
    line->setText(QFile::decodeName(path("many/typed").c_str()));
    list->selectionModel()->select(list->model()->index(0, 0, list->rootIndex()),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    static_cast<QDialog&>(dialog).accept();
  });
  EXPECT_EQ(chosen, FileUrl(path("many/typed")));
}

TEST_F(FolderChooserTest, ASelectedRowIsTheChoiceOfAUserWhoDidNotType) {
  makeFolder("one");
  const auto chosen = choose([&](QFileDialog& dialog) {
    auto* const list = dialog.findChild<QListView*>(QStringLiteral("listView"));
    ASSERT_TRUE(waitUntil([&] { return list->model()->rowCount(list->rootIndex()) == 1; }));
    dialog.findChild<QLineEdit*>()->clearFocus();
    ASSERT_FALSE(dialog.findChild<QLineEdit*>()->hasFocus());
    list->selectionModel()->select(list->model()->index(0, 0, list->rootIndex()),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    static_cast<QDialog&>(dialog).accept();
  });
  EXPECT_EQ(chosen, FileUrl(path("one")));
}

TEST_F(FolderChooserTest, NothingComesBetweenTheUserAndTheLineThatIsTypedIn) {
  choose([](QFileDialog& dialog) { EXPECT_EQ(dialog.findChild<QLineEdit*>()->completer(), nullptr); });
}

TEST_F(FolderChooserTest, CancellingGivesNone) {
  EXPECT_EQ(choose([](QFileDialog& dialog) { dialog.reject(); }), std::nullopt);
}

TEST_F(FolderChooserTest, TheDialogStartsAtHomeAndShowsTheMessage) {
  choose([&](QFileDialog& dialog) {
    EXPECT_EQ(dialog.directory().absolutePath(), home());
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Choose a folder (“here”)"));
  });
}

TEST_F(FolderChooserTest, TheDialogIsModalAndTakesOneFolderOnly) {
  choose([](QFileDialog& dialog) {
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(dialog.fileMode(), QFileDialog::Directory);
    EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
    EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
  });
}

TEST_F(FolderChooserTest, TheDialogNeitherRenamesNorDeletesFolders) {
  makeFolder("inner");
  choose([](QFileDialog& dialog) {
    EXPECT_TRUE(dialog.testOption(QFileDialog::ReadOnly));
    for (const char* const name : {"qt_delete_action", "qt_rename_action"}) {
      const auto* const action = dialog.findChild<QAction*>(QString::fromLatin1(name));
      ASSERT_NE(action, nullptr) << name;
      EXPECT_FALSE(action->isEnabled()) << name;
    }
  });
}

TEST_F(FolderChooserTest, TheDialogStandsAboveTheWindowInUse) {
  QWindow window;
  window.show();
  window.requestActivate();
  ASSERT_TRUE(waitUntil([&] { return QGuiApplication::focusWindow() == &window; }));
  choose([&](QFileDialog& dialog) { EXPECT_EQ(dialog.windowHandle()->transientParent(), &window); });
}

TEST_F(FolderChooserTest, ANameInUtf8ComesBackByteForByte) {
  makeFolder("\xc3\xa9t\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac");
  const auto chosen = choose([](QFileDialog& dialog) { pick(dialog, QString::fromUtf8("été 日本")); });
  EXPECT_EQ(chosen, FileUrl(path("\xc3\xa9t\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac")));
}

TEST_F(FolderChooserTest, AFolderWhoseNameIsNotTextIsNotMistakenForItsTwin) {
  makeFolder("\xff");
  makeFolder("\xef\xbf\xbd");  // what the other one looks like in a dialog
  EXPECT_EQ(choose([](QFileDialog& dialog) { pick(dialog, QString(QChar::ReplacementCharacter)); }), std::nullopt);
  EXPECT_EQ(::rmdir(path("\xff").c_str()), 0);  // the temporary folder's own clean-up cannot name it either
}

TEST_F(FolderChooserTest, AFolderThatIsGoneGivesNone) {
  makeFolder("vanishing");
  const auto chosen = choose([&](QFileDialog& dialog) {
    QObject::connect(&dialog, &QFileDialog::accepted, &dialog, [&] { ::rmdir(path("vanishing").c_str()); });
    pick(dialog, QStringLiteral("vanishing"));
  });
  EXPECT_EQ(chosen, std::nullopt);
}

TEST_F(FolderChooserTest, NoSettingsAreKept) {
  makeFolder("inner");
  EXPECT_TRUE(choose([](QFileDialog& dialog) { pick(dialog, QStringLiteral("inner")); }).has_value());
  const QString settings = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
  ASSERT_FALSE(settings.isEmpty());
  EXPECT_EQ(entriesOf(settings), QStringList());
  EXPECT_EQ(entriesOf(home()), QStringList{QStringLiteral("inner")});
}

}  // namespace
}  // namespace dunmere::test
