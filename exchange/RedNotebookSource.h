#pragma once

#include "exchange/ImportSource.h"

#include <QByteArray>
#include <QDate>
#include <QString>

#include <optional>

namespace quillo {

// The month files of the diary program RedNotebook: a folder of them, or one. A file "2014-03.txt" holds a dictionary
// in YAML of days, each with its text and perhaps categories, which older versions had: each holds entries of a few
// words. They become lists below the text, headed by the category's name, which is a tag, too; those of the category
// "Tags" are tags only. The formatting becomes Markdown. An entry is of its day's noon, and known again by the file's
// folder and the day.
class RedNotebookSource final : public ImportSource {
 public:
  explicit RedNotebookSource(const QString& path) : m_path(path) {}
  void forEach(const ImportTaker& take) override;

  // The first of the month that a file is of, by its name; nothing where it is no month file.
  [[nodiscard]] static std::optional<QDate> monthOf(const QString& fileName);
  // The entries of the file at `path`, which holds `utf8`, until `take` answers false; so does this then.
  static bool readMonth(const QByteArray& utf8, const QString& path, QDate month, const ImportTaker& take);

 private:
  QString m_path;
};

}  // namespace quillo
