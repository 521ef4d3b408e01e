// TrashRoom: a private folder with a home of its own, for tests that move things to the Trash.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "engine/file_url.h"
#include "engine/sweep_error.h"
#include "tests/support/child_process.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/own_mounts.h"

namespace dunmere::test {

/// Paths are raw bytes. Made before the child process that works in it; everything is removed at the end of the test.
class TrashRoom : public testing::Test {
 protected:
  TrashRoom();
  ~TrashRoom() override;

  /// Runs `body` in a child process whose home folder is home().
  void inRoom(const std::function<void()>& body) const;

  std::string path(const std::string& name) const { return root_ + "/" + name; }
  std::string home() const { return path("home"); }
  std::string dataHome() const { return path("home/data"); }
  std::string trash() const { return dataHome() + "/Trash"; }

  /// Moves the item to the Trash; the code is 0 for a success. `volumeName` is set from a failure.
  int moveToTrash(const std::string& itemPath);

  /// The Trash of its own of the volume that is mounted on the folder `name`.
  std::string volumeTrash(const std::string& name) const;

  std::string volumeName;
  MemoryFileSystem fileSystem;  ///< names the volumes

 private:
  std::string root_;
};

// Small file operations by raw path. Each fails the test when the system refuses.
void makeFolder(const std::string& path);
void makeFile(const std::string& path, const std::string& content);
void makeLink(const std::string& path, const std::string& target);
std::string contentOf(const std::string& path);
std::string linkTargetOf(const std::string& path);
bool isThere(const std::string& path);                        ///< the entry itself, links not followed
std::vector<std::string> namesIn(const std::string& folder);  ///< sorted; empty when there is no such folder
/// Of which items the Trash at `trash` has records: sorted names.
std::vector<std::string> namesOfRecords(const std::string& trash);
void removeTree(const std::string& path);

/// The value of `key` in a record of the Trash; the test fails when it is not there exactly once.
std::string recordValue(const std::string& record, const std::string& key);
std::string percentDecoded(const std::string& text);

}  // namespace dunmere::test
