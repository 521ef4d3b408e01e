#include "theme/last_input.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QWindow>

namespace dunmere {
namespace {

class LastInputTest : public testing::Test {
 protected:
  static void key(QObject& receiver, int key, QEvent::Type type = QEvent::KeyPress) {
    QKeyEvent event(type, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&receiver, &event);
  }
  static void press(QObject& receiver) {
    QMouseEvent event(QEvent::MouseButtonPress, {1, 1}, {1, 1}, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&receiver, &event);
  }

  QQuickWindow views_;
  QWindow dialog_;  // of the desktop or of another library
  LastInput lastInput_;
};

TEST_F(LastInputTest, IsTheMouseAtFirst) {
  EXPECT_FALSE(lastInput_.isKeyboard());
}

TEST_F(LastInputTest, IsTheKeyboardAfterAKeyUntilTheNextPress) {
  key(views_, Qt::Key_Down);
  EXPECT_TRUE(lastInput_.isKeyboard());
  press(views_);
  EXPECT_FALSE(lastInput_.isKeyboard());
}

TEST_F(LastInputTest, AShortcutIsAKeyToo) {
  key(*views_.contentItem(), Qt::Key_F8, QEvent::ShortcutOverride);
  EXPECT_TRUE(lastInput_.isKeyboard());
}

TEST_F(LastInputTest, AModifierAloneIsNone) {
  for (const int modifier : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_Meta})
    key(views_, modifier);
  EXPECT_FALSE(lastInput_.isKeyboard());
}

TEST_F(LastInputTest, WhatIsTypedInADialogSaysNothingAboutTheViews) {
  key(dialog_, Qt::Key_A);
  EXPECT_FALSE(lastInput_.isKeyboard());
  key(views_, Qt::Key_Space);
  key(dialog_, Qt::Key_A);
  EXPECT_TRUE(lastInput_.isKeyboard());
}

TEST_F(LastInputTest, APressInADialogIsThePointerStill) {
  key(views_, Qt::Key_Space);
  press(dialog_);
  EXPECT_FALSE(lastInput_.isKeyboard());
}

}  // namespace
}  // namespace dunmere

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
