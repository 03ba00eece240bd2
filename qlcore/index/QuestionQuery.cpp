#include "qlcore/index/QuestionQuery.h"

#include "qlcore/index/EntryOrder.h"
#include "qlcore/index/EntryRecord.h"
#include "qlcore/index/SearchMarks.h"
#include "qlcore/index/SearchWords.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// No clock of the world is further from UTC.
constexpr double furthestZone = 26 * 3600.0;
// Of more entries than these, how well each fits says nothing: they hold what nearly all hold. Only the newest are
// ranked.
constexpr qint64 mostRanked = 2000;

// A phrase in the language of the full-text table. Words hold neither quotes nor spaces, so that nothing that was typed
// means anything there. Empty where there are no words in it.
QString matchOf(const QString& text, bool isPrefix, const CommonPrefixes& prefixes) {
  QStringList words;
  SearchWords next(text);
  bool isCharacter = false;
  while (next.next()) {
    words << next.folded().toString();
    isCharacter = next.isCharacter();
  }
  if (words.isEmpty()) return {};
  const QString& last = words.constLast();
  const bool isPair = last.size() == 2 && last[0].isHighSurrogate();
  if (isPrefix && !isCharacter && words.size() == 1 && (last.size() == 1 || isPair))
    return u'"' + SearchMarks::initial(isPair ? QChar::surrogateToUcs4(last[0], last[1]) : last[0].unicode()) + u'"';
  if (isPrefix && words.size() == 1 && prefixes.contains(last)) return u'"' + SearchMarks::prefix(last) + u'"';
  const QString phrase = u'"' + words.join(u' ') + u'"';
  return isPrefix && !isCharacter ? phrase + u" *"_s : phrase;
}

QString matchOf(const JournalQuestion& question, const CommonPrefixes& prefixes) {
  QStringList wanted;
  QStringList excluded;
  const auto add = [&](const QString& match, bool isExcluded) {
    if (!match.isEmpty()) (isExcluded ? excluded : wanted) << match;
  };
  for (const auto& phrase : question.phrases) add(matchOf(phrase.text, phrase.isPrefix, prefixes), phrase.isExcluded);
  for (const auto& tag : question.tags) add(u'"' + SearchMarks::tag(tag.name) + u'"', tag.isExcluded);
  for (const auto& place : question.places) {
    const QString phrase = matchOf(place.name, false, prefixes);
    add(phrase.isEmpty() ? phrase : u"place : "_s + phrase, place.isExcluded);
  }
  if (question.anniversary) {
    add(u'"' + SearchMarks::dayOfYear(question.anniversary->day) + u'"', false);
    add(u'"' + SearchMarks::year(question.anniversary->day) + u'"', true);
  }
  if (wanted.isEmpty() && excluded.isEmpty()) return {};
  if (wanted.isEmpty()) wanted << u'"' + SearchMarks::everyEntry() + u'"';
  QString match = u'(' + wanted.join(u" AND "_s) + u')';
  for (const QString& other : excluded) match += u" NOT "_s + other;
  return match;
}

double startOfDay(QDate day) {
  return static_cast<double>(QDate(2001, 1, 1).daysTo(day)) * 86'400.0;
}

}  // namespace

QuestionQuery::QuestionQuery(IndexDatabase& database, const CommonPrefixes& prefixes, const JournalQuestion& question)
    : m_database(database), m_question(question), m_match(matchOf(question, prefixes)) {
  m_hasDays = question.firstDay || question.lastDay;
  m_firstDay = question.firstDay.value_or(QDate(-4000, 1, 1)).toJulianDay();
  m_lastDay = question.lastDay.value_or(QDate(12000, 1, 1)).toJulianDay();
  if (!m_hasDays) return;
  const double start = startOfDay(QDate::fromJulianDay(m_firstDay));
  const double end = startOfDay(QDate::fromJulianDay(m_lastDay).addDays(1));
  m_possible[0] = EntryOrder::firstCreatedAt(database, start - furthestZone);
  m_possible[1] = EntryOrder::firstCreatedAt(database, end + furthestZone) - 1;
  m_certain[0] = EntryOrder::firstCreatedAt(database, start + furthestZone);
  m_certain[1] = EntryOrder::firstCreatedAt(database, end - furthestZone) - 1;
}

