#include "tests/view/shell/shell_harness.h"

#include <QtQml>
#include <vector>

#include "tests/support/background_queue.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/fake_url_opener.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

void registerShellHarness() {
  qmlRegisterType<ShellHarness>("Dunmere.ShellTest", 1, 0, "ShellHarness");
}
Q_COREAPP_STARTUP_FUNCTION(registerShellHarness)

}  // namespace

struct ShellHarness::World {
  MemoryFileSystem fileSystem;
  FakeDesktop desktop;
  MainThreadQueue mainThread;
  BackgroundQueue background;
  FakeUrlOpener urlOpener;

  static World& make() {
    static std::vector<std::unique_ptr<World>>* const worlds = new std::vector<std::unique_ptr<World>>;
    return *worlds->emplace_back(std::make_unique<World>());
  }
};

ShellHarness::ShellHarness(QObject* parent) : QObject(parent), world_(World::make()) {
  world_.fileSystem.addFile("/data/film", 7'000);
  world_.desktop.nextChoice = FileUrl("/data");
  content_ = std::make_unique<ContentModel>(world_.fileSystem, world_.desktop, world_.mainThread, world_.background,
                                            world_.urlOpener);
  connect(content_.get(), &ContentModel::pendingGoToDrivesChanged, this,
          [this] { requests_ += content_->pendingGoToDrives() ? 1 : 0; });
}

ShellHarness::~ShellHarness() = default;

QStringList ShellHarness::askedUrls() const {
  QStringList urls;
  for (const std::string& url : world_.urlOpener.asked) urls.append(QString::fromStdString(url));
  return urls;
}

void ShellHarness::selectNone() {
  content_->setSelection(std::nullopt);
}

bool ShellHarness::sweepToTheEnd() {
  content_->pane()->openFolderSweep();
  return world_.mainThread.runUntil([this] { return !content_->pane()->showsStatusStrip(); });
}

}  // namespace dunmere::test
