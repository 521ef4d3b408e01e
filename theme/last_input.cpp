#include "theme/last_input.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

namespace dunmere {
namespace {

/// Whether it goes to the views: what is typed in another dialog of the program says nothing about them.
bool isOfTheViews(const QObject& receiver) {
  return qobject_cast<const QQuickWindow*>(&receiver) != nullptr ||
         qobject_cast<const QQuickItem*>(&receiver) != nullptr;
}

bool isKey(const QEvent& event) {
  // A key that is a shortcut is never seen pressed.
  if (event.type() != QEvent::KeyPress && event.type() != QEvent::ShortcutOverride) return false;
  switch (static_cast<const QKeyEvent&>(event).key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
      return false;  // alone as often held for the mouse
    default:
      return true;
  }
}

}  // namespace

LastInput::LastInput(QObject* parent) : QObject(parent) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool LastInput::eventFilter(QObject* watched, QEvent* event) {
  if (isKey(*event) && isOfTheViews(*watched)) setKeyboard(true);
  if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) setKeyboard(false);
  return QObject::eventFilter(watched, event);
}

void LastInput::setKeyboard(bool isKeyboard) {
  if (isKeyboard == isKeyboard_) return;
  isKeyboard_ = isKeyboard;
  Q_EMIT isKeyboardChanged();
}

}  // namespace dunmere
