#include "platform/desktop/qt_main_thread.h"

#include <QMetaObject>
#include <QObject>
#include <utility>

namespace dunmere {

QtMainThread::QtMainThread() : receiver_(std::make_unique<QObject>()) {}

QtMainThread::~QtMainThread() {
  closeForQuit();
}

void QtMainThread::post(std::function<void()> work) {
  const MutexLock lock(mutex_);
  if (!receiver_) return;
  QMetaObject::invokeMethod(receiver_.get(), std::move(work), Qt::QueuedConnection);
}

void QtMainThread::closeForQuit() {
  std::unique_ptr<QObject> receiver;
  {
    const MutexLock lock(mutex_);
    receiver.swap(receiver_);
  }
  // Destroyed here with its queued work, without the lock: destructors of that work may call post().
}

}  // namespace dunmere
