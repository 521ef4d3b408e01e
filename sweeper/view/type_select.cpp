#include "sweeper/view/type_select.h"

#include <QTimerEvent>
#include <algorithm>

namespace dunmere {
namespace {

constexpr int kPauseMilliseconds = 1000;
constexpr QChar kLeftToRightIsolate(u'\u2066');  // set before some names by shownText

/// The letters without case and accents.
QString folded(const QString& text) {
  QString letters;
  for (const QChar character : text.normalized(QString::NormalizationForm_KD).toCaseFolded()) {
    if (!character.isMark() && character != kLeftToRightIsolate) letters += character;
  }
  return letters;
}

/// Whether the name's letters begin with these. Folds no more of it than it must: a hundred thousand names are asked
/// for every key.
bool beginsWith(const QString& name, const QString& letters) {
  for (qsizetype part = letters.size() + 1;; part *= 2) {
    const bool cutsAPair = part < name.size() && name[part].isLowSurrogate();
    const QString beginning = folded(name.left(cutsAPair ? part + 1 : part));
    if (beginning.size() >= letters.size() || part >= name.size()) return beginning.startsWith(letters);
  }
}

bool isTypedText(const QString& text) {
  return !text.isEmpty() &&
         std::ranges::all_of(text, [](QChar character) { return character >= u' ' && character != u'\x7F'; });
}

/// The first row whose name begins with `beginning`, from row `first` on, the rows above it last.
int rowBeginningWith(const QString& beginning, const QAbstractItemModel& rows, int first) {
  const int nameRole = rows.roleNames().key("name");
  const int count = rows.rowCount();
  for (int step = 0; step < count; ++step) {
    const int row = (first + step) % count;
    if (beginsWith(rows.data(rows.index(row, 0), nameRole).toString(), beginning)) return row;
  }
  return -1;
}

bool isOneLetterAgain(const QString& letters) {
  return std::ranges::all_of(letters, [&](QChar letter) { return letter == letters.front(); });
}

}  // namespace

int TypeSelect::find(const QAbstractItemModel* rows, int current, const QString& text) {
  if (!rows || !isTypedText(text)) return -1;
  const bool begins = typed_.isEmpty();
  setTyped(typed_ + text);
  const QString letters = folded(typed_);
  if (letters.isEmpty()) return -1;
  // A longer beginning may still match the current row; a first letter goes on to the next match.
  if (!isOneLetterAgain(letters)) return rowBeginningWith(letters, *rows, std::max(current, 0));
  const int next = rowBeginningWith(letters.first(1), *rows, current + 1);
  const int row = begins || next < 0 ? -1 : rowBeginningWith(letters, *rows, std::max(current, 0));
  return row >= 0 ? row : next;
}

void TypeSelect::timerEvent(QTimerEvent* event) {
  if (event->timerId() == pause_.timerId()) setTyped({});
}

void TypeSelect::setTyped(const QString& typed) {
  if (typed.isEmpty()) {
    pause_.stop();
  } else {
    pause_.start(kPauseMilliseconds, this);
  }
  typed_ = typed;
  Q_EMIT typedChanged();
}

}  // namespace dunmere