// Of the table that condition() is for: the full-text table where words are asked for, else the entries.
QString QuestionQuery::condition() const {
  if (m_match.isEmpty()) return m_hasDays ? u" WHERE id BETWEEN ? AND ? AND day BETWEEN ? AND ?"_s : QString();
  if (!m_hasDays) return u" WHERE words MATCH ?"_s;
  // Only rows at the ends of the time have to be looked up for their day.
  return u" WHERE words MATCH ? AND rowid BETWEEN ? AND ? AND (+rowid BETWEEN ? AND ? OR "
         "(SELECT day FROM entry WHERE id = words.rowid) BETWEEN ? AND ?)"_s;
}

QVariantList QuestionQuery::conditionValues() const {
  QVariantList values;
  if (!m_match.isEmpty()) values << m_match;
  if (!m_hasDays) return values;
  values << m_possible[0] << m_possible[1];
  if (!m_match.isEmpty()) values << m_certain[0] << m_certain[1];
  return values << m_firstDay << m_lastDay;
}

qint64 QuestionQuery::total() {
  if (!m_total) m_total = countAll();
  return *m_total;
}

bool QuestionQuery::isRanked() const {
  return m_question.order == JournalQuestion::Order::BestFirst && !m_match.isEmpty() && offset() < mostRanked;
}

qint64 QuestionQuery::countAll() {
  if (isRanked()) {
    const qint64 total = rank();
    if (!m_ranked.empty()) return total;
  }
  if (m_match.isEmpty() && m_hasDays)
    return m_database.first(u"SELECT count(*) FROM entry WHERE day BETWEEN ? AND ?"_s, {m_firstDay, m_lastDay})
        .toLongLong();
  const QString table = m_match.isEmpty() ? u"entry"_s : u"words"_s;
  return m_database.first(u"SELECT count(*) FROM "_s + table + condition(), conditionValues()).toLongLong();
}

std::vector<qint64> QuestionQuery::idsFrom(const QString& sql, const QVariantList& values) {
  std::vector<qint64> ids;
  IndexDatabase::Rows rows = m_database.rows(sql, values);
  while (rows.next()) ids.push_back(rows.number(0));
  return ids;
}

std::vector<qint64> QuestionQuery::ids() {
  if (limit() == 0) return {};
  if (isRanked()) return idsByRank();
  const QString direction = m_question.order == JournalQuestion::Order::OldestFirst ? u""_s : u" DESC"_s;
  const QString table = m_match.isEmpty() ? u"id FROM entry"_s : u"rowid FROM words"_s;
  return idsFrom(u"SELECT "_s + table + condition() + u" ORDER BY "_s + (m_match.isEmpty() ? u"id"_s : u"rowid"_s) +
                     direction + u" LIMIT ? OFFSET ?"_s,
                 conditionValues() << limit() << offset());
}

// The newest are counted and ranked while they are found, since finding them is what takes long. Answers how many there
// are in all, unless none is in the part that was asked for.
qint64 QuestionQuery::rank() {
  qint64 newest = 0;
  qint64 oldestRanked = 0;
  {
    // A tag or a place says more than a word of the text.
    IndexDatabase::Rows rows = m_database.rows(
        u"SELECT found, count(*) OVER (), min(found) OVER () FROM "
        "(SELECT rowid AS found, bm25(words, 1, 4, 2, 0) AS fit FROM words"_s +
            condition() + u" ORDER BY rowid DESC LIMIT ?) ORDER BY fit, found DESC LIMIT ? OFFSET ?"_s,
        conditionValues() << mostRanked << limit() << offset());
    while (rows.next()) {
      m_ranked.push_back(rows.number(0));
      newest = rows.number(1);
      oldestRanked = rows.number(2);
    }
  }
  if (newest < mostRanked) return newest;
  const QVariant older = m_database.first(u"SELECT count(*) FROM words"_s + condition() + u" AND rowid < ?"_s,
                                          conditionValues() << oldestRanked);
  return newest + older.toLongLong();
}

