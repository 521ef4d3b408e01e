#include "platform/trash/gio_trash.h"

#include <gio/gio.h>

#include <cerrno>
#include <memory>

namespace dunmere {

namespace {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

int errnoOf(GIOErrorEnum code) {
  switch (code) {  // GIO may add codes at any time, hence the default
    case G_IO_ERROR_NOT_FOUND:
      return ENOENT;
    case G_IO_ERROR_EXISTS:
      return EEXIST;
    case G_IO_ERROR_NOT_DIRECTORY:
      return ENOTDIR;
    case G_IO_ERROR_FILENAME_TOO_LONG:
      return ENAMETOOLONG;
    case G_IO_ERROR_INVALID_FILENAME:
      return EINVAL;
    case G_IO_ERROR_TOO_MANY_LINKS:
      return ELOOP;
    case G_IO_ERROR_NO_SPACE:
      return ENOSPC;
    case G_IO_ERROR_PERMISSION_DENIED:  // EACCES and EPERM both arrive as this
      return EACCES;
    case G_IO_ERROR_READ_ONLY:
      return EROFS;
    case G_IO_ERROR_NOT_SUPPORTED:
      return ENOTSUP;
    case G_IO_ERROR_BUSY:
      return EBUSY;
    case G_IO_ERROR_TOO_MANY_OPEN_FILES:
      return EMFILE;
    case G_IO_ERROR_TIMED_OUT:
      return ETIMEDOUT;
    default:
      return EIO;
  }
}

}  // namespace

std::error_code moveToTrashWithGio(const std::string& path) {
  // The local implementation by name: the default one may load desktop modules and hand FUSE paths to a remote service.
  const std::unique_ptr<GFile, Unref> file(g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str()));
  g_autoptr(GError) error = nullptr;
  if (g_file_trash(file.get(), nullptr, &error)) return {};
  const bool isIoError = error != nullptr && error->domain == G_IO_ERROR;
  return {isIoError ? errnoOf(static_cast<GIOErrorEnum>(error->code)) : EIO, std::generic_category()};
}

}  // namespace dunmere
