#include "journal/model/Timeline.h"

#include "journal/model/ClockTime.h"
#include "qlcore/EntryTime.h"

#include <QLocale>
#include <QMap>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// More than two lines of the widest list.
constexpr qsizetype longestText = 500;

// On one screen, where each is about 90 points high.
constexpr int mostRowsSeen = 30;

// "Berlin" of "Berlin, Germany": where one is at home.
QString shortPlace(const QString& name) {
  return name.section(u',', 0, 0).trimmed();
}

}  // namespace

Timeline::Timeline(JournalReader& reader, std::function<QString(const QLWeather&)> weatherText)
    : m_reader(reader), m_weatherText(std::move(weatherText)) {
  connect(&m_reader, &JournalReader::didChange, this, &Timeline::reload);
}

void Timeline::show(const JournalQuestion& question) {
  if (question != m_askedQuestion) {
    m_lastLookedAt = 0;
    m_isOther = true;
  }
  m_askedQuestion = question;
  reload();
}

void Timeline::reload() {
  m_draft = {};
  // Whoever asked before does not want to know any more.
  m_draft.asker = std::make_unique<QObject>();
  // What stands on the screen is there when the new answer is shown: nothing flickers. The row that was looked at last
  // is the lowest there.
  const int last = m_lastLookedAt / pageSize;
  const int first = std::max(0, m_lastLookedAt - mostRowsSeen) / pageSize;
  m_draft.pagesWanted = last - first + 1;
  for (int i = first; i <= last; ++i)
    fetch(*m_draft.asker, m_askedQuestion, i, [this, i](Page content) {
      m_draft.pages.insert(i, std::move(content));
      draftDidGrow();
    });
  // After the pages, as it takes longer where much is found.
  m_reader.count(m_draft.asker.get(), m_askedQuestion, JournalCountBy::Day, [this](const QList<JournalCount>& counts) {
    QList<TimelineDay> days;
    for (auto count = counts.rbegin(); count != counts.rend(); ++count)
      days.append({count->day, static_cast<int>(count->count)});
    m_draft.days = days;
    draftDidGrow();
  });
}

void Timeline::clear() {
  m_draft = {};
  m_days.clear();
  m_pages.clear();
  m_requested.clear();
  m_asker = std::make_unique<QObject>();
  m_total = 0;
  m_lastLookedAt = 0;
  m_isKnown = false;
  m_isCounted = false;
  m_isOther = true;
  Q_EMIT didReset(/*isOther=*/true);
}

void Timeline::fetch(QObject& asker, JournalQuestion question, int page, std::function<void(Page)> fetched) {
  question.order = JournalQuestion::Order::NewestFirst;
  question.offset = qint64{page} * pageSize;
  question.limit = pageSize;
  question.isCounted = false;
  m_reader.ask(&asker, question,
               [this, fetched = std::move(fetched)](const JournalAnswer& answer) { fetched(pageFor(answer)); });
}

void Timeline::draftDidGrow() {
  if (m_draft.pages.size() < m_draft.pagesWanted && !m_draft.isFirstPageShown) return;
  if (m_draft.days)
    showDraft();
  else if (m_isOther)
    showFirstPage();
}

void Timeline::showFirstPage() {
  // Looked at from its beginning, there is only that one.
  m_pages = std::exchange(m_draft.pages, {});
  m_draft.isFirstPageShown = true;
  const QList<TimelineRow>& rows = m_pages[0].rows;
  QMap<QDate, int> counts;
  for (const TimelineRow& row : rows) ++counts[row.day];
  QList<TimelineDay> days;
  for (auto count = counts.constEnd(); count != counts.constBegin();) {
    --count;
    days.append({count.key(), count.value()});
  }
  m_isCounted = rows.size() < pageSize;
  setDays(days);
  Q_EMIT didReset(std::exchange(m_isOther, false));
}

