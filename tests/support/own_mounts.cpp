#include "tests/support/own_mounts.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

namespace {

void check(bool succeeded, const std::string& attempt) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), attempt);
}

void run(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

void writeText(const char* path, const std::string& text) {
  std::ofstream file(path);
  check(static_cast<bool>(file << text << std::flush), path);
}

/// Stays the same user, who may mount there.
void enterUserNamespace() {
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  check(::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", user + " " + user + " 1");
  writeText("/proc/self/gid_map", group + " " + group + " 1");
}

UniqueDescriptor openPlace(const char* path) {
  UniqueDescriptor place(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
  check(static_cast<bool>(place), path);
  return place;
}

/// Only a whole mount can be made private, and a changed root need not be one.
void makeMountsPrivate() {
  const UniqueDescriptor root = openPlace("/");
  const UniqueDescriptor here = openPlace(".");
  const UniqueDescriptor mounts(::open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC));
  check(::setns(mounts.get(), CLONE_NEWNS) == 0, "leaving the changed root");
  check(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "making the mounts private");
  check(::fchdir(root.get()) == 0 && ::chroot(".") == 0 && ::fchdir(here.get()) == 0, "going back");
}

}  // namespace

ChildResult runWithOwnMounts(const std::function<int()>& work) {
  return runInChild([&work] {
    enterPrivateMounts();
    return work();
  });
}

void enterPrivateMounts() {
  if (::unshare(CLONE_NEWNS) != 0) enterUserNamespace();
  makeMountsPrivate();
}

void mountNew(const std::string& path, const std::string& type, const std::string& options) {
  check(::mount(type.c_str(), path.c_str(), type.c_str(), 0, options.c_str()) == 0, "mounting " + path);
}

void mountAgain(const std::string& from, const std::string& to) {
  check(::mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "mounting " + from + " again");
}

void remountReadOnly(const std::string& path) {
  check(::mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0, "remounting " + path);
}

void mountVolume(const std::string& path, const std::string& options) {
  const std::string layers = path + ".layers";
  for (const std::string& folder : {path, layers}) check(::mkdir(folder.c_str(), 0755) == 0, folder);
  mountNew(layers, "tmpfs", options);
  for (const std::string layer : {"/lower", "/upper", "/work"}) {
    check(::mkdir((layers + layer).c_str(), 0755) == 0, layer);
  }
  mountNew(path, "overlay", "lowerdir=" + layers + "/lower,upperdir=" + layers + "/upper,workdir=" + layers + "/work");
}

void mountImage(const std::string& image, const std::string& path) {
  run("mke2fs -q -F '" + image + "' && mount -o loop '" + image + "' '" + path + "'");
}

void mountBtrfs(const std::string& image, const std::string& path) {
  run("mkfs.btrfs -q -f '" + image + "' > /dev/null && mount -o loop '" + image + "' '" + path + "'");
}

void makeSubvolume(const std::string& path) {
  run("btrfs subvolume create '" + path + "' > /dev/null");
}

void makeSnapshot(const std::string& from, const std::string& path) {
  run("btrfs subvolume snapshot -r '" + from + "' '" + path + "' > /dev/null");
}

}  // namespace dunmere::test
