#pragma once

#include "foundation/PropertyListValue.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace quillo {

// An entry as JSON, with nothing lost: what every reader wants in plain words, and beside it, under "otherFields", what
// plain words cannot say of the entry's file. docs/json-export.md describes it.
namespace EntryJson {

inline constexpr QLatin1StringView formatName{"quillo-entries"};
inline constexpr int currentVersion = 1;

// `uuid` is that of the file's name.
[[nodiscard]] QJsonObject fromFields(const QString& uuid, const PropertyListDictionary& fields);
// What fromFields() was given. Nothing, with a sentence's end in `problem`, where it is no entry.
[[nodiscard]] std::optional<PropertyListDictionary> toFields(const QJsonObject& object, QString* problem);

}  // namespace EntryJson
}  // namespace quillo
