// DeadShare: a mounted share whose server never answers.
#pragma once

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

/// The kernel's end of a share mounted on the folder `mountPoint`, where what it is asked can be read and answered. To
/// be mounted in a process with mounts of its own. `nodePath` is free for a device node, which a small system may lack.
inline UniqueDescriptor mountShare(const std::string& mountPoint, const std::string& nodePath) {
  const auto check = [](bool succeeded, const std::string& what) {
    if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
  };
  UniqueDescriptor device(::open("/dev/fuse", O_RDWR | O_CLOEXEC));
  if (!device) {
    check(::mknod(nodePath.c_str(), S_IFCHR | 0600, ::makedev(10, 229)) == 0, nodePath);
    device = UniqueDescriptor(::open(nodePath.c_str(), O_RDWR | O_CLOEXEC));
    check(static_cast<bool>(device), nodePath);
  }
  const std::string options = "fd=" + std::to_string(device.get()) +
                              ",rootmode=40000,user_id=" + std::to_string(::geteuid()) +
                              ",group_id=" + std::to_string(::getegid());
  check(::mount("host:/share", mountPoint.c_str(), "fuse.sshfs", 0, options.c_str()) == 0, mountPoint);
  return device;
}

/// Whoever asks it anything waits for ever, or until it is gone.
class DeadShare {
 public:
  /// As for mountShare().
  DeadShare(const std::string& mountPoint, const std::string& nodePath) : server_(mountShare(mountPoint, nodePath)) {}

  /// The server ends: whoever waits gets an error.
  void end() { server_ = UniqueDescriptor(); }

 private:
  UniqueDescriptor server_;
};

}  // namespace dunmere::test
