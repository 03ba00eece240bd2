#include "exchange/JournalExport.h"

#include "qlcore/EntryFields.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <map>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// How many entries to ask for next, by the size of those that came: a few large ones are as much as many small ones.
qint64 nextPortion(const QList<IndexedEntry>& entries) {
  constexpr qint64 smallest = 20;
  constexpr qint64 largest = 1000;
  constexpr qint64 units = qint64{2} * 1024 * 1024;
  qint64 size = 1;
  for (const IndexedEntry& entry : entries) size += entry.text.size();
  return std::clamp(units * entries.size() / size, smallest, largest);
}

// In ascending order.
QList<JournalCount> monthsOf(const QList<IndexedEntry>& entries) {
  std::map<QDate, qint64> counts;
  for (const IndexedEntry& entry : entries) ++counts[QDate(entry.day.year(), entry.day.month(), 1)];
  QList<JournalCount> months;
  for (const auto& [month, count] : counts) months << JournalCount{month, {}, count};
  return months;
}

}  // namespace

void JournalExport::tellOfDamage(const QString& reason, Result& result) const {
  ++result.damaged;
  if (m_damage) m_damage(reason);
}

ExportOverview JournalExport::overview(const Options& options) const {
  ExportOverview overview;
  overview.journalName = QFileInfo(m_package.url().toLocalFile()).completeBaseName();
  overview.journalIdentifier = m_package.identifier();
  overview.time = Date::since1970(std::floor(Date::now().timeIntervalSince1970()));
  if (!options.identifiers.isEmpty()) {
    overview.entries = options.identifiers.size();
    return overview;
  }
  JournalQuestion count = options.question;
  count.offset = 0;
  count.limit = 1;
  count.isCounted = true;
  overview.entries = m_index.ask(count).total;
  if (options.wantsMonths) overview.months = m_index.counts(options.question, JournalCountBy::Month);
  return overview;
}

JournalExport::Result JournalExport::run(const Options& options, EntryWriter& writer) {
  Result result;
  if (options.identifiers.isEmpty())
    for (const IndexedDamage& damage : m_index.damagedEntries()) tellOfDamage(damage.reason, result);
  if (options.isStrict && result.damaged > 0) {
    result.error = cocoaError(ErrorCode::fileReadCorrupt, u"nothing was exported, since there are damaged entries"_s);
    return result;
  }
  ExportOverview known = overview(options);
  QList<IndexedEntry> identified;
  if (!options.identifiers.isEmpty()) {
    identified = identifiedEntries(options, result);
    known.entries = identified.size();
    if (options.wantsMonths) known.months = monthsOf(identified);
  }
  const auto addEntries = [&] {
    return options.identifiers.isEmpty() ? addAll(options, known.entries, writer, result)
                                         : addPortion(identified, options, writer, result);
  };
  Error error;
  if (!writer.begin(known, &error) || !addEntries() || !writer.end(&error))
    if (!result.error) result.error = error;
  return result;
}

QList<IndexedEntry> JournalExport::identifiedEntries(const Options& options, Result& result) const {
  QList<IndexedEntry> entries;
  for (const QString& identifier : options.identifiers) {
    const auto entry = m_index.entryWithUUID(identifier);
    if (entry)
      entries << *entry;
    else
      result.isDisturbed = true;
  }
  return entries;
}

bool JournalExport::addAll(const Options& options, qint64 total, EntryWriter& writer, Result& result) {
  JournalQuestion question = options.question;
  question.isCounted = false;
  question.offset = 0;
  question.limit = 100;
  // Each turn goes on by at least one entry, or is the last.
  while (true) {
    const QList<IndexedEntry> entries = m_index.ask(question).entries;
    if (!addPortion(entries, options, writer, result)) return false;
    question.offset += entries.size();
    if (m_progress) m_progress(question.offset, std::max(total, question.offset));
    if (entries.size() < question.limit) break;
    question.limit = nextPortion(entries);
  }
  result.isDisturbed = question.offset != total;
  return true;
}

bool JournalExport::addPortion(const QList<IndexedEntry>& entries, const Options& options, EntryWriter& writer,
                               Result& result) {
  Error error;
  const auto stop = [&result](const Error& reason) {
    result.error = reason;
    return false;
  };
  const auto folder =
      options.wantsFields && !entries.isEmpty() ? JournalFolder::open(m_package.entriesFolder(), &error) : std::nullopt;
  if (options.wantsFields && !entries.isEmpty() && !folder) return stop(error);
  for (const IndexedEntry& entry : entries) {
    if (m_isStopped && m_isStopped()) {
      result.isStopped = true;
      return stop(cocoaError(ErrorCode::fileReadUnknown, u"stopped; nothing was exported"_s));
    }
    ExportedEntry exported{entry, {}};
    if (folder) {
      auto fields = EntryFields::read(*folder, entry.fileName, &error);
      if (!fields) {
        tellOfDamage(error.localizedDescription, result);
        if (options.isStrict) return stop(error);
        continue;
      }
      exported.fields = *std::move(fields);
    }
    if (!writer.add(exported, &error)) return stop(error);
    ++result.entries;
  }
  return true;
}

}  // namespace quillo
