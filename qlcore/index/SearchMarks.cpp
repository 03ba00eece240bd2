#include "qlcore/index/SearchMarks.h"

#include "qlcore/index/SearchWords.h"

namespace quillo::SearchMarks {

namespace {

constexpr char16_t every = 0xE000;
constexpr char16_t wholeTag = 0xE001;
constexpr char16_t beginning = 0xE002;
constexpr char16_t anniversary = 0xE003;
constexpr char16_t inYear = 0xE004;
constexpr char16_t commonBeginning = 0xE005;
// What stands for a sign of ASCII, at which the full-text table would part a word.
constexpr char16_t signs = 0xE100;

}  // namespace

QString everyEntry() {
  return QString(QChar(every));
}

QString tag(const QString& name) {
  QString mark = QChar(wholeTag) + foldedName(name);
  for (QChar& c : mark)
    if (c.unicode() < 0x80 && !c.isLetterOrNumber()) c = QChar(static_cast<char16_t>(signs + c.unicode()));
  return mark;
}

QString initial(char32_t letter) {
  return QChar(beginning) + QString::fromUcs4(&letter, 1);
}

QString prefix(const QString& prefix) {
  return QChar(commonBeginning) + prefix;
}

QString dayOfYear(QDate day) {
  return QChar(anniversary) + QString::number(day.month() * 100 + day.day());
}

QString year(QDate day) {
  return QChar(inYear) + QString::number(day.year());
}

}  // namespace quillo::SearchMarks
