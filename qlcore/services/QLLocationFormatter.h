#pragma once

#include "qlcore/QLLocation.h"
#include "qlcore/services/PlaceTable.h"

#include <QLocale>
#include <QString>

namespace quillo {

// Says where a location is.
class QLLocationFormatter {
 public:
  // In the language of `locale`, the user's where none is given.
  QLLocationFormatter();
  explicit QLLocationFormatter(const QLocale& locale) : m_locale(locale) {}

  // The location's own name where it has one; else the nearest place's, "Berlin, Germany"; else, farther than 50 km
  // from any, the coordinates, "46.20° N, 9.02° E". Empty when the coordinates are none.
  [[nodiscard]] QString localLocationStringForLocation(const QLLocation& location) const;

  // "Berlin, Germany"; a city state is named once.
  [[nodiscard]] QString nameOfPlace(const PlaceTable::Place& place) const;
  // "46.20° N, 9.02° E".
  [[nodiscard]] static QString coordinates(const QLLocation& location);

  // The nearest place's name alone; empty where there is none within 50 km or the coordinates are none. The first use
  // in the process loads the table of places.
  [[nodiscard]] QString placeNameForLocation(const QLLocation& location) const;

 private:
  QLocale m_locale;
};

}  // namespace quillo
