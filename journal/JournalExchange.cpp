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

namespace quillo {

using namespace Qt::StringLiterals;

JournalExchange::JournalExchange(QWidget& window, const JournalExchangeServices& services, const Parts& parts)
    : m_window(window), m_services(services), m_parts(parts) {}

void JournalExchange::beginExport(const QString& format) {
  if (m_parts.library.state() != JournalLibrary::State::Open) return;
  m_parts.view.editor->save();
  QString problem;
  const auto question = m_parts.search.question(QDate::currentDate(), &problem);
  const auto exported = [this](const QString& path, const JournalExport::Result& result) {
    const QString at = pathForPeople(QUrl::fromLocalFile(path));
    QString text = result.entries == 1
                       ? u"1 entry exported to %1"_s.arg(at)
                       : u"%1 entries exported to %2"_s.arg(m_window.locale().toString(result.entries), at);
    QList<NoticeBar::Action> actions{{u"Show in Folder"_s, [this, path] {
                                        if (!m_services.showFile(path))
                                          m_parts.view.status->notices().show(u"No installed program shows folders."_s);
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
  m_parts.view.status->notices().show(count == 1 ? u"1 entry imported"_s
                                                 : u"%1 entries imported"_s.arg(m_window.locale().toString(count)));
}

}  // namespace quillo
