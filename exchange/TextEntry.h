#pragma once

#include "exchange/WrittenMoment.h"
#include "foundation/PropertyListValue.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// An entry from elsewhere, of which only is known what a person reads.
struct TextEntry {
  QString uuid;
  QString text;
  ZonedDate date;
  QStringList tags;
  std::optional<QLLocation> location;
  std::optional<QLWeather> weather;

  // Those that it has not, in any case of letters.
  void addTags(const QStringList& more);
  void addHashtags();
  // What its file is to hold of it.
  [[nodiscard]] PropertyListDictionary fields() const;
};

// The identifier of what stands at this place, the same each time.
[[nodiscard]] QString uuidOfPlace(const QString& place);

}  // namespace quillo
