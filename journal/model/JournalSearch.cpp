#include "journal/model/JournalSearch.h"

#include <QLocale>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

bool isAboutDates(const SearchFilter& filter) {
  return filter.kind != SearchFilter::Kind::Tag && filter.kind != SearchFilter::Kind::Place;
}

// Narrows what the words have asked for already.
void limitDays(JournalQuestion& question, QDate first, QDate last) {
  question.firstDay = question.firstDay ? std::max(*question.firstDay, first) : first;
  question.lastDay = question.lastDay ? std::min(*question.lastDay, last) : last;
}

}  // namespace

QString SearchFilter::text() const {
  const QLocale locale;
  switch (kind) {
    case Kind::Tag:
      return u'#' + name;
    case Kind::Place:
      return name;
    case Kind::Day:
      return locale.toString(day, u"d MMMM yyyy"_s);
    case Kind::Month:
      return locale.standaloneMonthName(day.month()) + u' ' + QString::number(day.year());
    case Kind::Year:
      return QString::number(day.year());
    case Kind::OnThisDay:
      return u"On this day"_s;
  }
  return {};
}

void JournalSearch::addFilter(const SearchFilter& filter) {
  if (m_filters.contains(filter)) return;
  if (isAboutDates(filter)) m_filters.removeIf(isAboutDates);
  m_filters << filter;
}

void JournalSearch::removeFilter(qsizetype index) {
  if (index >= 0 && index < m_filters.size()) m_filters.removeAt(index);
}

void JournalSearch::clear() {
  m_words.clear();
  m_filters.clear();
}

QStringList JournalSearch::texts() const {
  QStringList texts;
  for (const SearchFilter& filter : m_filters) texts << filter.text();
  return texts;
}

std::optional<JournalQuestion> JournalSearch::question(QDate today, QString* problem) const {
  auto question = JournalQuestion::parse(m_words, today, problem);
  if (!question) return std::nullopt;
  for (const SearchFilter& filter : m_filters) {
    const QDate day = filter.day;
    switch (filter.kind) {
      case SearchFilter::Kind::Tag:
        question->tags.append({filter.name, false});
        break;
      case SearchFilter::Kind::Place:
        question->places.append({filter.name, false});
        break;
      case SearchFilter::Kind::Day:
        limitDays(*question, day, day);
        break;
      case SearchFilter::Kind::Month:
        limitDays(*question, QDate(day.year(), day.month(), 1), QDate(day.year(), day.month(), day.daysInMonth()));
        break;
      case SearchFilter::Kind::Year:
        limitDays(*question, QDate(day.year(), 1, 1), QDate(day.year(), 12, 31));
        break;
      case SearchFilter::Kind::OnThisDay:
        question->anniversary = JournalQuestion::Anniversary{today};
        break;
    }
  }
  return question;
}

QStringList JournalSearch::searchedWords(QDate today) const {
  QStringList words;
  const auto question = JournalQuestion::parse(m_words, today);
  if (!question) return words;
  for (const auto& phrase : question->phrases)
    if (!phrase.isExcluded) words << phrase.text;
  return words;
}

}  // namespace quillo
