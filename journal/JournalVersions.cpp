#include "journal/JournalVersions.h"

#include "journal/JournalWindowView.h"
#include "journal/model/JournalLibrary.h"
#include "journal/reading/ReadingView.h"
#include "journal/versions/VersionsBar.h"
#include "journal/views/FoldingColumns.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/StatusRow.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/conflicts/JournalConflicts.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

struct JournalVersions::Reading {
  std::optional<EntryVersions> entry;
  MergedText merged;
  Error error;
};

struct JournalVersions::Outcome {
  VersionDecision decision;
  QString identifier;
  qsizetype versions{0};
  bool isDone{false};
  QStringList added;
  Error error;
};

namespace {

// What was done, and where the rest is.
QString inWords(const VersionDecision& decision, qsizetype versions, const QStringList& added) {
  using Kind = VersionDecision::Kind;
  if (decision.kind == Kind::Merge) return u"The entry has the merged text; the versions are in the Trash"_s;
  if (decision.kind == Kind::KeepAll && added.size() == versions - 1)
    return versions == 2 ? u"Both are entries now"_s : u"All %1 are entries now"_s.arg(versions);
  if (decision.kind == Kind::KeepAll)
    return u"%1 made; what could not be read is in the Trash"_s.arg(
        added.size() == 1 ? u"1 more entry"_s : u"%1 more entries"_s.arg(added.size()));
  return versions == 2 ? u"Kept; the other version is in the Trash"_s : u"Kept; the other versions are in the Trash"_s;
}

}  // namespace

JournalVersions::JournalVersions(QWidget& window, JournalLibrary& library, JournalWindowView& view,
                                 std::function<bool(const QString& identifier)> showEntry)
    : m_window(window), m_library(library), m_view(view), m_showEntry(std::move(showEntry)) {
  connect(&m_library, &JournalLibrary::didChange, this, &JournalVersions::list);
  connect(m_view.versions, &VersionsBar::comparisonWanted, this, &JournalVersions::compare);
  connect(m_view.paper, &QStackedWidget::currentChanged, this, &JournalVersions::followEntry);
  list();
}

// While a journal is read for the first time, changes are told of many times a second: one question at a time.
void JournalVersions::list() {
  m_isListOutdated = m_isListing;
  if (std::exchange(m_isListing, true)) return;
  m_library.listConflicts(this, [this](const QList<ConflictedEntry>& entries) {
    m_isListing = false;
    const bool isOther = std::exchange(m_entries, entries) != entries;
    followEntry();
    if (isOther) Q_EMIT countDidChange();
    if (m_isListOutdated) list();
  });
}

QString JournalVersions::shownIdentifier() const {
  const QWidget* page = m_view.paper->currentWidget();
  const QLJournalEntryFile* entry = m_view.editor->entry();
  return entry && (page == m_view.editor || page == m_view.reading) ? entry->uuid() : QString();
}

QList<ConflictedEntry>::const_iterator JournalVersions::find(const QString& identifier) const {
  return std::find_if(m_entries.cbegin(), m_entries.cend(),
                      [&](const ConflictedEntry& entry) { return entry.uuid == identifier; });
}

void JournalVersions::followEntry() {
  const auto found = find(shownIdentifier());
  m_view.versions->setVersions(found == m_entries.cend() ? 0 : found->copies.size() + 1);
}

void JournalVersions::showNext() {
  if (m_entries.isEmpty()) return;
  auto found = find(shownIdentifier());
  if (found == m_entries.cend() || !m_last.isEmpty()) found = find(m_last);
  const auto next = found == m_entries.cend() || found + 1 == m_entries.cend() ? m_entries.cbegin() : found + 1;
  m_view.columns->bringToFront(FoldingColumns::Column::Paper);
  m_last.clear();
  if (m_showEntry(next->uuid)) return;
  m_last = next->uuid;
  read(next->uuid);
}

void JournalVersions::compare() {
  const QString identifier = shownIdentifier();
  if (identifier.isEmpty() || m_library.state() != JournalLibrary::State::Open) return;
  // What is being typed is of this machine's version.
  m_view.editor->commitDetails();
  if (m_view.editor->save()) read(identifier);
}

void JournalVersions::read(const QString& identifier) {
  if (m_work.isRunning()) return;
  m_view.versions->setReading(true);
  const auto reading = std::make_shared<Reading>();
  m_work.start(
      [reading, identifier, conflicts = JournalConflicts(m_library.entriesFolder())](BackgroundWork::Monitor&) {
        const auto entry = conflicts.entry(identifier, &reading->error);
        if (entry) reading->entry = conflicts.read(*entry, &reading->error);
        if (reading->entry) reading->merged = conflicts.merged(*reading->entry);
      },
      [this, reading] {
        m_view.versions->setReading(false);
        show(*reading);
      });
}

void JournalVersions::show(const Reading& reading) {
  NoticeBar& notices = m_view.status->notices();
  if (!reading.entry || reading.entry->versions.size() < 2) {
    if (m_dialog) m_dialog->close();
    if (!reading.entry) return notices.show(reading.error.localizedDescription);
    refreshEntry({reading.entry->uuid});
    return notices.show(u"There is only one version of this entry"_s);
  }
  if (!m_dialog) {
    m_dialog = new VersionsDialog(&m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_dialog, &VersionsDialog::decided, this, &JournalVersions::carryOut);
  }
  m_dialog->setEntry(*reading.entry, reading.merged);
  m_dialog->setAtWork(false);
  if (!m_dialog->isVisible()) m_dialog->open();
}

void JournalVersions::carryOut(const VersionDecision& decision) {
  if (m_work.isRunning()) return;
  m_dialog->setProblem({});
  m_dialog->setAtWork(true);
  const EntryVersions entry = m_dialog->entry();
  const auto outcome = std::make_shared<Outcome>(Outcome{decision, entry.uuid, entry.versions.size(), false, {}, {}});
  m_work.start(
      [outcome, entry, conflicts = JournalConflicts(m_library.entriesFolder())](BackgroundWork::Monitor&) {
        using Kind = VersionDecision::Kind;
        const VersionDecision& what = outcome->decision;
        Error* error = &outcome->error;
        if (what.kind == Kind::Keep) outcome->isDone = conflicts.keep(entry, what.kept, error);
        if (what.kind == Kind::KeepAll) outcome->isDone = conflicts.keepAll(entry, &outcome->added, error);
        if (what.kind == Kind::Merge) outcome->isDone = conflicts.keepMerged(entry, what.text, error);
      },
      [this, outcome] { carriedOut(*outcome); });
}

void JournalVersions::carriedOut(const Outcome& outcome) {
  refreshEntry(QStringList(outcome.identifier) + outcome.added);
  if (outcome.isDone) {
    if (m_dialog) m_dialog->accept();
    m_view.status->notices().show(inWords(outcome.decision, outcome.versions, outcome.added));
    return;
  }
  // The person may have closed it meanwhile.
  if (!m_dialog || !m_dialog->isVisible()) return m_view.status->notices().show(outcome.error.localizedDescription);
  m_dialog->setProblem(outcome.error.localizedDescription);
  // They may be others than were looked at.
  read(outcome.identifier);
}

void JournalVersions::refreshEntry(const QStringList& identifiers) {
  for (const QString& identifier : identifiers) m_library.entryDidChange(identifier);
  m_view.editor->refresh();
  m_view.refreshReading();
  list();
}

}  // namespace quillo
