#pragma once

#include "journal/model/JournalReader.h"
#include "journal/model/WritingStreak.h"

#include <QDate>
#include <QHash>
#include <QTimer>

namespace quillo {

// What a journal holds as a whole: how many entries on which day, with which tag, at which place. Follows the journal's
// changes, a moment later. Main thread only.
class JournalOverview : public QObject {
  Q_OBJECT

 public:
  // The reader must outlive it.
  explicit JournalOverview(JournalReader& reader);

  // In ascending order.
  [[nodiscard]] const QList<JournalCount>& days() const { return m_days; }
  // Most used first.
  [[nodiscard]] const QList<JournalCount>& tags() const { return m_tags; }
  [[nodiscard]] const QList<JournalCount>& places() const { return m_places; }
  [[nodiscard]] qint64 total() const { return m_total; }
  // False until it was counted once.
  [[nodiscard]] bool isKnown() const { return m_isKnown; }

  [[nodiscard]] QHash<QDate, int> entriesByDay() const;
  // On the day and month of `today`, in other years.
  [[nodiscard]] int onThisDay(QDate today) const;
  [[nodiscard]] WritingStreak streak(QDate today) const;

 Q_SIGNALS:
  void didChange();

 private:
  void countAnew();

  JournalReader& m_reader;
  QTimer m_timer;
  QList<JournalCount> m_days;
  QList<JournalCount> m_tags;
  QList<JournalCount> m_places;
  qint64 m_total{0};
  bool m_isKnown{false};
};

}  // namespace quillo
