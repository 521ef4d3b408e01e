#include "platform/macos/file_manager_trash.h"

#include <cerrno>
#include <vector>

#include "platform/macos/cocoa_error.h"
#include "platform/macos/objective_c.h"

namespace dunmere {

namespace {

using objective_c::classNamed;
using objective_c::send;

std::vector<CocoaError> chainOf(id error) {
  constexpr std::size_t kDeepest = 8;
  const id underlying = objective_c::stringOf("NSUnderlyingError");
  std::vector<CocoaError> chain;
  while (error != nullptr && chain.size() < kDeepest) {
    chain.push_back({.domain = objective_c::textOf(send(error, "domain")), .code = send<long>(error, "code")});
    error = send(send(error, "userInfo"), "objectForKey:", underlying);
  }
  return chain;
}

}  // namespace

std::expected<std::string, int> moveToTrashWithFileManager(const std::string& path) {
  const objective_c::AutoreleasePool pool;
  const id url = objective_c::fileUrlOf(path);
  if (url == nullptr) return std::unexpected(EINVAL);
  const id manager = send(classNamed("NSFileManager"), "defaultManager");
  id moved = nullptr;
  id error = nullptr;
  const bool isMoved = send<BOOL>(manager, "trashItemAtURL:resultingItemURL:error:", url, &moved, &error);
  if (!isMoved) return std::unexpected(errnoOf(chainOf(error)));
  const auto* const newPath = send<const char*>(moved, "fileSystemRepresentation");
  return newPath == nullptr ? "" : newPath;
}

}  // namespace dunmere
