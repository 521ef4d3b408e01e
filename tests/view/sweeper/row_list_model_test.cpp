#include "sweeper/view/row_list_model.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace dunmere {
namespace {

using Items = std::vector<SweeperItem>;

SweeperItem file(const std::string& name, std::int64_t bytes) {
  SweeperItem item;
  item.url = FileUrl("/root").appending(name);
  item.name = name;
  item.sizeBytes = bytes;
  return item;
}

SweeperItem folder(const std::string& name, std::int64_t bytes, bool partial = false) {
  SweeperItem item = file(name, bytes);
  item.isDirectory = true;
  item.sizeIsPartialMinimum = partial;
  return item;
}

/// The rows `items` as they follow the rows `before`. Positions follow the names in `entries`, which must hold them
/// all.
ColumnRows follow(const ColumnRows& before, const Items& items, const std::shared_ptr<const EntryNames>& entries) {
  ColumnRows::Content content{
      .parent = FileUrl("/root"), .names = entries, .rows = {}, .partialMark = false, .changes = {}};
  for (const SweeperItem& item : items) {
    RowPosition position = 0;
    while ((*entries)[position] != item.name) ++position;
    content.rows.push_back({item.sizeBytes, position, item.isDirectory, item.isSymbolicLink});
    content.partialMark = content.partialMark || item.sizeIsPartialMinimum;
  }
  content.changes = changesBetween(before, content);
  return ColumnRows(std::move(content));
}

/// A model and the rows that it was told.
class ToldModel : public RowListModel {
 public:
  using RowListModel::update;

  void update(const Items& items, std::optional<std::size_t> selected) {
    const auto entries = std::make_shared<EntryNames>();
    for (const SweeperItem& item : items) entries->add(item.name);
    update(items, selected, entries);
  }
  void update(const Items& items, std::optional<std::size_t> selected,
              const std::shared_ptr<const EntryNames>& entries) {
    told_ = follow(told_, items, entries);
    update(told_, selected);
  }
  const ColumnRows& told() const { return told_; }

 private:
  ColumnRows told_;
};

/// What a view does: a copy of the rows that knows nothing but the signals, and how many of each came.
class ShadowView {
 public:
  explicit ShadowView(RowListModel& model) : model_(model) {
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, &context_,
                     [this](const QModelIndex&, int first, int last) {
                       ++inserts;
                       for (int row = first; row <= last; ++row) rows_.insert(rows_.begin() + row, read(row));
                     });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &context_,
                     [this](const QModelIndex&, int first, int last) {
                       ++removes;
                       rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
                     });
    QObject::connect(&model, &QAbstractItemModel::rowsMoved, &context_,
                     [this](const QModelIndex&, int from, int last, const QModelIndex&, int before) {
                       ++moves;
                       EXPECT_EQ(from, last);
                       const QString row = rows_[static_cast<std::size_t>(from)];
                       rows_.erase(rows_.begin() + from);
                       rows_.insert(rows_.begin() + (before > from ? before - 1 : before), row);
                     });
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &context_,
                     [this](const QModelIndex& first, const QModelIndex& last) {
                       ++changes;
                       for (int row = first.row(); row <= last.row(); ++row)
                         rows_[static_cast<std::size_t>(row)] = read(row);
                     });
    QObject::connect(&model, &QAbstractItemModel::layoutChanged, &context_, [this] {
      ++layouts;
      for (int row = 0; row < model_.count(); ++row) rows_[static_cast<std::size_t>(row)] = read(row);
    });
    QObject::connect(&model, &QAbstractItemModel::modelReset, &context_, [this] { ++resets; });
    for (int row = 0; row < model.count(); ++row) rows_.push_back(read(row));
  }

  const std::vector<QString>& rows() const { return rows_; }
  int signalCount() const { return inserts + removes + moves + changes + layouts + resets; }

  int inserts = 0;
  int removes = 0;
  int moves = 0;
  int changes = 0;
  int layouts = 0;
  int resets = 0;

 private:
  QString read(int row) const {
    const QModelIndex index = model_.index(row);
    QString text;
    for (const int role : {RowListModel::NameRole, RowListModel::SizeTextRole, RowListModel::AccessibleTextRole}) {
      text += model_.data(index, role).toString() + QLatin1Char('|');
    }
    return text + (model_.data(index, RowListModel::SelectedRole).toBool() ? QStringLiteral("*") : QString());
  }

  RowListModel& model_;
  std::vector<QString> rows_;
  QObject context_;  // last: its connections end first
};

