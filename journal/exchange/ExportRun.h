#pragma once

#include "exchange/ExportFormat.h"
#include "exchange/JournalExport.h"
#include "journal/exchange/BackgroundWork.h"

#include <QString>
#include <QUrl>

namespace quillo {

// What is to be exported, as what and where.
struct ExportOrder {
  QUrl journal;
  // What the format wants is added to it.
  JournalExport::Options options;
  const ExportFormat* format{nullptr};
  QString path;
  bool isReplacing{false};
  // For formats that are drawn. Called in the thread that exports.
  DocumentMaker draw{};
};

// Exports it, with a journal and index of its own. Where it fails or is stopped, nothing is left of it.
[[nodiscard]] JournalExport::Result runExport(const ExportOrder& order, BackgroundWork::Monitor& monitor);

}  // namespace quillo
