#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class JournalFolder;

// A journal on disk: the folder NAME.quillojournal with Journal.plist (format version, identifier, creation date) and
// the folder Entries, one property list an entry. Each object belongs to one thread; the default package is the main
// thread's.
class QLJournalPackageFile {
 public:
  static constexpr qint64 currentFormatVersion = 1;

  // Opens the package at `url`; with `create`, makes a new, empty one there first, where nothing may be yet: the name
  // appears with a whole package behind it or not at all. Null, with an error of JournalError::domain, when there is no
  // package that this version can read. A package that can only be read opens; saving to it fails.
  [[nodiscard]] static std::shared_ptr<QLJournalPackageFile> openPackage(const QUrl& url, bool create, Error* error);

  // Whether the file `name` in a journal's folder can be read as its Journal.plist.
  [[nodiscard]] static bool isReadable(const JournalFolder& folder, const QString& name);

  // The package at the configured location, never made here; null, logged, when it cannot be opened.
  [[nodiscard]] static std::shared_ptr<QLJournalPackageFile> defaultPackage();
  // As above, with the reason.
  [[nodiscard]] static std::shared_ptr<QLJournalPackageFile> openDefaultPackage(Error* error);
  // Answers the configured location; set by the entry function.
  static void setDefaultPackageURLProvider(std::function<std::optional<QUrl>()> provider);

  [[nodiscard]] QUrl url() const { return m_url; }
  [[nodiscard]] QUrl entriesURL() const { return QUrl::fromLocalFile(entriesFolder()); }
  // The absolute path of the folder of entries.
  [[nodiscard]] QString entriesFolder() const;
  [[nodiscard]] qint64 formatVersion() const { return m_formatVersion; }
  // A UUID; empty in a package whose Journal.plist has lost it.
  [[nodiscard]] QString identifier() const { return m_identifier; }
  [[nodiscard]] Date creationDate() const { return m_creationDate; }

 private:
  explicit QLJournalPackageFile(const QUrl& url) : m_url(url) {}
  // Takes over what Journal.plist in the folder `path` says.
  bool readProperties(const QString& path, Error* error);

  QUrl m_url;
  qint64 m_formatVersion{currentFormatVersion};
  QString m_identifier;
  Date m_creationDate;
};

}  // namespace quillo
