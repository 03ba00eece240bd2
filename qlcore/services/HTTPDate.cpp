#include "qlcore/services/HTTPDate.h"

#include <QDateTime>
#include <QLocale>
#include <QTimeZone>

namespace quillo {

using namespace Qt::StringLiterals;

std::optional<double> secondsFromHTTPDate(const QByteArray& text) {
  QDateTime date = QLocale::c().toDateTime(QString::fromLatin1(text.trimmed()), u"ddd, dd MMM yyyy HH:mm:ss 'GMT'"_s);
  if (!date.isValid()) return std::nullopt;
  date.setTimeSpec(Qt::UTC);
  return static_cast<double>(date.toSecsSinceEpoch());
}

std::optional<double> secondsFromRetryAfter(const QByteArray& text, double now) {
  bool isNumber = false;
  const uint seconds = text.trimmed().toUInt(&isNumber);
  return isNumber ? std::optional(now + seconds) : secondsFromHTTPDate(text);
}

}  // namespace quillo
