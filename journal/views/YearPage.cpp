#include "journal/views/YearPage.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "journal/model/WritingStreak.h"
#include "journal/views/YearHeatMap.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

YearPage::YearPage(QWidget* parent)
    : QWidget(parent),
      m_title(new QLabel(this)),
      m_totals(new QLabel(this)),
      m_previous(new QPushButton(u"\u2039"_s, this)),
      m_next(new QPushButton(u"\u203A"_s, this)),
      m_entriesButton(new QPushButton(u"Show Entries"_s, this)),
      m_map(new YearHeatMap(/*isLabelled=*/true, this)),
      m_today(QDate::currentDate()) {
  m_title->setFont(textFont(22, QFont::DemiBold));
  m_totals->setFont(textFont(14));
  m_totals->setWordWrap(true);
  m_previous->setAccessibleName(u"The year before"_s);
  m_next->setAccessibleName(u"The year after"_s);
  auto* heading = new QHBoxLayout;
  heading->addWidget(m_title);
  heading->addStretch(1);
  heading->addWidget(m_entriesButton);
  heading->addWidget(m_previous);
  heading->addWidget(m_next);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(40, 28, 40, 28);
  column->setSpacing(14);
  column->addLayout(heading);
  column->addWidget(m_totals);
  column->addSpacing(8);
  column->addWidget(m_map);
  column->addStretch(1);
  setFocusProxy(m_map);
  connect(m_previous, &QPushButton::clicked, this, [this] { showYear(year() - 1); });
  connect(m_next, &QPushButton::clicked, this, [this] { showYear(year() + 1); });
  connect(m_map, &YearHeatMap::dayActivated, this, &YearPage::dayActivated);
  connect(m_entriesButton, &QPushButton::clicked, this, [this] { Q_EMIT yearActivated(QDate(year(), 1, 1)); });
  applyColors();
  refresh();
}

int YearPage::year() const {
  return m_map->year();
}

void YearPage::showYear(int year) {
  m_map->setYear(std::clamp(year, 1, 9999));
  refresh();
}

void YearPage::setEntriesByDay(const QHash<QDate, int>& entries, QDate today) {
  m_entries = entries;
  m_today = today;
  refresh();
}

void YearPage::refresh() {
  QHash<QDate, int> ofYear;
  QList<QDate> days;
  int total = 0;
  for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
    if (it.key().year() != year() || it.value() <= 0) continue;
    ofYear.insert(it.key(), it.value());
    days << it.key();
    total += it.value();
  }
  std::sort(days.begin(), days.end());
  m_map->setAmounts(ofYear, u"entries"_s);
  m_title->setText(QString::number(year()));
  const int longest = WritingStreak::of(days, QDate(9999, 12, 31)).longest;
  const QString written =
      total == 0 ? u"Nothing was written in this year."_s
                 : u"%1 entries on %2 days, at most %3 days in a row."_s.arg(
                       locale().toString(total), locale().toString(days.size()), locale().toString(longest));
  m_totals->setText(total == 1 ? u"One entry."_s : written);
}

void YearPage::applyColors() {
  const JournalColors colors = JournalColors::current();
  for (const auto& [label, color] : {std::pair(m_title, colors.text), std::pair(m_totals, colors.dim)}) {
    QPalette own = label->palette();
    own.setColor(QPalette::WindowText, color);
    label->setPalette(own);
  }
}

}  // namespace quillo
