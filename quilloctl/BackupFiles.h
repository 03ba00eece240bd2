#pragma once

#include "exchange/backup/BackupFolder.h"

#include <QString>

#include <optional>
#include <string>

namespace quillo::ctl {

struct Context;

// An absolute path as the file system has it, from one that was typed.
[[nodiscard]] QString absolutePath(const std::string& typed);

// Where backups are: the folder that was typed, else the one of the settings. Nothing, with the reason said, where the
// one that was chosen in the settings is not there.
[[nodiscard]] std::optional<QString> backupFolder(Context& context, const std::string& typed);

// The backup that is meant by a path or by the name of a file in the folder of backups; by nothing, the newest of the
// configured journal, or of all where there is no such journal any more. Nothing, with the reason said, for none.
[[nodiscard]] std::optional<QString> backupMeant(Context& context, const std::string& typed);

// "1.2 MB".
[[nodiscard]] QString sizeInWords(qint64 bytes);

}  // namespace quillo::ctl
