// SilentShare: a mounted share whose server answers at first, and then never again.
#pragma once

#include <linux/fuse.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stop_token>
#include <string>
#include <thread>

#include "tests/support/dead_share.h"

namespace dunmere::test {

/// Every name in it is that of an empty file. To be mounted in a process with mounts of its own.
class SilentShare {
 public:
  SilentShare(const std::string& mountPoint, const std::string& nodePath)
      : server_(mountShare(mountPoint, nodePath)), thread_([this](const std::stop_token& stop) { serve(stop); }) {}

  /// Nothing that is asked from now on is even read, so that whoever waits can still be killed.
  void fallSilent() {
    thread_.request_stop();
    thread_.join();
  }

 private:
  static constexpr std::uint64_t kItem = 2;  // every file's number; the root folder's is 1

  void serve(const std::stop_token& stop) {
    std::array<std::byte, FUSE_MIN_READ_BUFFER * 2> request;
    while (!stop.stop_requested()) {
      pollfd asked{server_.get(), POLLIN, 0};
      if (::poll(&asked, 1, 5) <= 0) continue;
      const ssize_t length = ::read(server_.get(), request.data(), request.size());
      if (length < static_cast<ssize_t>(sizeof(fuse_in_header))) continue;
      fuse_in_header header;
      std::memcpy(&header, request.data(), sizeof header);
      answer(header);
    }
  }

  void answer(const fuse_in_header& header) {
    switch (header.opcode) {
      case FUSE_INIT: {
        fuse_init_out out{};
        out.major = FUSE_KERNEL_VERSION;
        out.minor = FUSE_KERNEL_MINOR_VERSION;
        out.max_write = 4096;
        return send(header, &out, sizeof out);
      }
      case FUSE_LOOKUP: {
        fuse_entry_out out{};
        out.nodeid = kItem;
        out.attr = attributesOf(kItem);
        return send(header, &out, sizeof out);
      }
      case FUSE_GETATTR: {
        fuse_attr_out out{};
        out.attr = attributesOf(header.nodeid);
        return send(header, &out, sizeof out);
      }
      case FUSE_STATFS: {
        const fuse_statfs_out out{};
        return send(header, &out, sizeof out);
      }
      case FUSE_FORGET:
      case FUSE_BATCH_FORGET:
        return;  // wants no answer
      default:
        return send(header, nullptr, 0, -ENOSYS);
    }
  }

  static fuse_attr attributesOf(std::uint64_t node) {
    fuse_attr attributes{};
    attributes.ino = node;
    attributes.mode = node == kItem ? S_IFREG | 0644 : S_IFDIR | 0755;
    attributes.nlink = 1;
    return attributes;
  }

  void send(const fuse_in_header& request, const void* body, std::size_t bytes, int error = 0) {
    std::array<std::byte, 256> message;
    fuse_out_header header{};
    header.len = static_cast<std::uint32_t>(sizeof header + bytes);
    header.error = error;
    header.unique = request.unique;
    std::memcpy(message.data(), &header, sizeof header);
    if (bytes > 0) std::memcpy(message.data() + sizeof header, body, bytes);
    // Whoever asked may have gone meanwhile.
    [[maybe_unused]] const ssize_t written = ::write(server_.get(), message.data(), header.len);
  }

  const UniqueDescriptor server_;
  std::jthread thread_;
};

}  // namespace dunmere::test
