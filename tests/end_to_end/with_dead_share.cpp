// Becomes a program that finds a share on a folder whose server never answers. Only that program sees it.
//
// usage: with_dead_share FOLDER COMMAND...
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>

#include "tests/support/dead_share.h"
#include "tests/support/own_mounts.h"

int main(int, char** arguments) try {
  const std::string folder = arguments[1];
  dunmere::test::enterPrivateMounts();
  const auto server = dunmere::test::mountShare(folder, folder + "/node");
  ::fcntl(server.get(), F_SETFD, 0);  // stays open in the program, which never reads from it
  ::execvp(arguments[2], arguments + 2);
  std::perror(arguments[2]);
  return 127;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 126;
}
