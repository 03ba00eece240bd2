#include "journal/model/JournalLibrary.h"

#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"

#include <QFileInfo>
#include <QHash>
#include <QPointer>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

Error notReachable() {
  return JournalError::make(JournalError::JournalFileNotFound, u"The journal cannot be reached"_s);
}

}  // namespace

JournalLibrary::JournalLibrary(Services services) : m_services(std::move(services)) {}

JournalLibrary::~JournalLibrary() = default;

void JournalLibrary::reopen() {
  const auto location = m_services.location();
  if (!location) return close(State::NotConfigured, {});
  const bool isThere = QFileInfo(location->toLocalFile()).isDir();
  if (m_state == State::Open && m_package->url() == *location && isThere) return m_reader->lookAgain();
  Error error;
  const auto package = QLJournalPackageFile::openPackage(*location, /*create=*/false, &error);
  if (!package) return close(State::Away, error.localizedDescription);
  m_reader.reset();
  m_package = package;
  m_reader = m_services.makeReader(*m_package);
  connect(m_reader.get(), &JournalReader::didChange, this, &JournalReader::didChange);
  connect(m_reader.get(), &JournalReader::progressed, this, &JournalReader::progressed);
  m_state = State::Open;
  m_problem.clear();
  Q_EMIT stateDidChange();
  Q_EMIT didChange();
}

void JournalLibrary::close(State state, const QString& problem) {
  if (m_state == state && m_problem == problem) return;
  const bool wasOpen = m_state == State::Open;
  m_state = state;
  m_problem = problem;
  m_reader.reset();
  m_package.reset();
  Q_EMIT stateDidChange();
  if (wasOpen) Q_EMIT didChange();
}

QString JournalLibrary::name() const {
  return m_package ? QFileInfo(m_package->url().toLocalFile()).completeBaseName() : QString();
}

QString JournalLibrary::entriesFolder() const {
  return m_package ? m_package->entriesFolder() : QString();
}

std::shared_ptr<QLJournalEntryFile> JournalLibrary::entry(const QString& identifier, Error* error) const {
  if (m_package) return QLJournalEntryFile::entryWithUUID(*m_package, identifier, error);
  fail(error, notReachable());
  return nullptr;
}

void JournalLibrary::entryDidChange(const QString& identifier) {
  const auto names = QLJournalEntryFile::fileNames(identifier);
  filesDidChange({names.begin(), names.end()});
}

std::optional<JournalLibrary::Deletion::Entry> JournalLibrary::entryToTrash(const QString& identifier,
                                                                            const QStringList& copies, Error* error) {
  const auto file = QLJournalEntryFile::fileURL(*m_package, identifier, error);
  if (!file) return std::nullopt;
  Deletion::Entry entry{identifier, {}};
  // Its own comes last: without it, a version that is left would be the entry.
  QStringList paths;
  for (const QString& copy : copies) paths << entriesFolder() + u'/' + copy;
  paths << file->toLocalFile();
  for (const QString& path : paths) {
    if (const auto item = Trash::moveItem(path, error)) {
      entry.files.append({path, *item});
      continue;
    }
    for (const Deletion::File& moved : entry.files) Trash::putBack(moved.item, moved.path);
    return std::nullopt;
  }
  return entry;
}

JournalLibrary::Deletion JournalLibrary::moveToTrash(const QStringList& identifiers, Error* error) {
  Deletion deletion;
  Error first;
  if (!m_package) first = notReachable();
  QHash<QString, QStringList> copies;
  const auto conflicted = m_package ? JournalConflicts(entriesFolder()).entries(&first) : std::nullopt;
  for (const ConflictedEntry& entry : conflicted.value_or(QList<ConflictedEntry>()))
    copies.insert(entry.uuid, entry.copies);
  QStringList names;
  for (const QString& identifier : conflicted ? identifiers : QStringList()) {
    Error reason;
    const QString canonical = QLJournalEntryFile::canonicalUUID(identifier).value_or(QString());
    if (const auto entry = entryToTrash(identifier, copies.value(canonical), &reason)) {
      deletion.entries << *entry;
      for (const Deletion::File& file : entry->files) names << QFileInfo(file.path).fileName();
    } else if (first.code == 0) {
      first = reason;
    }
  }
  filesDidChange(names);
  if (first.code != 0) fail(error, first);
  return deletion;
}

bool JournalLibrary::putBack(const Deletion& deletion, Error* error) {
  bool isWhole = true;
  QStringList names;
  for (const Deletion::Entry& entry : deletion.entries) {
    // The entry's own first, see above.
    for (auto file = entry.files.crbegin(); file != entry.files.crend(); ++file) {
      Error reason;
      if (Trash::putBack(file->item, file->path, &reason))
        names << QFileInfo(file->path).fileName();
      else if (std::exchange(isWhole, false))
        fail(error, reason);
    }
  }
  filesDidChange(names);
  return isWhole;
}

void JournalLibrary::ask(QObject* asker, const JournalQuestion& question, Answered answered) {
  if (m_reader) return m_reader->ask(asker, question, std::move(answered));
  QMetaObject::invokeMethod(
      asker, [answered = std::move(answered)] { answered({}); }, Qt::QueuedConnection);
}

void JournalLibrary::count(QObject* asker, const JournalQuestion& question, JournalCountBy by, Counted counted) {
  if (m_reader) return m_reader->count(asker, question, by, std::move(counted));
  QMetaObject::invokeMethod(
      asker, [counted = std::move(counted)] { counted({}); }, Qt::QueuedConnection);
}

void JournalLibrary::listDamaged(QObject* asker, Damaged listed) {
  if (m_reader) return m_reader->listDamaged(asker, std::move(listed));
  QMetaObject::invokeMethod(
      asker, [listed = std::move(listed)] { listed({}); }, Qt::QueuedConnection);
}

void JournalLibrary::listConflicts(QObject* asker, Conflicts listed) {
  if (m_reader) return m_reader->listConflicts(asker, std::move(listed));
  QMetaObject::invokeMethod(
      asker, [listed = std::move(listed)] { listed({}); }, Qt::QueuedConnection);
}

void JournalLibrary::filesDidChange(const QStringList& fileNames) {
  if (m_reader && !fileNames.isEmpty()) m_reader->filesDidChange(fileNames);
}

}  // namespace quillo
