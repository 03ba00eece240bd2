#pragma once

#include "foundation/Error.h"

#include <QLatin1StringView>
#include <QString>

namespace quillo {

class JournalFolder;

// Names inside a journal's folder, and keys of its Journal.plist.
namespace JournalPackageLayout {

inline constexpr QLatin1StringView propertiesFile{"Journal.plist"};
inline constexpr QLatin1StringView entriesFolder{"Entries"};

inline constexpr QLatin1StringView formatVersionKey{"formatVersion"};
inline constexpr QLatin1StringView identifierKey{"identifier"};
inline constexpr QLatin1StringView creationDateKey{"creationDate"};

// Whether there are entries in the journal's folder `path`, readable or not.
[[nodiscard]] bool hasEntries(const QString& path);

// Writes a new Journal.plist, with an identifier of its own, into a journal's folder. Errors are of the Cocoa domain.
bool makeProperties(const JournalFolder& folder, Error* error);

// Makes an empty journal at `path`, where nothing may be yet; the folder above it must be there. It is built beside its
// place under a hidden name and then renamed. False, with an error of JournalError::domain, when that fails; nothing of
// it then stays behind.
bool makePackage(const QString& path, Error* error);

}  // namespace JournalPackageLayout
}  // namespace quillo
