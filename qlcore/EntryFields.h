#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillo {

class JournalFolder;

// What an entry's file holds, as it stands there, also what this version knows nothing of.
namespace EntryFields {

inline constexpr QLatin1StringView uuid{"uuid"};
inline constexpr QLatin1StringView text{"text"};
inline constexpr QLatin1StringView creationDate{"creationDate"};
inline constexpr QLatin1StringView modificationDate{"modificationDate"};
inline constexpr QLatin1StringView timeZone{"timeZone"};
inline constexpr QLatin1StringView tags{"tags"};
inline constexpr QLatin1StringView location{"location"};
inline constexpr QLatin1StringView weather{"weather"};

// The fields of the file `name`. Nothing, with an error, when they cannot be read: of JournalError::domain where the
// file is damaged, else of the Cocoa domain.
[[nodiscard]] std::optional<PropertyListDictionary> read(const JournalFolder& folder, const QString& name,
                                                         Error* error);
// The same of its bytes, which have been read.
[[nodiscard]] std::optional<PropertyListDictionary> parse(const JournalFolder& folder, const QString& name,
                                                          const QByteArray& bytes, Error* error);
// As an entry's file has them.
[[nodiscard]] std::optional<QByteArray> serialized(const PropertyListDictionary& fields, Error* error);

// Whether there is no such file.
[[nodiscard]] bool isMissing(const Error& error);
[[nodiscard]] bool isDamage(const Error& error);
// `why` goes on from "the entry is damaged, ".
[[nodiscard]] Error damage(const JournalFolder& folder, const QString& name, const QString& why);

}  // namespace EntryFields
}  // namespace quillo
