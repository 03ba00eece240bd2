#include "journal/model/JournalLibrary.h"

#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

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
  fail(error, JournalError::make(JournalError::JournalFileNotFound, u"The journal cannot be reached"_s));
  return nullptr;
}

void JournalLibrary::entryDidChange(const QString& identifier) {
  const auto names = QLJournalEntryFile::fileNames(identifier);
  filesDidChange({names.begin(), names.end()});
}

JournalLibrary::Deletion JournalLibrary::moveToTrash(const QStringList& identifiers, Error* error) {
  Deletion deletion;
  std::optional<Error> first;
  QStringList names;
  for (const QString& identifier : identifiers) {
    Error reason;
    const auto file = m_package ? QLJournalEntryFile::fileURL(*m_package, identifier, &reason) : std::nullopt;
    const auto item = file ? Trash::moveItem(file->toLocalFile(), &reason) : std::nullopt;
    if (item) {
      deletion.entries.append({identifier, file->toLocalFile(), *item});
      names << QFileInfo(file->toLocalFile()).fileName();
    } else if (!first) {
      first = reason;
    }
  }
  filesDidChange(names);
  if (first) fail(error, *first);
  return deletion;
}

bool JournalLibrary::putBack(const Deletion& deletion, Error* error) {
  bool isWhole = true;
  QStringList names;
  for (const Deletion::Entry& entry : deletion.entries) {
    Error reason;
    if (Trash::putBack(entry.item, entry.path, &reason))
      names << QFileInfo(entry.path).fileName();
    else if (std::exchange(isWhole, false))
      fail(error, reason);
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

void JournalLibrary::filesDidChange(const QStringList& fileNames) {
  if (m_reader && !fileNames.isEmpty()) m_reader->filesDidChange(fileNames);
}

}  // namespace quillo
