#include "journal/model/JournalOverview.h"

#include <chrono>

namespace quillo {

using namespace std::chrono_literals;

JournalOverview::JournalOverview(JournalReader& reader) : m_reader(reader) {
  m_timer.setSingleShot(true);
  // While a journal is read for the first time, changes are told of many times a second.
  m_timer.setInterval(300ms);
  connect(&m_timer, &QTimer::timeout, this, &JournalOverview::countAnew);
  connect(&m_reader, &JournalReader::didChange, this, [this] {
    if (!m_timer.isActive()) m_timer.start();
  });
  // After what else is asked first: a list of entries is to be there before counts are.
  QTimer::singleShot(0, this, &JournalOverview::countAnew);
}

void JournalOverview::countAnew() {
  const JournalQuestion all;
  // Answers come in the order of the questions: with the last one everything is there.
  m_reader.count(this, all, JournalCountBy::Tag, [this](const QList<JournalCount>& tags) { m_tags = tags; });
  m_reader.count(this, all, JournalCountBy::Place, [this](const QList<JournalCount>& places) { m_places = places; });
  m_reader.count(this, all, JournalCountBy::Day, [this](const QList<JournalCount>& days) {
    m_days = days;
    m_total = 0;
    for (const JournalCount& day : days) m_total += day.count;
    m_isKnown = true;
    Q_EMIT didChange();
  });
}

QHash<QDate, int> JournalOverview::entriesByDay() const {
  QHash<QDate, int> entries;
  for (const JournalCount& day : m_days) entries.insert(day.day, static_cast<int>(day.count));
  return entries;
}

int JournalOverview::onThisDay(QDate today) const {
  qint64 count = 0;
  for (const JournalCount& day : m_days)
    if (day.day.month() == today.month() && day.day.day() == today.day() && day.day.year() != today.year())
      count += day.count;
  return static_cast<int>(count);
}

WritingStreak JournalOverview::streak(QDate today) const {
  QList<QDate> days;
  for (const JournalCount& day : m_days) days << day.day;
  return WritingStreak::of(days, today);
}

}  // namespace quillo
