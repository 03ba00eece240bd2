#pragma once

#include "foundation/Error.h"

#include <QByteArray>
#include <QLatin1StringView>
#include <QList>

namespace quillo {

class JournalFolder;

// Files in a journal's folder by which programs that synchronise it pass files in the works by, each read by one of
// them, and by nobody else. A journal needs none of them: those of older versions have none.
namespace IgnoreFiles {

struct File {
  QLatin1StringView name;
  QByteArray content;
};

[[nodiscard]] const QList<File>& all();

// Writes all of them into a journal that is being made.
bool write(const JournalFolder& folder, Error* error);

}  // namespace IgnoreFiles
}  // namespace quillo
