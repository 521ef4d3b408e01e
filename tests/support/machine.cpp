#include "tests/support/machine.h"

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "platform/posix/unique_descriptor.h"
#include "tests/support/automounter.h"
#include "tests/support/child_process.h"
#include "tests/support/dead_share.h"
#include "tests/support/own_mounts.h"
#include "tests/support/stepped_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {

namespace {

void check(bool succeeded) {
  if (!succeeded) throw std::system_error(errno, std::generic_category());
}

// Each tries the thing itself, in a process of its own with an empty folder, and throws where it is refused.

void tryPrivateMounts(const TemporaryTree& tree) {
  enterPrivateMounts();
  mountNew(tree.path(), "tmpfs");
}

void tryOverlayMounts(const TemporaryTree& tree) {
  enterPrivateMounts();
  mountVolume(tree.path("volume"));
}

void tryLoopDevices(const TemporaryTree& tree) {
  enterPrivateMounts();
  tree.sparseFile("image", 8 << 20);
  tree.folder("disk");
  mountImage(tree.path("image"), tree.path("disk"));
}

void tryBtrfs(const TemporaryTree& tree) {
  enterPrivateMounts();
  tree.sparseFile("image", 128 << 20);
  tree.folder("disk");
  mountBtrfs(tree.path("image"), tree.path("disk"));
  makeSubvolume(tree.path("disk/below"));
}

void tryFuse(const TemporaryTree& tree) {
  enterPrivateMounts();
  tree.folder("share");
  const DeadShare share(tree.path("share"), tree.path("node"));
}

void tryAutomounts(const TemporaryTree& tree) {
  enterPrivateMounts();
  const Automounter automounter;
  automounter.mountAt(tree.path(), "direct");
}

void tryTracing(const TemporaryTree&) {
  const int code = runStepped([] {}, [] { return 0; }, [](const SystemCallStop& stop) { stop.callAhead(); });
  check(code == 0);
}

void trySecondUser(const TemporaryTree& tree) {
  check(::chown(tree.path().c_str(), 1234, 1234) == 0);
  becomeNobody();
}

void tryThreadLimit(const TemporaryTree&) {
  forbidThreads();
  pthread_t thread;
  check(::pthread_create(&thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr) == EAGAIN);
}

void tryDeviceFiles(const TemporaryTree& tree) {
  tree.device("device");
}

void tryBlockDeviceFiles(const TemporaryTree& tree) {
  check(::mknod(tree.path("device").c_str(), S_IFBLK | 0600, makedev(60, 7)) == 0);
}

void trySys(const TemporaryTree&) {
  check(::access("/sys/kernel", F_OK) == 0);
}

void tryDisplay(const TemporaryTree&) {
  int ends[2];
  check(::pipe(ends) == 0);
  const UniqueDescriptor number(ends[0]);
  UniqueDescriptor told(ends[1]);
  const pid_t display = ::fork();
  if (display == 0) {
    ::dup2(told.get(), STDOUT_FILENO);
    ::execlp("Xvfb", "Xvfb", "-displayfd", "1", "-nolisten", "tcp", nullptr);
    ::_exit(1);
  }
  told = UniqueDescriptor();
  char digit = 0;
  const bool answers = ::read(number.get(), &digit, 1) == 1;
  ::kill(display, SIGTERM);
  ::waitpid(display, nullptr, 0);
  check(answers);
}

struct Known {
  Feature feature;
  std::string_view name;
  const char* refused;  ///< as in "this machine …"
  void (*attempt)(const TemporaryTree& tree);
};

constexpr std::array kKnown = std::to_array<Known>({
    {Feature::privateMounts, "privateMounts", "does not allow private mounts", tryPrivateMounts},
    {Feature::overlayMounts, "overlayMounts", "does not allow private overlay mounts", tryOverlayMounts},
    {Feature::loopDevices, "loopDevices", "does not allow loop devices", tryLoopDevices},
    {Feature::btrfs, "btrfs", "does not allow a btrfs on a loop device", tryBtrfs},
    {Feature::fuse, "fuse", "does not allow FUSE", tryFuse},
    {Feature::automounts, "automounts", "does not allow automount points", tryAutomounts},
    {Feature::tracing, "tracing", "does not allow tracing a process", tryTracing},
    {Feature::secondUser, "secondUser", "does not allow acting as a second user", trySecondUser},
    {Feature::threadLimit, "threadLimit", "does not allow limiting threads", tryThreadLimit},
    {Feature::deviceFiles, "deviceFiles", "does not allow making device files", tryDeviceFiles},
    {Feature::blockDeviceFiles, "blockDeviceFiles", "does not allow making block device files", tryBlockDeviceFiles},
    {Feature::sys, "sys", "does not show /sys", trySys},
    {Feature::display, "display", "does not allow a virtual display", tryDisplay},
});

}  // namespace

std::optional<Feature> featureNamed(std::string_view name) {
  const auto known = std::ranges::find(kKnown, name, &Known::name);
  return known == kKnown.end() ? std::nullopt : std::optional(known->feature);
}

std::string refusalOf(Feature feature) {
  const Known& known = *std::ranges::find(kKnown, feature, &Known::feature);
  const TemporaryTree tree;
  const ChildResult tried = runInChild([&] {
    known.attempt(tree);
    return 0;
  });
  return tried.exitCode == 0 ? "" : std::string("Not run: this machine ") + known.refused;
}

}  // namespace dunmere::test