std::vector<QString> rowsOf(const Items& items, std::optional<std::size_t> selected) {
  ToldModel fresh;
  fresh.update(items, selected);
  return ShadowView(fresh).rows();
}

QString text(const RowListModel& model, int row, RowListModel::Role role) {
  return model.data(model.index(row), role).toString();
}

bool flag(const RowListModel& model, int row, RowListModel::Role role) {
  return model.data(model.index(row), role).toBool();
}

TEST(RowListModel, RolesDescribeTheItem) {
  SweeperItem link = folder("old", 0, true);
  link.isSymbolicLink = true;
  ToldModel model;
  model.update(Items{folder("Movies", 3'200'000'000, true), file("b\xff.txt", 12), link, file("new", 0)}, 1);

  EXPECT_EQ(text(model, 0, RowListModel::NameRole), QStringLiteral("Movies"));
  EXPECT_EQ(text(model, 0, RowListModel::SizeTextRole), QStringLiteral("3.2 GB+"));
  EXPECT_EQ(text(model, 0, RowListModel::AccessibleTextRole), QStringLiteral("Movies, folder, at least 3.2 GB"));
  EXPECT_TRUE(flag(model, 0, RowListModel::IsDirectoryRole));
  EXPECT_FALSE(flag(model, 0, RowListModel::IsCompleteZeroRole));
  EXPECT_FALSE(flag(model, 0, RowListModel::SelectedRole));

  EXPECT_EQ(text(model, 1, RowListModel::NameRole), QString::fromUtf8("b\xEF\xBF\xBD.txt"));
  EXPECT_EQ(text(model, 1, RowListModel::AccessibleTextRole), QString::fromUtf8("b\xEF\xBF\xBD.txt, file, 12 bytes"));
  EXPECT_TRUE(flag(model, 1, RowListModel::SelectedRole));

  EXPECT_TRUE(flag(model, 2, RowListModel::IsSymbolicLinkRole));
  EXPECT_FALSE(flag(model, 2, RowListModel::IsCompleteZeroRole));
  EXPECT_EQ(text(model, 2, RowListModel::AccessibleTextRole),
            QStringLiteral("old, link to a folder, at least Zero KB"));
  EXPECT_TRUE(flag(model, 3, RowListModel::IsCompleteZeroRole));
}

TEST(RowListModel, TheSameRowsTellNothing) {
  ToldModel model;
  const Items items = {file("a", 3), file("b", 2)};
  model.update(items, 0);
  ShadowView view(model);
  model.update(items, 0);
  EXPECT_EQ(view.signalCount(), 0);
}

TEST(RowListModel, AGrownRowThatKeepsItsPlaceTellsOneChange) {
  ToldModel model;
  model.update(Items{folder("a", 30), folder("b", 20), folder("c", 10)}, {});
  ShadowView view(model);
  model.update(Items{folder("a", 30), folder("b", 25), folder("c", 10)}, {});
  EXPECT_EQ(view.changes, 1);
  EXPECT_EQ(view.signalCount(), 1);
}

TEST(RowListModel, AFolderThatOvertakesOthersIsMovedOnce) {
  ToldModel model;
  model.update(Items{folder("a", 30), folder("b", 20), folder("c", 10)}, {});
  ShadowView view(model);
  model.update(Items{folder("c", 40), folder("a", 30), folder("b", 20)}, {});
  EXPECT_EQ(view.moves, 1);
  EXPECT_EQ(view.changes, 1);
  EXPECT_EQ(view.signalCount(), 2);
}

TEST(RowListModel, ATrashedRowIsRemovedAlone) {
  ToldModel model;
  model.update(Items{file("a", 3), file("b", 2), file("c", 1)}, {});
  ShadowView view(model);
  model.update(Items{file("a", 3), file("c", 1)}, {});
  EXPECT_EQ(view.removes, 1);
  EXPECT_EQ(view.signalCount(), 1);
}

TEST(RowListModel, SelectionChangesOnlyTheTwoRowsConcerned) {
  ToldModel model;
  const Items items = {file("a", 5), file("b", 4), file("c", 3), file("d", 2)};
  model.update(items, 0);
  ShadowView view(model);
  model.update(items, 3);
  EXPECT_EQ(view.changes, 2);
  EXPECT_EQ(view.signalCount(), 2);
  EXPECT_EQ(view.rows(), rowsOf(items, 3));
}

TEST(RowListModel, HeldRowsFollowTheirNames) {
  ToldModel model;
  model.update(Items{folder("a", 30), folder("b", 20), folder("c", 10)}, {});
  model.setPressedRow(2);
  model.setFocusedRow(0);
  int pressedChanges = 0;
  QObject::connect(&model, &RowListModel::pressedRowChanged, &model, [&] { ++pressedChanges; });

  model.update(Items{folder("c", 40), folder("a", 30), folder("b", 20)}, {});
  EXPECT_EQ(model.pressedRow(), 0);
  EXPECT_EQ(model.focusedRow(), 1);
  EXPECT_EQ(pressedChanges, 1);

  model.update(Items{folder("a", 30), folder("b", 20)}, {});
  EXPECT_EQ(model.pressedRow(), -1);
  EXPECT_EQ(model.focusedRow(), 0);
  EXPECT_EQ(pressedChanges, 2);
}

TEST(RowListModel, TheRowAfterAGoneOneTakesItsFocus) {
  ToldModel model;
  model.update(Items{folder("a", 30), folder("b", 20), folder("c", 10)}, {});
  model.setFocusedRow(1);
  int changes = 0;
  QObject::connect(&model, &RowListModel::focusedRowChanged, &model, [&] { ++changes; });

  model.update(Items{folder("a", 30), folder("c", 10)}, {});
  EXPECT_EQ(model.focusedRow(), 1);
  EXPECT_EQ(changes, 1) << "another row, though of the same number";
  model.update(Items{folder("a", 30)}, {});
  EXPECT_EQ(model.focusedRow(), 0) << "the last one when none comes after it";
  model.update(Items(), {});
  EXPECT_EQ(model.focusedRow(), -1);
}

Items manyFiles(std::size_t count) {
  Items items;
  for (std::size_t row = 0; row < count; ++row)
    items.push_back(file("f" + std::to_string(row), static_cast<int>(row) + 1));
  return items;
}

TEST(RowListModel, ManyMovedRowsAreSortedInPlaceAndHeldRowsFollow) {
  ToldModel model;
  Items items = manyFiles(2000);
  model.update(items, 7);
  model.setFocusedRow(10);
  ShadowView view(model);
  std::ranges::reverse(items);
  items.erase(items.begin() + 100, items.begin() + 110);
  items.insert(items.begin() + 50, file("new", 1));
  model.update(items, {});

  EXPECT_EQ(view.resets, 0);
  EXPECT_EQ(view.moves, 0);
  EXPECT_EQ(view.removes, 1);
  EXPECT_EQ(view.inserts, 1);
  EXPECT_EQ(view.layouts, 2);
  EXPECT_EQ(view.rows(), rowsOf(items, {}));
  EXPECT_EQ(text(model, model.focusedRow(), RowListModel::NameRole), QStringLiteral("f10"));
}

TEST(RowListModel, AnyListOfRowsBecomesAnyOther) {
  std::mt19937 random(7);
  ToldModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  ShadowView view(model);
  for (int round = 0; round < 400; ++round) {
    // Now and then a long list follows a long one: wild enough to be sorted in place.
    const std::size_t most = round % 20 >= 18 ? 1600 : 30;
    Items items;
    std::map<std::string, QPersistentModelIndex> held;
    for (int row = 0; row < model.count(); ++row) {
      held.emplace(text(model, row, RowListModel::NameRole).toStdString(), model.index(row));
    }
    for (std::size_t name = 0; name < most; ++name) {
      if (random() % 4 != 0)
        items.push_back(folder("n" + std::to_string(name), static_cast<int>(random() % 50), round % 2 == 0));
    }
    std::ranges::stable_sort(items, std::greater<>(), &SweeperItem::sizeBytes);
    const std::optional<std::size_t> selected = items.empty() ? std::nullopt : std::optional(random() % items.size());
    model.update(items, selected);

    ASSERT_EQ(view.rows(), rowsOf(items, selected)) << "round " << round;
    for (const auto& [name, index] : held) {
      const auto row = std::ranges::find(items, name, &SweeperItem::name);
      ASSERT_EQ(index.row(), row == items.end() ? -1 : static_cast<int>(row - items.begin())) << "round " << round;
    }
  }
  EXPECT_EQ(view.resets, 0);
  EXPECT_GT(view.layouts, 0);
  EXPECT_GT(view.moves, 0);
}

TEST(RowListModel, RowsOfTheSameEntriesMoveAsRowsOfOthers) {
  std::mt19937 random(7);
  ToldModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  ShadowView view(model);
  std::shared_ptr<EntryNames> entries;
  Items named;
  for (int round = 0; round < 300; ++round) {
    // Now and then the folder has other entries.
    if (round % 25 == 0) {
      named.clear();
      const std::size_t count = round == 150 ? 1600 : 30;
      for (std::size_t row = 0; row < count; ++row)
        named.push_back(folder("n" + std::to_string(random() % 9 + 10 * row), 0));
      entries = std::make_shared<EntryNames>();
      for (const SweeperItem& item : named) entries->add(item.name);
    }
    std::vector<RowPosition> numbers(named.size());
    std::iota(numbers.begin(), numbers.end(), RowPosition{0});
    if (round % 3 == 0) std::ranges::shuffle(numbers, random);
    Items items;
    for (const RowPosition number : numbers) {
      items.push_back(named[number]);
      items.back().sizeBytes = static_cast<int>(random() % 3);
    }
    const std::optional<std::size_t> selected = items.empty() ? std::nullopt : std::optional(random() % items.size());
    std::map<std::string, QPersistentModelIndex> held;
    for (int row = 0; row < model.count(); ++row)
      held.emplace(text(model, row, RowListModel::NameRole).toStdString(), model.index(row));
    model.update(items, selected, entries);

    ASSERT_EQ(view.rows(), rowsOf(items, selected)) << "round " << round;
    for (const auto& [name, index] : held) {
      const auto row = std::ranges::find(items, name, &SweeperItem::name);
      ASSERT_EQ(index.row(), row == items.end() ? -1 : static_cast<int>(row - items.begin())) << "round " << round;
    }
  }
  EXPECT_EQ(view.resets, 0);
}

TEST(RowListModel, RowsOfTheSameRevisionAreTheSameButForTheSelection) {
  ToldModel model;
  const Items items = {file("a", 3), file("b", 2)};
  model.update(items, 0);
  ShadowView view(model);
  model.update(model.told(), 1);
  EXPECT_EQ(view.changes, 2);
  EXPECT_EQ(view.signalCount(), 2);
  EXPECT_EQ(view.rows(), rowsOf(items, 1));
}

TEST(RowListModel, RowsThatDoNotFollowTheShownOnesReplaceThemAll) {
  ToldModel model;
  model.update(Items{file("a", 3), file("b", 2)}, 0);
  ShadowView view(model);
  ToldModel other;
  const Items items = {file("c", 9), file("a", 3)};
  other.update(Items{file("c", 1)}, {});
  other.update(items, {});
  model.update(other.told(), 1);
  EXPECT_EQ(view.rows(), rowsOf(items, 1));
  EXPECT_EQ(view.resets, 0);
  model.update(ColumnRows(), {});
  EXPECT_EQ(model.count(), 0);
  EXPECT_TRUE(view.rows().empty());
}

}  // namespace
}  // namespace dunmere
