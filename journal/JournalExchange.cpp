#include "journal/JournalExchange.h"

#include "foundation/UserDirectories.h"
#include "journal/JournalPrinting.h"
#include "journal/JournalWindowView.h"
#include "journal/exchange/ExportDialog.h"
#include "journal/exchange/ImportDialog.h"
#include "journal/model/JournalLibrary.h"
#include "journal/model/JournalOverview.h"
#include "journal/model/JournalSearch.h"
#include "journal/model/Timeline.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/StatusRow.h"
#include "journal/views/TimelineView.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QPointer>

namespace quillo {

using namespace Qt::StringLiterals;

JournalExchange::JournalExchange(QWidget& window, const JournalExchangeServices& services, const Parts& parts)
    : m_window(window), m_services(services), m_parts(parts) {
  connect(&m_undo, &BackgroundWork::progressed, this,
          [this](const QString&, qint64 done, qint64 total) { showProgressOfUndo(done, total); });
}

void JournalExchange::beginExport(const QString& format) {
  if (m_parts.library.state() != JournalLibrary::State::Open) return;
  m_parts.view.editor->save();
  QString problem;
  const auto question = m_parts.search.question(QDate::currentDate(), &problem);
  const auto exported = [this](const QString& path, const JournalExport::Result& result) {
    const QString at = pathForPeople(QUrl::fromLocalFile(path));
    QString text = inWords(result.entries, u"exported to "_s + at);
    QList<NoticeBar::Action> actions{{u"Show in Folder"_s, [this, path] {
                                        m_services.showFile(path, [self = QPointer(this)] {
                                          if (self)
                                            self->m_parts.view.status->notices().show(
                                                u"No installed program shows folders."_s);
                                        });
                                      }}};
    if (result.damaged > 0) {
      text += u"; without %1 damaged"_s.arg(result.damaged);
      actions << NoticeBar::Action{u"Damaged Entries"_s, m_parts.showDamaged};
    }
    if (result.isDisturbed) text += u"; entries came or went meanwhile"_s;
    m_parts.view.status->notices().show(text, actions);
  };
  auto* dialog =
      new ExportDialog({.journal = m_parts.library.package()->url(),
                        .journalName = m_parts.library.name(),
                        .entries = m_parts.search.isEmpty() ? m_parts.timeline.total() : m_parts.overview.total(),
                        .found = m_parts.search.isEmpty() ? std::nullopt : question,
                        .foundEntries = m_parts.timeline.total(),
                        .selected = m_parts.view.list->selectedIdentifiers(),
                        .pdf = m_services.pdf,
                        .exported = exported},
                       format, &m_window);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

void JournalExchange::beginImport() {
  if (m_parts.library.state() != JournalLibrary::State::Open) return;
  m_parts.view.editor->save();
  auto* dialog = new ImportDialog({.journal = m_parts.library.package()->url(),
                                   .makesTagsOfHashtags = m_services.makesTagsOfHashtags(),
                                   .openPanel = m_services.openPanel,
                                   .imported = [this](const ImportOutcome& outcome) { imported(outcome); }},
                                  &m_window);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

void JournalExchange::print(const std::function<QString(const QLWeather&)>& weatherText) {
  m_parts.view.editor->save();
  QString outcome;
  if (const auto question = m_parts.search.question(QDate::currentDate(), &outcome))
    outcome = JournalPrinting(m_window, m_parts.library, weatherText).print(*question);
  if (!outcome.isEmpty()) m_parts.view.status->notices().show(outcome);
}

void JournalExchange::imported(const ImportOutcome& outcome) {
  m_parts.library.lookAgain();
  const qint64 count = outcome.counts.added + outcome.counts.replaced;
  m_parts.view.status->notices().show(inWords(count, u"imported"_s), {{u"Undo"_s, [this] { undoImport(); }}});
}

void JournalExchange::offerUndoOfImport() {
  if (m_parts.library.state() != JournalLibrary::State::Open) return;
  NoticeBar& notices = m_parts.view.status->notices();
  const auto last = ImportUndo::lastImport(*m_parts.library.package());
  if (!last) return notices.show(u"There is no import to take back"_s);
  const QString day = m_window.locale().toString(last->date.toDateTime().toLocalTime().date(), u"d MMMM yyyy"_s);
  notices.show(u"%1 on %2 from %3"_s.arg(inWords(last->added + last->replaced, u"imported"_s), day,
                                         pathForPeople(QUrl::fromLocalFile(last->source))),
               {{u"Take Back"_s, [this] { undoImport(); }}});
}

void JournalExchange::undoImport() {
  if (m_undo.isRunning() || m_parts.library.state() != JournalLibrary::State::Open) return;
  // What is being written is a change of the entry's, which keeps it.
  m_parts.view.editor->save();
  NoticeBar& notices = m_parts.view.status->notices();
  m_undoNotice = u"Taking the import back…"_s;
  notices.show(m_undoNotice, {{u"Stop"_s, [this] { m_undo.stop(); }}});
  const auto outcome = std::make_shared<ImportUndoOutcome>();
  m_undo.start([outcome, journal = m_parts.library.package()->url()](
                   BackgroundWork::Monitor& monitor) { *outcome = undoLastImport(journal, monitor); },
               [this, outcome, &notices] {
                 m_parts.library.lookAgain();
                 if (outcome->isStopped)
                   return notices.show(u"Stopped; the rest of the import is still there"_s,
                                       {{u"Take Back"_s, [this] { undoImport(); }}});
                 if (outcome->error) return notices.show(outcome->error->localizedDescription);
                 QString text = inWords(outcome->counts.removed + outcome->counts.putBack, u"taken back"_s);
                 if (outcome->counts.changed > 0)
                   text += u"; %1 changed since and kept"_s.arg(m_window.locale().toString(outcome->counts.changed));
                 notices.show(text);
               });
}

// Another notice that has come since stays.
void JournalExchange::showProgressOfUndo(qint64 done, qint64 total) {
  NoticeBar& notices = m_parts.view.status->notices();
  if (!m_undo.isRunning() || notices.text() != m_undoNotice) return;
  m_undoNotice =
      u"Taking the import back: %1 of %2"_s.arg(m_window.locale().toString(done), m_window.locale().toString(total));
  notices.setText(m_undoNotice);
}

QString JournalExchange::inWords(qint64 count, const QString& what) const {
  return count == 1 ? u"1 entry %1"_s.arg(what) : u"%1 entries %2"_s.arg(m_window.locale().toString(count), what);
}

}  // namespace quillo
