#pragma once

#include "foundation/TextRange.h"
#include "journal/model/TimelineLayout.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace quillo {

// An entry as the timeline shows it.
struct TimelineRow {
  QString identifier;
  QDate day;                 // which differs from that of its heading where somebody travelled across time zones
  QString time;              // of the day, as a clock showed it where the entry was written
  QString text;              // its beginning, or the part of it that was searched for, without line breaks
  QList<TextRange> matches;  // of the text, what was searched for
  QString placeAndWeather;
  QStringList tags;
  int otherVersions{0};  // of the entry, see JournalConflicts
  QString damage;        // why the entry cannot be read; empty where it can

  bool operator==(const TimelineRow&) const = default;

  // "3 versions"; empty where there is but one.
  [[nodiscard]] QString versionsText() const {
    return otherVersions == 0 ? QString() : QStringLiteral("%1 versions").arg(otherVersions + 1);
  }
};

// What a timeline shows. All rows are counted at once and read when they are looked at.
class TimelineSource : public QObject {
  Q_OBJECT

 public:
  // In the order shown.
  [[nodiscard]] virtual const QList<TimelineDay>& days() const = 0;
  // Null while it is being read; rowsDidArrive() follows.
  [[nodiscard]] virtual const TimelineRow* row(int row) = 0;
  // -1 where it is not there, or not known to be.
  [[nodiscard]] virtual int rowOfEntry(const QString& identifier) const = 0;

 Q_SIGNALS:
  // Days and rows are others now; `isOther` where something else was asked for, which is looked at from its beginning.
  void didReset(bool isOther);
  void rowsDidArrive(int first, int last);
};

}  // namespace quillo
