// LastInput: whether the user's last input came from the keyboard.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>

namespace dunmere {

/// Views show where the keyboard is only to those who use it. Watches the whole application, on its main thread.
class LastInput : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  /// False before the first input. A modifier alone is none, nor is a key typed outside of the views.
  Q_PROPERTY(bool isKeyboard READ isKeyboard NOTIFY isKeyboardChanged FINAL)

 public:
  explicit LastInput(QObject* parent = nullptr);

  bool isKeyboard() const { return isKeyboard_; }
  bool eventFilter(QObject* watched, QEvent* event) override;

 Q_SIGNALS:
  void isKeyboardChanged();

 private:
  void setKeyboard(bool isKeyboard);

  bool isKeyboard_ = false;
};

}  // namespace dunmere
