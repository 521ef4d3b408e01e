#include "sweeper/view/type_select.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include "sweeper/view/row_list_model.h"

namespace dunmere {
namespace {

class TypeSelectTest : public testing::Test {
 protected:
  void showNames(std::initializer_list<const char*> names) {
    const auto entries = std::make_shared<EntryNames>();
    ColumnRows::Content content{
        .parent = FileUrl("/"), .names = entries, .rows = {}, .partialMark = false, .changes = {}};
    for (const char* name : names) {
      content.rows.push_back({.position = static_cast<RowPosition>(entries->size())});
      entries->add(name);
    }
    content.changes = changesBetween({}, content);
    rows_.update(ColumnRows(std::move(content)), {});
  }

  /// Types the letters one by one, each from the row that the one before has led to, and returns the last row.
  int type(const QString& letters, int current = -1) {
    for (const QChar letter : letters) {
      found_ = typeSelect_.find(&rows_, current, letter);
      if (found_ >= 0) current = found_;
    }
    return found_;
  }

  RowListModel rows_;
  TypeSelect typeSelect_;
  int found_ = -1;
};

TEST_F(TypeSelectTest, LettersTogetherAreOneBeginning) {
  showNames({"Movies", "Music", "Documents"});
  EXPECT_EQ(type(QStringLiteral("mus")), 1);
  EXPECT_EQ(typeSelect_.typed(), QStringLiteral("mus"));
}

TEST_F(TypeSelectTest, NextLetterStaysOnARowThatFits) {
  showNames({"Movies", "Mo", "Movie"});
  EXPECT_EQ(type(QStringLiteral("movi")), 0);
}

TEST_F(TypeSelectTest, FirstLetterLeavesTheRowAndComesAround) {
  showNames({"mail", "Movies", "Documents"});
  EXPECT_EQ(type(QStringLiteral("m"), 0), 1);
  EXPECT_EQ(type(QStringLiteral("m"), 1), 0) << "again the same letter";
}

TEST_F(TypeSelectTest, ANameOfOneLetterAgainAndAgainIsFoundToo) {
  showNames({"mail", "movies", "mmm"});
  EXPECT_EQ(type(QStringLiteral("mm")), 2);
}

TEST_F(TypeSelectTest, CaseAndAccentsDoNotMatter) {
  showNames({"zebra", "\u00C9tude", "STRASSE"});
  EXPECT_EQ(typeSelect_.find(&rows_, -1, QStringLiteral("e")), 1);
  TypeSelect accented;
  EXPECT_EQ(accented.find(&rows_, -1, QString(QChar(0x00E9))), 1);
  showNames({"zebra", "E\u0301tude"});
  TypeSelect decomposed;
  EXPECT_EQ(decomposed.find(&rows_, -1, QString(QChar(0x00E9))), 1);
}

TEST_F(TypeSelectTest, ARightToLeftNameIsFoundByItsFirstLetter) {
  showNames({"abc", "שלום"});
  EXPECT_EQ(type(QStringLiteral("ש")), 1);
}

TEST_F(TypeSelectTest, LettersBehindManyMarksAreFoundToo) {
  const std::string marks = "\u0301\u0302\u0303\u0304\u0306\u0307\u0308\u030A\u030B\u030C";
  showNames({"abd", ("a" + marks + marks + "b" + marks + "c").c_str()});
  EXPECT_EQ(type(QStringLiteral("abc")), 1);
}

TEST_F(TypeSelectTest, LettersOutsideTheBasicPlaneAreFoundByTheirPlainOnes) {
  showNames({"abd", "x\U0001D400\U0001D401\U0001D402"});
  EXPECT_EQ(type(QStringLiteral("xabc")), 1);
}

TEST_F(TypeSelectTest, AnInputMethodTypesSeveralLettersAtOnce) {
  showNames({"日記", "日本語", "日本"});
  EXPECT_EQ(typeSelect_.find(&rows_, 0, QStringLiteral("日本")), 1);
}

TEST_F(TypeSelectTest, NothingFoundIsNoRow) {
  showNames({"Movies"});
  EXPECT_EQ(type(QStringLiteral("x")), -1);
  EXPECT_EQ(type(QStringLiteral("m")), -1) << "“xm” has been typed";
}

TEST_F(TypeSelectTest, KeysThatTypeNothingCountForNothing) {
  showNames({"Movies"});
  for (const char* text : {"", "\x1B", "\x7F", "\t"}) EXPECT_EQ(typeSelect_.find(&rows_, -1, QLatin1String(text)), -1);
  EXPECT_TRUE(typeSelect_.typed().isEmpty());
}

TEST_F(TypeSelectTest, NoRowsAreNoTrouble) {
  EXPECT_EQ(type(QStringLiteral("m")), -1);
  TypeSelect unbound;
  EXPECT_EQ(unbound.find(nullptr, -1, QStringLiteral("m")), -1);
}

TEST_F(TypeSelectTest, APauseEndsTheBeginning) {
  showNames({"Movies", "Documents"});
  EXPECT_EQ(type(QStringLiteral("m")), 0);
  QSignalSpy spy(&typeSelect_, &TypeSelect::typedChanged);
  ASSERT_TRUE(spy.wait());
  EXPECT_TRUE(typeSelect_.typed().isEmpty());
  EXPECT_EQ(type(QStringLiteral("d"), 0), 1);
}

}  // namespace
}  // namespace dunmere