std::vector<qint64> QuestionQuery::idsByRank() {
  const qint64 found = total();  // which ranks them
  std::vector<qint64> ids = std::exchange(m_ranked, {});
  const qint64 missing = limit() - static_cast<qint64>(ids.size());
  if (missing <= 0 || found <= mostRanked) return ids;
  const std::vector<qint64> rest =
      idsFrom(u"SELECT rowid FROM words"_s + condition() + u" ORDER BY rowid DESC LIMIT ? OFFSET ?"_s,
              conditionValues() << missing << mostRanked);
  ids.insert(ids.end(), rest.begin(), rest.end());
  return ids;
}

QList<JournalCount> QuestionQuery::counts(JournalCountBy by) {
  if (by == JournalCountBy::Tag || by == JournalCountBy::Place) return countsByName(by == JournalCountBy::Tag);
  return countsByDay(by == JournalCountBy::Month);
}

QList<JournalCount> QuestionQuery::countsByDay(bool wholeMonths) {
  const QString from =
      m_match.isEmpty() ? u"SELECT day, count(*) FROM entry"_s + (m_hasDays ? u" WHERE day BETWEEN ? AND ?"_s : u""_s)
                        : u"SELECT day, count(*) FROM (SELECT rowid AS found FROM words"_s + condition() +
                              u") CROSS JOIN entry ON id = found"_s;
  QVariantList values = conditionValues();
  if (m_match.isEmpty() && m_hasDays) values = {m_firstDay, m_lastDay};
  IndexDatabase::Rows rows = m_database.rows(from + u" GROUP BY day ORDER BY day"_s, values);
  QList<JournalCount> counts;
  while (rows.next()) {
    QDate day = QDate::fromJulianDay(rows.number(0));
    if (wholeMonths) day = QDate(day.year(), day.month(), 1);
    if (counts.isEmpty() || counts.constLast().day != day) counts << JournalCount{day, {}, 0};
    counts.last().count += rows.number(1);
  }
  return counts;
}

QList<JournalCount> QuestionQuery::countsByName(bool ofTags) {
  const QString column = ofTags ? u"tags"_s : u"place"_s;
  const QString what = u"SELECT %1, count(*), max(id) FROM "_s.arg(column);
  const QString from = m_match.isEmpty() ? what + u"entry"_s + condition()
                                         : what + u"(SELECT rowid AS found FROM words"_s + condition() +
                                               u") CROSS JOIN entry ON id = found"_s;
  struct Use {
    JournalCount count;
    QString folded;
    qint64 newest{0};
  };
  QHash<QString, Use> uses;
  IndexDatabase::Rows rows = m_database.rows(from + u" GROUP BY "_s + column, conditionValues());
  while (rows.next()) {
    const QString text = rows.value(0).toString();
    QSet<QString> seen;
    for (const QString& name : ofTags ? partedTags(text) : QStringList(text)) {
      const QString folded = name.toCaseFolded();
      // An entry counts once, however often it has a tag.
      if (name.isEmpty() || seen.contains(folded)) continue;
      seen.insert(folded);
      Use& use = uses[folded];
      use.count.count += rows.number(1);
      if (rows.number(2) >= use.newest) use = {{{}, name, use.count.count}, folded, rows.number(2)};
    }
  }
  QList<Use> sorted = uses.values();
  std::sort(sorted.begin(), sorted.end(), [](const Use& a, const Use& b) {
    if (a.count.count != b.count.count) return a.count.count > b.count.count;
    const int order = a.folded.localeAwareCompare(b.folded);
    // Words that the collation takes for the same must still have one order.
    return order != 0 ? order < 0 : a.folded < b.folded;
  });
  QList<JournalCount> counts;
  for (const Use& use : sorted) counts << use.count;
  return counts;
}

}  // namespace quillo
