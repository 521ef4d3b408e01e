// Which descriptors stay open, and which are given up.
#include "platform/posix/folder_descriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

using Slot = FolderDescriptors::Slot;
using Pin = FolderDescriptors::Pin;

bool isOpen(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) >= 0;
}

class FolderDescriptorsTest : public ::testing::Test {
 protected:
  FolderDescriptorsTest() {
    for (const char* name : {"a", "b", "c", "d"}) tree.folder(name);
  }

  UniqueDescriptor open(const char* name) {
    return UniqueDescriptor(::open(tree.path(name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }

  TemporaryTree tree;
  FolderDescriptors descriptors{2};
  Slot a{descriptors}, b{descriptors}, c{descriptors};
};

TEST_F(FolderDescriptorsTest, EmptySlotHasNoDescriptor) {
  EXPECT_FALSE(descriptors.pin(a));
}

TEST_F(FolderDescriptorsTest, TheOneUnusedForLongestIsClosed) {
  ASSERT_TRUE(descriptors.adopt(a, open("a")));
  ASSERT_TRUE(descriptors.adopt(b, open("b")));
  ASSERT_TRUE(descriptors.pin(a));  // used again: now b is the oldest
  ASSERT_TRUE(descriptors.adopt(c, open("c")));
  EXPECT_TRUE(descriptors.pin(a));
  EXPECT_FALSE(descriptors.pin(b));
  EXPECT_TRUE(descriptors.pin(c));
}

TEST_F(FolderDescriptorsTest, PinnedOnesStayOpenBeyondTheBudget) {
  const auto pinA = descriptors.adopt(a, open("a")).value();
  const auto pinB = descriptors.adopt(b, open("b")).value();
  {
    const auto pinC = descriptors.adopt(c, open("c")).value();
    for (const Pin* pin : {&pinA, &pinB, &pinC}) EXPECT_TRUE(isOpen(pin->descriptor()));
  }
  EXPECT_FALSE(descriptors.pin(c));
  EXPECT_TRUE(isOpen(pinA.descriptor()));
}

TEST_F(FolderDescriptorsTest, SecondPinKeepsItOpenWhenTheFirstEnds) {
  auto first = descriptors.adopt(a, open("a")).value();
  const Pin second = descriptors.pin(a);
  first = Pin();
  descriptors.closeIdle();
  EXPECT_TRUE(isOpen(second.descriptor()));
}

TEST_F(FolderDescriptorsTest, EveryNewDescriptorIsAnotherGeneration) {
  const auto first = descriptors.adopt(a, open("a"))->generation();
  EXPECT_EQ(descriptors.pin(a).generation(), first);
  descriptors.closeIdle();
  ASSERT_FALSE(descriptors.pin(a));
  EXPECT_NE(descriptors.adopt(a, open("a"))->generation(), first);
}

TEST_F(FolderDescriptorsTest, DescriptorInPlaceWinsOverALaterOne) {
  const int first = descriptors.adopt(a, open("a"))->descriptor();
  UniqueDescriptor late = open("a");
  const int closed = late.get();
  EXPECT_EQ(descriptors.adopt(a, std::move(late))->descriptor(), first);
  EXPECT_FALSE(isOpen(closed));
}

TEST_F(FolderDescriptorsTest, AnotherFolderIsStale) {
  ASSERT_TRUE(descriptors.adopt(a, open("a")));
  descriptors.closeIdle();
  EXPECT_EQ(descriptors.adopt(a, open("b")).error(), ESTALE);
  EXPECT_TRUE(descriptors.adopt(a, open("a")));
}

TEST_F(FolderDescriptorsTest, SlotClosesItsDescriptorAtItsEnd) {
  int number = -1;
  {
    Slot slot(descriptors);
    number = descriptors.adopt(slot, open("d"))->descriptor();
    EXPECT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST_F(FolderDescriptorsTest, ThreadsMayFightOverATinyBudget) {
  std::array<Slot*, 3> slots = {&a, &b, &c};
  const std::array names = {"a", "b", "c"};
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (unsigned thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (unsigned i = 0; i < 2000; ++i) {
        const std::size_t which = (i * (thread + 1)) % slots.size();
        Pin pin = descriptors.pin(*slots[which]);
        if (!pin) pin = descriptors.adopt(*slots[which], open(names[which])).value();
        if (!isOpen(pin.descriptor())) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(FolderDescriptorsBudget, FollowsTheLimitOfTheProcess) {
  const auto budgetAt = [](rlim_t limit) {
    return runInChild([limit] {
             const rlimit both{.rlim_cur = limit, .rlim_max = limit};
             if (::setrlimit(RLIMIT_NOFILE, &both) != 0) return 255;
             return static_cast<int>(FolderDescriptors::budgetOfProcess() / 4);
           })
        .exitCode;
  };
  EXPECT_EQ(budgetAt(6), 8 / 4);
  EXPECT_EQ(budgetAt(64), 32 / 4);
  EXPECT_EQ(budgetAt(1024), 512 / 4);
  EXPECT_EQ(budgetAt(4096), 512 / 4);
}

}  // namespace
}  // namespace dunmere::test
