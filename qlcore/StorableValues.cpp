#include "qlcore/StorableValues.h"

#include <cmath>

namespace quillo {

QString storableText(QString text) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text.at(i);
    if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
      ++i;
      continue;
    }
    const bool isControl = c < u' ' && c != u'\n' && c != u'\t' && c != u'\r';
    if (isControl || c.isSurrogate() || c.unicode() >= 0xFFFE) text[i] = QChar::ReplacementCharacter;
  }
  return text;
}

Date toWholeSecond(Date date) {
  return Date(std::floor(date.timeIntervalSinceReferenceDate()));
}

Date storableNow() {
  return toWholeSecond(Date::now());
}

std::optional<Date> storableDate(const PropertyListValue& value) {
  const auto date = value.date();
  return date && date->toDateTime().isValid() ? date : std::nullopt;
}

}  // namespace quillo
