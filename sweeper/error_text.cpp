#include "sweeper/error_text.h"

#include <cerrno>

#include "sweeper/display_text.h"

namespace dunmere {

namespace {

bool isPermissionFailure(const std::error_code& code) {
  return code == std::errc::permission_denied || code == std::errc::operation_not_permitted;
}

std::string quoted(const std::string& name) {
  return "“" + displayText(name) + "”";
}

std::string openFolderText(const std::string& name, const std::error_code& code) {
  const std::string failure = "The file " + quoted(name) + " couldn’t be opened";
  if (code == std::errc::no_such_file_or_directory) return failure + " because there is no such file.";
  if (isPermissionFailure(code)) return failure + " because you don’t have permission to view it.";
  if (code == std::errc::filename_too_long) return failure + " because its name is invalid.";
  return failure + ".";
}

std::string noTrashText(const std::string& failure, const std::string& volumeName) {
  if (volumeName.empty()) return failure + " because its volume doesn’t have one.";
  return failure + " because the volume " + quoted(volumeName) + " doesn’t have one.";
}

bool isOutOfSpace(const std::error_code& code) {
  // The quota's code has no std::errc name.
  return code == std::errc::no_space_on_device || code == std::error_code(EDQUOT, std::generic_category());
}

// These have no std::errc name either, or one that says something else.

bool isReplaced(const std::error_code& code) {
  return code == std::error_code(ESTALE, std::generic_category());
}

bool isInTrash(const std::error_code& code) {
  return code == std::error_code(EALREADY, std::generic_category());
}

bool holdsTrash(const std::error_code& code) {
  return code == std::error_code(EDEADLK, std::generic_category());
}

std::string moveToTrashText(const SweepError& error) {
  const std::string name = error.path.lastPathComponent();
  const std::string failure = quoted(name) + " couldn’t be moved to the trash";
  const std::error_code& code = error.code;
  if (isPermissionFailure(code)) return failure + " because you don’t have permission to access it.";
  if (code == std::errc::not_supported || code == std::errc::operation_not_supported) {
    return noTrashText(failure, error.volumeName);
  }
  if (code == std::errc::no_such_file_or_directory) return "The file " + quoted(name) + " doesn’t exist.";
  if (code == std::errc::read_only_file_system) {
    return "You can’t save the file " + quoted(name) + " because the volume is read only.";
  }
  if (isOutOfSpace(code)) return "You can’t save the file " + quoted(name) + " because there isn’t enough space.";
  if (code == std::errc::filename_too_long) return failure + " because its name is too long.";
  if (isReplaced(code)) return failure + " because something else has taken its place.";
  if (code == std::errc::directory_not_empty) {
    return failure + " because you don’t have permission to delete all of it.";
  }
  if (isInTrash(code)) return failure + " because it is in the trash already.";
  if (holdsTrash(code)) return failure + " because it holds the trash.";
  if (code == std::errc::device_or_resource_busy) return failure + " because a volume is mounted in it.";
  return failure + ".";
}

}  // namespace

std::string errorText(const SweepError& error) {
  switch (error.attempt) {
    case SweepAttempt::startScan:
      return "The file couldn’t be opened.";
    case SweepAttempt::openFolder:
      return openFolderText(error.path.lastPathComponent(), error.code);
    case SweepAttempt::moveToTrash:
      return moveToTrashText(error);
  }
  return {};
}

}  // namespace dunmere
