// FakeDesktop: answers what the test says and remembers what it was asked.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sweeper/desktop.h"

namespace dunmere::test {

class FakeDesktop : public Desktop {
 public:
  std::optional<FileUrl> nextChoice;            ///< what chooseFolder() returns
  std::optional<SweepError> nextTrashError;     ///< what moveToTrash() fails with
  std::function<void(const FileUrl&)> onTrash;  ///< runs when a trash succeeds
  std::vector<std::string> chooserMessages;
  std::vector<FileUrl> revealed;
  std::vector<FileUrl> trashed;

  std::optional<FileUrl> chooseFolder(const std::string& message) override {
    chooserMessages.push_back(message);
    return nextChoice;
  }
  void reveal(const FileUrl& url) override { revealed.push_back(url); }
  std::expected<void, SweepError> moveToTrash(const FileUrl& url) override {
    trashed.push_back(url);
    if (nextTrashError) return std::unexpected(*nextTrashError);
    if (onTrash) onTrash(url);
    return {};
  }
};

}  // namespace dunmere::test
