#include "journal/model/IndexedJournalReader.h"

#include "qlcore/QLJournalPackageFile.h"

#include <utility>

namespace quillo {

namespace {

// Memory in which a window may keep what it asks for again with each key: a fifth of the index of 100,000 entries.
constexpr qint64 cacheKiB = qint64{32} * 1024;

}  // namespace

IndexedJournalReader::IndexedJournalReader(const QLJournalPackageFile& package) : m_index({.cacheKiB = cacheKiB}) {
  connect(&m_index, &JournalIndexService::changed, this, &JournalReader::didChange);
  connect(&m_index, &JournalIndexService::progressed, this, &JournalReader::progressed);
  m_index.setJournal(package.url());
}

QObject* IndexedJournalReader::newAsker(QObject* owner) {
  auto* asker = new QObject(owner);
  connect(asker, &QObject::destroyed, this, [this, asker] { m_index.forget(asker); });
  return asker;
}

void IndexedJournalReader::ask(QObject* owner, const JournalQuestion& question, Answered answered) {
  QObject* asker = newAsker(owner);
  m_index.ask(asker, question, [asker, answered = std::move(answered)](const JournalAnswer& answer) {
    // What is called may take the asker away together with its owner.
    asker->deleteLater();
    answered(answer);
  });
}

void IndexedJournalReader::count(QObject* owner, const JournalQuestion& question, JournalCountBy by, Counted counted) {
  QObject* asker = newAsker(owner);
  m_index.count(asker, question, by, [asker, counted = std::move(counted)](const QList<JournalCount>& counts) {
    asker->deleteLater();
    counted(counts);
  });
}

void IndexedJournalReader::listDamaged(QObject* owner, Damaged listed) {
  QObject* asker = newAsker(owner);
  m_index.damaged(asker, [asker, listed = std::move(listed)](const QList<IndexedDamage>& damaged) {
    asker->deleteLater();
    listed(damaged);
  });
}

void IndexedJournalReader::listConflicts(QObject* owner, Conflicts listed) {
  QObject* asker = newAsker(owner);
  m_index.conflicts(asker, [asker, listed = std::move(listed)](const QList<ConflictedEntry>& entries) {
    asker->deleteLater();
    listed(entries);
  });
}

void IndexedJournalReader::filesDidChange(const QStringList& fileNames) {
  for (const QString& name : fileNames) m_index.noteChanged(name.section(u'.', 0, 0));
}

void IndexedJournalReader::lookAgain() {
  if (!m_index.isWatching()) m_index.compare();
}

}  // namespace quillo
