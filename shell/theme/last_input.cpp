#include "shell/theme/last_input.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>

namespace dunmere {
namespace {

/// A modifier alone is as often held for the mouse.
bool isModifier(const QEvent& event) {
  switch (static_cast<const QKeyEvent&>(event).key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
      return true;
    default:
      return false;
  }
}

}  // namespace

LastInput::LastInput(QObject* parent) : QObject(parent) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool LastInput::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  // A key that is a shortcut is never seen pressed.
  if ((type == QEvent::KeyPress || type == QEvent::ShortcutOverride) && !isModifier(*event)) setKeyboard(true);
  if (type == QEvent::MouseButtonPress || type == QEvent::TouchBegin) setKeyboard(false);
  return QObject::eventFilter(watched, event);
}

void LastInput::setKeyboard(bool isKeyboard) {
  if (isKeyboard == isKeyboard_) return;
  isKeyboard_ = isKeyboard;
  emit isKeyboardChanged();
}

}  // namespace dunmere
