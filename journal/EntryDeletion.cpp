#include "journal/EntryDeletion.h"

#include "journal/JournalWindowView.h"
#include "journal/model/Timeline.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/StatusRow.h"
#include "journal/views/TimelineView.h"
#include "qlcore/QLJournalEntryFile.h"

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

EntryDeletion::EntryDeletion(JournalLibrary& library, Timeline& timeline, JournalWindowView& view,
                             std::function<void(const QString& identifier)> showEntry)
    : m_library(library), m_timeline(timeline), m_view(view), m_showEntry(std::move(showEntry)) {}

void EntryDeletion::moveToTrash(const QStringList& identifiers) {
  if (identifiers.isEmpty()) return;
  const QLJournalEntryFile* shown = m_view.editor->entry();
  const int row = m_view.list->currentRow();
  if (shown && identifiers.contains(shown->uuid())) {
    // What is not saved yet goes to the Trash with the rest; where it cannot be saved, nothing goes.
    if (!m_view.editor->text().isEmpty() && !m_view.editor->save()) return;
    m_view.editor->clear();
  }
  Error error;
  const auto deletion = m_library.moveToTrash(identifiers, &error);
  NoticeBar& notices = m_view.status->notices();
  if (deletion.entries.isEmpty()) return notices.show(error.localizedDescription);
  m_last = deletion;
  const auto count = deletion.entries.size();
  notices.show(count == 1 ? u"Entry moved to the Trash"_s : u"%1 entries moved to the Trash"_s.arg(count),
               {{u"Undo"_s, [this] { undo(); }}});
  m_view.list->setCurrentEntry({});
  m_row = row;
}

void EntryDeletion::undo() {
  const auto deletion = std::exchange(m_last, std::nullopt);
  if (!deletion) return;
  m_row.reset();
  Error error;
  const bool isBack = m_library.putBack(*deletion, &error);
  m_showEntry(deletion->entries.first().identifier);
  m_view.status->notices().show(isBack ? u"Taken back"_s : error.localizedDescription);
}

void EntryDeletion::showNext() {
  if (!m_row || !m_last) return;
  for (const auto& deleted : m_last->entries)
    if (m_timeline.rowOfEntry(deleted.identifier) >= 0) return;
  const int row = std::clamp(std::exchange(m_row, std::nullopt).value_or(0), 0, m_timeline.total() - 1);
  // Or the person has gone on meanwhile.
  if (m_view.list->currentIdentifier().isEmpty() && !m_view.editor->isUnsaved()) m_view.list->setCurrentRow(row);
}

}  // namespace quillo
