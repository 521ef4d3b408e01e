// FakeDesktop: answers what the test says and remembers what it was asked.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sweeper/desktop.h"

namespace dunmere::test {

class FakeDesktop : public Desktop {
 public:
  std::optional<FileUrl> nextChoice;            ///< what chooseFolder() returns
  std::optional<SweepError> nextTrashError;     ///< what a move to the Trash fails with
  std::function<void(const FileUrl&)> onTrash;  ///< runs when a trash succeeds
  std::vector<std::string> chooserMessages;
  std::vector<FileUrl> revealed;
  std::vector<FileUrl> held;     ///< every item held so far
  int heldNow = 0;               ///< how many of them are held still
  std::vector<FileUrl> trashed;  ///< every item that was asked to move

  std::optional<FileUrl> chooseFolder(const std::string& message) override {
    chooserMessages.push_back(message);
    return nextChoice;
  }
  void reveal(const FileUrl& url) override { revealed.push_back(url); }
  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override {
    held.push_back(url);
    return std::make_unique<Item>(*this, url);
  }

 private:
  class Item : public TrashableItem {
   public:
    Item(FakeDesktop& desktop, const FileUrl& url) : desktop_(desktop), url_(url) { ++desktop_.heldNow; }
    ~Item() override { --desktop_.heldNow; }
    std::expected<void, SweepError> moveToTrash() override {
      desktop_.trashed.push_back(url_);
      if (desktop_.nextTrashError) return std::unexpected(*desktop_.nextTrashError);
      if (desktop_.onTrash) desktop_.onTrash(url_);
      return {};
    }

   private:
    FakeDesktop& desktop_;
    FileUrl url_;
  };
};

}  // namespace dunmere::test
