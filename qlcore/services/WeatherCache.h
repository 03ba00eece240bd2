#pragma once

#include "qlcore/services/WeatherForecast.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUrl>

namespace quillo {

// What the weather service has told: its latest answers by place, and until when it wants to hear nothing. Kept in a
// file for the user alone, because it names places, so that it outlives the program. Times are seconds since 1970.
class WeatherCache {
 public:
  struct Answer {
    WeatherForecast forecast;
    QByteArray lastModified;  // as the service wrote it, as is the next
    QByteArray entityTag;
    double received{0};
    double expires{0};

    // Whether it may be used without asking.
    [[nodiscard]] bool isFresh(double now) const;
  };

  // An empty path keeps nothing. What the file has is of no use for another service than the one it came from.
  WeatherCache(QString path, const QUrl& service);

  // The answer for a place, fresh or not; null where there is none. Valid until the next insertion.
  [[nodiscard]] const Answer* find(const QString& place, double now);
  void insert(const QString& place, Answer answer, double now);
  // Of an answer that is there.
  void confirm(const QString& place, double now, double expires);

  [[nodiscard]] bool isSilent(double now);
  void keepSilentUntil(double instant, double now);

 private:
  // Reads the file when something is first asked for; a damaged one has nothing.
  void readOnce(double now);
  void write() const;
  void dropOldest();

  QString m_path;
  QString m_service;
  bool m_isRead{false};
  QHash<QString, Answer> m_answers;
  double m_silentUntil{0};
};

}  // namespace quillo
