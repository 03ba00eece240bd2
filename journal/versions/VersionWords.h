#pragma once

#include "qlcore/conflicts/EntryVersions.h"

#include <QLocale>
#include <QString>
#include <QStringList>

namespace quillo::VersionWords {

// "Two versions of this entry".
[[nodiscard]] QString count(qsizetype versions);

// Where it comes from: "The entry's own file", "Syncthing, ABCDEF2".
[[nodiscard]] QString origin(const EntryVersion& version);

// When it was written, as the user's clock shows it. "Saved 9 March 2026, 14:05"; empty where it is damaged.
[[nodiscard]] QString saved(const EntryVersion& version, const QLocale& locale);

// What of `version` beside its text differs from `other`: "Tags: a, b", "Date: 9 March 2026, 14:05", "Place: Berlin".
// None where one of them is damaged.
[[nodiscard]] QStringList differences(const EntryVersion& version, const EntryVersion& other, const QLocale& locale);

}  // namespace quillo::VersionWords
