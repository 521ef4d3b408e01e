// ShellHarness: gives QML tests a real content model over a file system in memory.
#pragma once

#include <QObject>
#include <QStringList>
#include <memory>

#include "shell/content_model.h"

namespace dunmere::test {

/// Main thread.
class ShellHarness : public QObject {
  Q_OBJECT
  Q_PROPERTY(dunmere::ContentModel* content READ content CONSTANT FINAL)
  Q_PROPERTY(bool pendingGoToDrives READ pendingGoToDrives)
  Q_PROPERTY(int requests READ requests)
  Q_PROPERTY(QStringList askedUrls READ askedUrls)

 public:
  explicit ShellHarness(QObject* parent = nullptr);
  ~ShellHarness() override;

  ContentModel* content() const { return content_.get(); }
  bool pendingGoToDrives() const { return content_->pendingGoToDrives(); }
  /// How often the request to go to the drives was raised.
  int requests() const { return requests_; }
  QStringList askedUrls() const;

  Q_INVOKABLE void selectNone();
  /// Sweeps a folder to the end in the shown pane; false when it did not end.
  Q_INVOKABLE bool sweepToTheEnd();

 private:
  // A scan may use these after the harness is gone, so they are never destroyed.
  struct World;

  World& world_;
  std::unique_ptr<ContentModel> content_;
  int requests_ = 0;
};

}  // namespace dunmere::test
