// window_probe: measures one thing in the application's real window and prints it as JSON.
//
//   first-frame              when the first frame was on the screen, in nanoseconds of the monotonic clock, and the
//                            most memory until then, in bytes
//   drives                   frames while the list of drives is asked for again
//   sweep ROOT [NAME...]     frames of the window at rest, while it begins a sweep of ROOT and while it sweeps it; each
//                            NAME is a folder to open in one more column as soon as the sweep has begun
//   end ROOT [NAME...]       the same sweep in a window that paints only what the sweep changes: when it ends
//   column ROOT NAME         frames while the folder ROOT/NAME opens, a row in it is selected, and it is listed again;
//                            when its rows were there after the click
//   uncounted ROOT NAME      when the rows of the folder ROOT/NAME were there, clicked as soon as a sweep has begun
//
// --software paints without OpenGL. All times but the first are in seconds.
#include <dlfcn.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QApplication>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/json_text.h"
#include "bench/peak_memory.h"
#include "bench/window/frame_recorder.h"
#include "bench/window/window_run.h"
#include "engine/file_system.h"
#include "platform/platform_file_system.h"

namespace dunmere::bench {
namespace {

using std::chrono_literals::operator""ms;
using Clock = FrameRecorder::Clock;

// ---- How long the main thread is busy at a stretch: from the end of one wait for events to the next wait ----

Clock::time_point stretchBegin;
std::chrono::nanoseconds longestStretch{0};  // waits for answers included

bool isMainThread() {
  static const pid_t process = ::getpid();
  return ::syscall(SYS_gettid) == process;
}

/// Around a wait for events that is not over at once.
template <typename Wait>
int wait(bool mayBlock, Wait forEvents) {
  const bool endsStretch = mayBlock && isMainThread();
  if (endsStretch) longestStretch = std::max<std::chrono::nanoseconds>(longestStretch, Clock::now() - stretchBegin);
  const int result = forEvents();
  if (endsStretch) stretchBegin = Clock::now();
  return result;
}

template <typename Function>
Function realFunction(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

void startStretches() {
  stretchBegin = Clock::now();
  longestStretch = {};
}

// ---- The probe ----

constexpr int kBadUsage = 2;

struct Options {
  bool software = false;
  std::string what;
  std::string root = "/nonexistent";
  std::vector<std::string> names;
};

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  std::vector<std::string> words;
  for (const std::string& argument : arguments) {
    if (argument == "--software") {
      options.software = true;
    } else {
      words.push_back(argument);
    }
  }
  const bool complete = !words.empty() && (((words[0] == "first-frame" || words[0] == "drives") && words.size() == 1) ||
                                           ((words[0] == "sweep" || words[0] == "end") && words.size() >= 2) ||
                                           ((words[0] == "column" || words[0] == "uncounted") && words.size() == 3));
  if (!complete) {
    std::cerr << "usage: window_probe [--software] first-frame | drives | sweep|end ROOT [NAME...] | "
                 "column|uncounted ROOT NAME\n";
    std::exit(kBadUsage);
  }
  options.what = words[0];
  if (words.size() > 1) options.root = words[1];
  if (words.size() > 2) options.names.assign(words.begin() + 2, words.end());
  return options;
}

/// Processor time of the calling thread.
double threadSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Runs steps one after another and tells the frames of each.
class Phases {
 public:
  Phases(WindowRun& window, JsonText& json) : window_(window), json_(json) {}

  template <typename Step>
  void measure(std::string_view name, Step step) {
    startStretches();
    const double usedBefore = threadSeconds();
    const Clock::time_point start = Clock::now();
    step();
    const Clock::time_point end = Clock::now();
    const double used = threadSeconds() - usedBefore;
    const auto stretch = longestStretch;
    const std::size_t seen = window_.frames().frames();
    while (window_.frames().frames() == seen) window_.run(5ms);
    const FrameIntervals intervals = window_.frames().between(start, end);
    json_.key(name).openObject();
    json_.key("seconds").seconds(std::chrono::duration<double>(end - start).count());
    json_.key("mainThreadSeconds").seconds(used);
    json_.key("longestStretch").seconds(std::chrono::duration<double>(stretch).count());
    json_.key("frames").integer(static_cast<std::int64_t>(intervals.count));
    json_.key("median").seconds(intervals.median);
    json_.key("percentile99").seconds(intervals.percentile99);
    json_.key("longest").seconds(intervals.longest);
    json_.closeObject();
  }

  void rest(std::string_view name) {
    measure(name, [this] { window_.run(2000ms); });
  }

 private:
  WindowRun& window_;
  JsonText& json_;
};

void measureDrives(FileSystem& fileSystem, JsonText& json) {
  WindowRun window(fileSystem, {}, true);
  Phases phases(window, json);
  phases.rest("rest");
  phases.measure("drives", [&] {
    window.goToDrives();
    window.run(2000ms);
  });
  json.key("shown").integer(window.pane().volumes()->count());
}

/// Counts what a healthy disk must never cause: columns whose rows vanish, and errors.
class Disturbances {
 public:
  explicit Disturbances(SweeperViewModel& pane) : pane_(pane) {
    QObject::connect(&pane, &SweeperViewModel::loadErrorTextChanged, &context_, [this] {
      if (!pane_.loadErrorText().isEmpty()) ++errors_;
    });
    QObject::connect(pane.columns(), &ColumnListModel::rowsInserted, &context_, [this] { watchColumns(); });
  }

  int vanished() const { return vanished_; }
  int errors() const { return errors_; }

