#pragma once

#include "qlcore/index/IndexedEntry.h"

#include <QLocale>
#include <QString>

#include <functional>

namespace quillo {

struct PrintedEntry {
  QString title;    // the day
  QString details;  // time, place and weather
  QString text;     // as the person wrote it
};

[[nodiscard]] PrintedEntry printedEntry(const IndexedEntry& entry, const QLocale& locale,
                                        const std::function<QString(const QLWeather&)>& weatherText);

}  // namespace quillo
