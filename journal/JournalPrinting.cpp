#include "journal/JournalPrinting.h"

#include "journal/printing/EntryPrinter.h"

#include <QEventLoop>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QWidget>

#include <algorithm>
#include <memory>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Reads the entries in portions, each waited for: the dialog of the progress keeps the window from being used
// meanwhile.
class Pages {
 public:
  Pages(JournalReader& reader, JournalQuestion question) : m_reader(&reader), m_question(std::move(question)) {
    m_question.order = JournalQuestion::Order::OldestFirst;
    m_question.offset = 0;
    m_question.limit = 100;
  }

  // Nothing when there are no more, or the journal is gone.
  std::optional<IndexedEntry> next() {
    if (m_at == m_entries.size() && !m_isEnd) read();
    if (m_at == m_entries.size()) return std::nullopt;
    return m_entries[m_at++];
  }
  [[nodiscard]] qint64 total() const { return m_total; }

 private:
  void read() {
    QObject asker;
    QEventLoop loop;
    m_entries.clear();
    m_at = 0;
    if (!m_reader) return;
    QObject::connect(m_reader.data(), &QObject::destroyed, &loop, &QEventLoop::quit);
    m_reader->ask(&asker, m_question, [&](const JournalAnswer& answer) {
      m_entries = answer.entries;
      m_total = answer.total;
      loop.quit();
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    m_question.offset += m_question.limit;
    m_isEnd = m_entries.size() < m_question.limit;
  }

  QPointer<JournalReader> m_reader;
  JournalQuestion m_question;
  QList<IndexedEntry> m_entries;
  qsizetype m_at{0};
  qint64 m_total{0};
  bool m_isEnd{false};
};

QString outcomeText(EntryPrinter::Outcome outcome, const Error& error, const QString& done) {
  if (outcome == EntryPrinter::Outcome::Failed) return error.localizedDescription;
  return outcome == EntryPrinter::Outcome::Cancelled ? u"Cancelled; nothing was kept."_s : done;
}

}  // namespace

JournalPrinting::JournalPrinting(QWidget& window, JournalReader& reader,
                                 std::function<QString(const QLWeather&)> weatherText)
    : m_window(window), m_reader(reader), m_weatherText(std::move(weatherText)) {}

template <typename Work>
QString JournalPrinting::run(JournalQuestion question, Work work) {
  Pages pages(m_reader, std::move(question));
  QProgressDialog progress(u"Laying out the entries…"_s, u"Cancel"_s, 0, 0, &m_window);
  progress.setWindowModality(Qt::WindowModal);
  progress.setMinimumDuration(400);
  const QLocale locale = m_window.locale();
  EntryPrinter printer(
      [&]() -> std::optional<PrintedEntry> {
        const auto entry = pages.next();
        return entry ? std::optional(printedEntry(*entry, locale, m_weatherText)) : std::nullopt;
      },
      [&](int entries, int) {
        progress.setMaximum(static_cast<int>(std::max<qint64>(pages.total(), 1)));
        progress.setValue(std::min(entries, progress.maximum() - 1));
        return !progress.wasCanceled();
      });
  return work(printer);
}

QString JournalPrinting::print(JournalQuestion question) {
  QPrinter printer(QPrinter::HighResolution);
  QPrintDialog dialog(&printer, &m_window);
  if (dialog.exec() != QDialog::Accepted) return {};
  const QString file = printer.outputFileName();
  return run(std::move(question), [&](EntryPrinter& entries) {
    Error error;
    return outcomeText(entries.print(printer, &error), error,
                       file.isEmpty() ? u"Sent to the printer."_s : u"Saved as %1."_s.arg(file));
  });
}

}  // namespace quillo
