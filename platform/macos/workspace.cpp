#include "platform/macos/workspace.h"

#include "platform/macos/objective_c.h"

namespace dunmere {

namespace {

using objective_c::classNamed;
using objective_c::send;

id sharedWorkspace() {
  return send(classNamed("NSWorkspace"), "sharedWorkspace");
}

}  // namespace

bool openUrl(const std::string& url) {
  const objective_c::AutoreleasePool pool;
  const id parsed = send(classNamed("NSURL"), "URLWithString:", objective_c::stringOf(url));
  return parsed != nullptr && send<BOOL>(sharedWorkspace(), "openURL:", parsed);
}

void revealItem(const std::string& path) {
  const objective_c::AutoreleasePool pool;
  const id url = objective_c::fileUrlOf(path);
  if (url == nullptr) return;  // an array takes no nil
  const id urls = send(classNamed("NSArray"), "arrayWithObject:", url);
  send<void>(sharedWorkspace(), "activateFileViewerSelectingURLs:", urls);
}

}  // namespace dunmere
