#include "quilloctl/JournalStatistics.h"

#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/index/SearchWords.h"
#include "quilloctl/JournalIndex.h"
#include "quilloctl/Pager.h"
#include "quilloctl/Terminal.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>
#include <limits>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct Month {
  QDate first;
  qint64 entries{0};
  qint64 words{0};
};

// Days in a row on which something was written.
struct Streak {
  QDate first;
  QDate last;
  qint64 days{0};
};

struct Statistics {
  qint64 entries{0};
  qint64 words{0};
  qint64 days{0};
  Streak longest;
  QList<Month> months;  // those in which something was written, in ascending order
};

qint64 wordsOf(const QString& text) {
  qint64 count = 0;
  // Pictures count as words for a search alone.
  for (SearchWords words(text); words.next();)
    if (!words.isCharacter() || text.at(words.range().location).isLetter()) ++count;
  return count;
}

Streak longestStreak(const QList<JournalCount>& days) {
  Streak longest;
  Streak current;
  for (const JournalCount& count : days) {
    const bool goesOn = current.days > 0 && current.last.addDays(1) == count.day;
    current = {goesOn ? current.first : count.day, count.day, goesOn ? current.days + 1 : 1};
    if (current.days > longest.days) longest = current;
  }
  return longest;
}

// The entries month by month: a journal's whole text need not fit into memory.
Statistics statisticsOf(JournalSearchIndex& index) {
  Statistics statistics;
  const QList<JournalCount> days = index.counts({}, JournalCountBy::Day);
  statistics.days = days.size();
  statistics.longest = longestStreak(days);
  for (const JournalCount& count : index.counts({}, JournalCountBy::Month)) {
    Month month{count.day, count.count, 0};
    JournalQuestion question;
    question.firstDay = month.first;
    question.lastDay = month.first.addMonths(1).addDays(-1);
    question.limit = std::numeric_limits<qint64>::max();
    for (const IndexedEntry& entry : index.ask(question).entries) month.words += wordsOf(entry.text);
    statistics.entries += month.entries;
    statistics.words += month.words;
    statistics.months << month;
  }
  return statistics;
}

QString nameOf(const Month& month) {
  return month.first.toString(u"yyyy-MM"_s);
}

QJsonObject json(const Statistics& statistics) {
  QJsonArray months;
  for (const Month& month : statistics.months)
    months << QJsonObject{{u"month"_s, nameOf(month)}, {u"entries"_s, month.entries}, {u"words"_s, month.words}};
  const auto day = [](QDate date) { return date.isValid() ? QJsonValue(date.toString(Qt::ISODate)) : QJsonValue(); };
  return {{u"entries"_s, statistics.entries},
          {u"words"_s, statistics.words},
          {u"days"_s, statistics.days},
          {u"longestStreak"_s, QJsonObject{{u"days"_s, statistics.longest.days},
                                           {u"first"_s, day(statistics.longest.first)},
                                           {u"last"_s, day(statistics.longest.last)}}},
          {u"months"_s, months}};
}

QString grouped(qint64 number) {
  return QLocale(QLocale::English).toString(number);
}

// A bar of eighths of a column.
QString bar(qint64 value, qint64 largest, int columns) {
  constexpr int eighths = 8;
  const auto length = static_cast<int>(static_cast<double>(value) / static_cast<double>(largest) * columns * eighths);
  QString text(length / eighths, u'█');
  // U+258F is one eighth, U+2589 seven of them. Who wrote at all has something to see.
  const int rest = length == 0 && value > 0 ? 1 : length % eighths;
  if (rest > 0) text += QChar(static_cast<char16_t>(u'▏' - (rest - 1)));
  return text;
}

void printChart(const QList<Month>& months) {
  const qint64 largest = std::ranges::max(months, {}, &Month::entries).entries;
  constexpr int widest = 100;
  // Around the bar: the month, the number, what parts them, and a column that stays free.
  const int around = 7 + 2 + 1 + static_cast<int>(grouped(largest).size()) + 1;
  const int columns = std::clamp(terminalSize().columns - around, 10, widest);
  QDate expected = months.first().first;
  for (const Month& month : months) {
    // Months without entries are shown, years of them are not.
    constexpr int mostEmpty = 12;
    if (expected.addMonths(mostEmpty) < month.first) {
      print(u"  ..."_s);
      expected = month.first;
    }
    for (; expected < month.first; expected = expected.addMonths(1)) print(nameOf({expected}));
    StyledLine line;
    line.add(nameOf(month)).gap(2).add(bar(month.entries, largest, columns), Style::Bar).gap(1);
    print(line.add(grouped(month.entries)));
    expected = month.first.addMonths(1);
  }
}

}  // namespace

int journalStatistics(Context& context) {
  const auto package = openJournal(context);
  const auto index = package ? indexOfJournal(*package) : nullptr;
  if (!index) return Failed;
  const Statistics statistics = statisticsOf(*index);
  Pager::begin();
  if (context.json) {
    printJson(json(statistics));
    return Done;
  }
  print(u"entries:        "_s + grouped(statistics.entries));
  print(u"words:          "_s + grouped(statistics.words));
  print(u"days:           "_s + grouped(statistics.days));
  const Streak& longest = statistics.longest;
  const QString when = longest.days > 1    ? u" days, %1 to %2"_s.arg(longest.first.toString(Qt::ISODate),
                                                                      longest.last.toString(Qt::ISODate))
                       : longest.days == 1 ? u" day"_s
                                           : QString();
  print(u"longest streak: "_s + grouped(longest.days) + when);
  if (statistics.months.isEmpty()) return Done;
  print(QString());
  printChart(statistics.months);
  return Done;
}

}  // namespace quillo::ctl
