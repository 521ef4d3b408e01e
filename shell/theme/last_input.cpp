#include "shell/theme/last_input.h"

#include <QCoreApplication>
#include <QEvent>

namespace dunmere {

LastInput::LastInput(QObject* parent) : QObject(parent) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool LastInput::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  // A key that is a shortcut is never seen pressed.
  if (type == QEvent::KeyPress || type == QEvent::ShortcutOverride) setKeyboard(true);
  if (type == QEvent::MouseButtonPress || type == QEvent::TouchBegin) setKeyboard(false);
  return QObject::eventFilter(watched, event);
}

void LastInput::setKeyboard(bool isKeyboard) {
  if (isKeyboard == isKeyboard_) return;
  isKeyboard_ = isKeyboard;
  emit isKeyboardChanged();
}

}  // namespace dunmere