void Timeline::showDraft() {
  const bool isNews = !m_draft.isFirstPageShown || m_days != *m_draft.days || !m_isCounted;
  if (!m_draft.isFirstPageShown) m_pages = std::exchange(m_draft.pages, {});
  m_isCounted = true;
  setDays(*m_draft.days);
  // The journal may have changed between the two answers; the page is asked for again then.
  if (m_draft.isFirstPageShown && m_pages.value(0).rows.size() != std::min(m_total, pageSize)) m_pages.clear();
  m_draft.days.reset();
  if (isNews) Q_EMIT didReset(std::exchange(m_isOther, false));
}

void Timeline::setDays(const QList<TimelineDay>& days) {
  m_question = m_askedQuestion;
  m_days = days;
  m_total = 0;
  for (const TimelineDay& day : std::as_const(m_days)) m_total += day.count;
  m_requested.clear();
  m_asker = std::make_unique<QObject>();
  m_isKnown = true;
}

Timeline::Page Timeline::pageFor(const JournalAnswer& answer) {
  Page page;
  for (const IndexedEntry& entry : answer.entries) page.rows << rowFor(entry);
  page.lastUse = ++m_uses;
  return page;
}

void Timeline::keep(int page, Page content) {
  m_pages.insert(page, std::move(content));
  // One goes for each that comes.
  if (m_pages.size() <= mostPages) return;
  const auto oldest = std::min_element(m_pages.begin(), m_pages.end(),
                                       [](const Page& a, const Page& b) { return a.lastUse < b.lastUse; });
  m_pages.erase(oldest);
}

void Timeline::request(int page) {
  if (m_requested.contains(page)) return;
  m_requested.insert(page);
  fetch(*m_asker, m_question, page, [this, page](Page content) {
    m_requested.remove(page);
    keep(page, std::move(content));
    Q_EMIT rowsDidArrive(page * pageSize, page * pageSize + pageSize - 1);
  });
}

const TimelineRow* Timeline::row(int row) {
  if (row < 0 || row >= m_total) return nullptr;
  m_lastLookedAt = row;
  const auto page = m_pages.find(row / pageSize);
  if (page == m_pages.end()) {
    request(row / pageSize);
    return nullptr;
  }
  page->lastUse = ++m_uses;
  const int inPage = row % pageSize;
  return inPage < page->rows.size() ? &page->rows[inPage] : nullptr;
}

int Timeline::rowOfEntry(const QString& identifier) const {
  for (auto page = m_pages.begin(); page != m_pages.end(); ++page)
    for (qsizetype i = 0; i < page->rows.size(); ++i)
      if (page->rows[i].identifier == identifier) return page.key() * pageSize + static_cast<int>(i);
  return -1;
}

TimelineRow Timeline::rowFor(const IndexedEntry& entry) const {
  TimelineRow row;
  row.identifier = entry.uuid;
  row.day = entry.day;
  row.time = clockTime(localTime(entry.creationDate, entry.timeZone).time(), QLocale());
  row.tags = entry.tags;
  row.otherVersions = static_cast<int>(entry.otherVersions);
  const qsizetype start = std::clamp<qsizetype>(entry.excerpt.location, 0, entry.text.size());
  row.text = entry.text.sliced(start, std::min(longestText, entry.text.size() - start));
  // As one paragraph; each break becomes a space, so that places stay.
  for (QChar& c : row.text)
    if (c == u'\n' || c == u'\r' || c == u'\t') c = u' ';
  for (const TextRange& match : entry.matches)
    if (match.location >= start && match.location + match.length <= start + row.text.size())
      row.matches.append({match.location - start, match.length});
  QStringList parts;
  if (entry.location && !entry.location->placeName.isEmpty()) parts << shortPlace(entry.location->placeName);
  if (entry.weather) parts << m_weatherText(*entry.weather);
  row.placeAndWeather = parts.join(u" · "_s);
  return row;
}

}  // namespace quillo