 private:
  void watchColumns() {
    const ColumnListModel& columns = *pane_.columns();
    for (int column = watched_; column < columns.count(); ++column) {
      auto* const rows = columns.data(columns.index(column), ColumnListModel::RowsRole).value<RowListModel*>();
      QObject::connect(rows, &RowListModel::updated, &context_, [this, rows] {
        if (rows->count() == 0) ++vanished_;
      });
    }
    watched_ = columns.count();
  }

  SweeperViewModel& pane_;
  QObject context_;
  int watched_ = 0;
  int vanished_ = 0;
  int errors_ = 0;
};

void measureFirstFrame(FileSystem& fileSystem, const Options& options, JsonText& json) {
  WindowRun window(fileSystem, options.root, false);
  json.key("firstFrame").integer(std::chrono::nanoseconds(window.frames().firstFrame().time_since_epoch()).count());
  json.key("peakRssBytes").integer(peakRssBytes().value_or(0));
}

void measureSweep(FileSystem& fileSystem, const Options& options, JsonText& json) {
  const bool animated = options.what == "sweep";
  WindowRun window(fileSystem, options.root, animated);
  Phases phases(window, json);
  const Disturbances disturbances(window.pane());
  if (animated) phases.rest("rest");
  const Clock::time_point start = Clock::now();
  phases.measure("begin", [&] {
    window.pane().openFolderSweep();
    for (const std::string& name : options.names) {
      const int column = window.pane().columns()->count() - 1;
      window.pane().selectRow(column, window.lastRowNamed(column, QString::fromStdString(name)));
    }
  });
  Clock::time_point end;
  phases.measure("sweep", [&] {
    window.runUntilSweepEnds();
    end = Clock::now();
  });
  json.key("vanished").integer(disturbances.vanished());
  json.key("errors").integer(disturbances.errors());
  json.key("sweepSeconds").seconds(std::chrono::duration<double>(end - start).count());
  json.key("status").text(window.pane().statusStripText().toStdString());
}

/// From the click on a folder of the first column until the second one has rows.
double secondsUntilRows(WindowRun& window, int row) {
  const Clock::time_point click = Clock::now();
  window.pane().selectRow(0, row);
  window.runUntilColumnHasRows(1);
  return std::chrono::duration<double>(Clock::now() - click).count();
}

void measureUncounted(FileSystem& fileSystem, const Options& options, JsonText& json) {
  WindowRun window(fileSystem, options.root, false);
  window.pane().openFolderSweep();
  const int row = window.lastRowNamed(0, QString::fromStdString(options.names.front()));
  json.key("rowsSeconds").seconds(secondsUntilRows(window, row));
  json.key("status").text(window.pane().statusStripText().toStdString());
}

void measureColumn(FileSystem& fileSystem, const Options& options, JsonText& json) {
  WindowRun window(fileSystem, options.root, true);
  Phases phases(window, json);
  window.pane().openFolderSweep();
  window.runUntilSweepEnds();
  const int row = window.lastRowNamed(0, QString::fromStdString(options.names.front()));
  const auto selectAndRun = [&](int column, int selected) {
    window.pane().selectRow(column, selected);
    window.run(1000ms);
  };
  phases.rest("rest");
  double untilRows = 0;
  phases.measure("open", [&] {
    untilRows = secondsUntilRows(window, row);
    window.run(1000ms);
  });
  json.key("rowsSeconds").seconds(untilRows);
  phases.measure("select", [&] { selectAndRun(1, 50'000); });
  phases.measure("listAgain", [&] {
    window.pane().confirmedTrash();
    window.run(1000ms);
  });
}

void measure(FileSystem& fileSystem, const Options& options, JsonText& json) {
  if (options.what == "first-frame") measureFirstFrame(fileSystem, options, json);
  if (options.what == "drives") measureDrives(fileSystem, json);
  if (options.what == "sweep" || options.what == "end") measureSweep(fileSystem, options, json);
  if (options.what == "uncounted") measureUncounted(fileSystem, options, json);
  if (options.what == "column") measureColumn(fileSystem, options, json);
}

}  // namespace
}  // namespace dunmere::bench

// Qt's event loops wait in one of these two, which stand before those of the C library.

extern "C" int poll(pollfd* files, nfds_t count, int milliseconds) {
  static const auto real = dunmere::bench::realFunction<int (*)(pollfd*, nfds_t, int)>("poll");
  return dunmere::bench::wait(milliseconds != 0, [&] { return real(files, count, milliseconds); });
}

extern "C" int ppoll(pollfd* files, nfds_t count, const timespec* span, const sigset_t* signals) {
  static const auto real =
      dunmere::bench::realFunction<int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
  const bool mayBlock = span == nullptr || span->tv_sec != 0 || span->tv_nsec != 0;
  return dunmere::bench::wait(mayBlock, [&] { return real(files, count, span, signals); });
}

int main(int argc, char* argv[]) {
  using namespace dunmere;
  const bench::Options options = bench::parseOptions({argv + 1, argv + argc});
  QQuickWindow::setGraphicsApi(options.software ? QSGRendererInterface::Software : QSGRendererInterface::OpenGL);
  QCoreApplication::setAttribute(Qt::AA_DisableShaderDiskCache);
  const QApplication application(argc, argv);
  const std::unique_ptr<FileSystem> fileSystem = makePlatformFileSystem();
  JsonText json;
  json.openObject();
  bench::measure(*fileSystem, options, json);
  json.closeObject();
  std::cout << json.str() << std::endl;
  std::_Exit(std::cout ? EXIT_SUCCESS : EXIT_FAILURE);
}
