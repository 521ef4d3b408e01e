#include "tests/support/system_faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>

namespace dunmere::test {

namespace {

constexpr int kNone = -1;

std::atomic<int> failing = kNone;  // a Fallible
std::atomic<int> callsLeft = 0;    // until the first one to fail
std::atomic<int> failingError = 0;
std::atomic<bool> isLasting = false;
std::atomic<bool> hasAnyFailed = false;
thread_local bool isSpared = false;

/// Whether this call is to fail; sets errno then.
bool fails(Fallible call) {
  if (failing != static_cast<int>(call) || isSpared) return false;
  const int left = --callsLeft;
  if (left > 0 || (left < 0 && !isLasting)) return false;
  hasAnyFailed = true;
  errno = failingError;
  return true;
}

}  // namespace

FailingCall::FailingCall(Fallible call, int first, int error, Manner manner) {
  callsLeft = first;
  failingError = error;
  isLasting = manner.lasting;
  isSpared = manner.sparesCaller;
  hasAnyFailed = false;
  failing = static_cast<int>(call);
}

FailingCall::~FailingCall() {
  failing = kNone;
  isSpared = false;
}

bool FailingCall::hasFailed() const {
  return hasAnyFailed;
}

}  // namespace dunmere::test

// The executable's own functions take precedence over those of the shared C and C++ libraries.

using dunmere::test::fails;
using dunmere::test::Fallible;

extern "C" {

int openat(int folder, const char* path, int flags, ...) {
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  if (fails(Fallible::open)) return -1;
  return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

// What openat() is called in code that is compiled with _FORTIFY_SOURCE.
int __openat_2(int folder, const char* path, int flags) {
  return openat(folder, path, flags, 0);
}

ssize_t getdents64(int folder, void* buffer, size_t bytes) noexcept {
  if (fails(Fallible::getdents)) return -1;
  return ::syscall(SYS_getdents64, folder, buffer, bytes);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept {
  if (fails(Fallible::statx)) return -1;
  return static_cast<int>(::syscall(SYS_statx, folder, path, flags, mask, status));
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
  if (fails(Fallible::thread)) return EAGAIN;
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(::dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

}  // extern "C"

namespace {

void* allocate(std::size_t bytes) noexcept {
  return fails(Fallible::memory) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
}

void* allocateOrThrow(std::size_t bytes) {
  if (void* memory = allocate(bytes)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// Every form that a sanitizer has one of its own of, or memory would be given back to somebody else.

void* operator new(std::size_t bytes) {
  return allocateOrThrow(bytes);
}

void* operator new[](std::size_t bytes) {
  return allocateOrThrow(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
