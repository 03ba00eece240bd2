#pragma once

#include "qlcore/index/JournalQuestion.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// A filter that stands beside the words of a search.
struct SearchFilter {
  enum class Kind { Tag, Place, Day, Month, Year, OnThisDay };

  Kind kind{Kind::Tag};
  QString name;  // of a tag or place
  QDate day;     // of the others: any day of what is meant

  [[nodiscard]] static SearchFilter tag(const QString& name) { return {Kind::Tag, name, {}}; }
  [[nodiscard]] static SearchFilter place(const QString& name) { return {Kind::Place, name, {}}; }

  // As a person reads it: "#evening", "Berlin", "24 November 2026".
  [[nodiscard]] QString text() const;

  bool operator==(const SearchFilter&) const = default;
};

// What is searched for: words as they were typed, and filters that all must hold. At most one filter is about dates.
class JournalSearch {
 public:
  [[nodiscard]] const QString& words() const { return m_words; }
  void setWords(const QString& words) { m_words = words; }
  [[nodiscard]] const QList<SearchFilter>& filters() const { return m_filters; }
  // Nothing where it is there already; a filter about dates takes the place of the one before.
  void addFilter(const SearchFilter& filter);
  void removeFilter(qsizetype index);
  void clear();

  [[nodiscard]] bool isEmpty() const { return m_words.trimmed().isEmpty() && m_filters.isEmpty(); }
  // Of the filters, in their order.
  [[nodiscard]] QStringList texts() const;

  // Nothing, with one sentence in `problem`, where the words make no sense.
  [[nodiscard]] std::optional<JournalQuestion> question(QDate today, QString* problem) const;

  // What of the words an entry's text is to have, for marking it there.
  [[nodiscard]] QStringList searchedWords(QDate today) const;

  bool operator==(const JournalSearch&) const = default;

 private:
  QString m_words;
  QList<SearchFilter> m_filters;
};

}  // namespace quillo
