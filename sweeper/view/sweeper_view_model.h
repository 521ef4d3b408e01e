// SweeperViewModel: a sweeper pane as its views see it.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QString>

#include "engine/file_system.h"
#include "sweeper/background.h"
#include "sweeper/desktop.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/main_thread.h"
#include "sweeper/view/column_list_model.h"
#include "sweeper/view/volume_list_model.h"

namespace dunmere {

/// Owns one DiskSweeperPane and binds it: every property mirrors the pane and tells only real changes; every action is
/// one call of the pane. Views name volumes, columns and rows by number, never by path; a number that has no row is
/// ignored. All texts are for the screen and plain. Main thread. The collaborators must outlive every scan.
class SweeperViewModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Made by the application, with its collaborators.")
  Q_PROPERTY(bool browsing READ browsing NOTIFY browsingChanged FINAL)
  Q_PROPERTY(QString loadErrorText READ loadErrorText NOTIFY loadErrorTextChanged FINAL)  ///< empty for none
  Q_PROPERTY(dunmere::VolumeListModel* volumes READ volumes CONSTANT FINAL)
  Q_PROPERTY(int selectedVolume READ selectedVolume NOTIFY selectedVolumeChanged FINAL)  ///< row, -1 for none
  Q_PROPERTY(bool canSweepSelected READ canSweepSelected NOTIFY canSweepSelectedChanged FINAL)
  Q_PROPERTY(bool showsStatusStrip READ showsStatusStrip NOTIFY showsStatusStripChanged FINAL)
  Q_PROPERTY(QString statusStripText READ statusStripText NOTIFY statusStripTextChanged FINAL)
  Q_PROPERTY(dunmere::ColumnListModel* columns READ columns CONSTANT FINAL)
  Q_PROPERTY(QString footerStatus READ footerStatus NOTIFY footerStatusChanged FINAL)
  Q_PROPERTY(bool canTrash READ canTrash NOTIFY canTrashChanged FINAL)
  Q_PROPERTY(bool canReveal READ canReveal NOTIFY canRevealChanged FINAL)
  Q_PROPERTY(QString trashConfirmTitle READ trashConfirmTitle NOTIFY trashConfirmTitleChanged FINAL)
  Q_PROPERTY(bool confirmTrash READ confirmTrash NOTIFY confirmTrashChanged FINAL)

 public:
  SweeperViewModel(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread, Background& background,
                   BoolBinding pendingGoToDrives, QObject* parent = nullptr);

  bool browsing() const { return shown_.browsing; }
  const QString& loadErrorText() const { return shown_.loadErrorText; }
  VolumeListModel* volumes() { return &volumes_; }
  int selectedVolume() const { return shown_.selectedVolume; }
  bool canSweepSelected() const { return shown_.canSweepSelected; }
  bool showsStatusStrip() const { return shown_.showsStatusStrip; }
  const QString& statusStripText() const { return shown_.statusStripText; }
  ColumnListModel* columns() { return &columns_; }
  const QString& footerStatus() const { return shown_.footerStatus; }
  bool canTrash() const { return shown_.canTrash; }
  bool canReveal() const { return shown_.canReveal; }
  const QString& trashConfirmTitle() const { return shown_.trashConfirmTitle; }
  bool confirmTrash() const { return shown_.confirmTrash; }

  /// The pane's view came on screen.
  Q_INVOKABLE void appear() { pane_.appear(); }
  /// The owner of the flag changed it.
  Q_INVOKABLE void pendingGoToDrivesChanged() { pane_.pendingGoToDrivesChanged(); }
  Q_INVOKABLE void selectVolume(int row);  ///< -1 selects none
  Q_INVOKABLE void startSweepSelectedVolume() { pane_.startSweepSelectedVolume(); }
  /// The chooser is modal and runs the event loop: this object may be gone when it returns.
  Q_INVOKABLE void openFolderSweep() { pane_.openFolderSweep(); }
  Q_INVOKABLE void selectRow(int column, int row);
  Q_INVOKABLE void requestTrash() { pane_.requestTrash(); }
  Q_INVOKABLE void dismissTrash() { pane_.dismissTrash(); }
  Q_INVOKABLE void confirmedTrash() { pane_.confirmedTrash(); }
  Q_INVOKABLE void reveal() { pane_.reveal(); }

 Q_SIGNALS:
  void browsingChanged();
  void loadErrorTextChanged();
  void selectedVolumeChanged();
  void canSweepSelectedChanged();
  void showsStatusStripChanged();
  void statusStripTextChanged();
  void footerStatusChanged();
  void canTrashChanged();
  void canRevealChanged();
  void trashConfirmTitleChanged();
  void confirmTrashChanged();

 private:
  struct Shown {
    bool browsing = false;
    QString loadErrorText;
    int selectedVolume = -1;
    bool canSweepSelected = false;
    bool showsStatusStrip = false;
    QString statusStripText;
    QString footerStatus;
    bool canTrash = false;
    bool canReveal = false;
    QString trashConfirmTitle;
    bool confirmTrash = false;
  };

  Shown readPane() const;
  int selectedVolumeRow() const;
  void paneChanged();
  void tellChangesSince(const Shown& before);

  VolumeListModel volumes_;
  ColumnListModel columns_;
  Shown shown_;
  DiskSweeperPane pane_;
};

}  // namespace dunmere
