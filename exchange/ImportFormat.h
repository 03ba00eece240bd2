#pragma once

#include "exchange/ImportSource.h"

#include <QString>

#include <memory>
#include <span>

namespace quillo {

// A format that entries can be imported from.
struct ImportFormat {
  const char* name;
  const char* description;
  std::unique_ptr<ImportSource> (*open)(const QString& path, bool makesTagsOfHashtags);
};

[[nodiscard]] std::span<const ImportFormat> importFormats();
// Null where there is none of that name.
[[nodiscard]] const ImportFormat* importFormatNamed(const QString& name);

}  // namespace quillo
