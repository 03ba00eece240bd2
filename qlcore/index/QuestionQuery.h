#pragma once

#include "qlcore/index/CommonPrefixes.h"
#include "qlcore/index/IndexDatabase.h"
#include "qlcore/index/IndexedEntry.h"
#include "qlcore/index/JournalQuestion.h"

#include <QString>

#include <algorithm>
#include <optional>
#include <vector>

namespace quillo {

// Answers one question from the tables. Within a transaction, so that all answers are of one moment.
class QuestionQuery {
 public:
  QuestionQuery(IndexDatabase& database, const CommonPrefixes& prefixes, const JournalQuestion& question);

  // How many entries there are that it finds.
  [[nodiscard]] qint64 total();
  // The rows of those that were asked for, in order.
  [[nodiscard]] std::vector<qint64> ids();
  [[nodiscard]] QList<JournalCount> counts(JournalCountBy by);

 private:
  [[nodiscard]] qint64 offset() const { return std::max<qint64>(m_question.offset, 0); }
  [[nodiscard]] qint64 limit() const { return std::max<qint64>(m_question.limit, 0); }
  [[nodiscard]] bool isRanked() const;
  [[nodiscard]] qint64 countAll();
  qint64 rank();
  [[nodiscard]] QString condition() const;
  [[nodiscard]] QVariantList conditionValues() const;
  [[nodiscard]] std::vector<qint64> idsByRank();
  [[nodiscard]] std::vector<qint64> idsFrom(const QString& sql, const QVariantList& values);
  [[nodiscard]] QList<JournalCount> countsByDay(bool wholeMonths);
  [[nodiscard]] QList<JournalCount> countsByName(bool ofTags);

  IndexDatabase& m_database;
  const JournalQuestion& m_question;
  QString m_match;  // as the full-text table takes it; empty where only days are asked for
  std::optional<qint64> m_total;
  std::vector<qint64> m_ranked;  // those that were asked for, where they are ranked
  bool m_hasDays{false};
  qint64 m_firstDay{0};  // Julian
  qint64 m_lastDay{0};
  // Rows outside the first pair have other days, rows inside the second have none.
  qint64 m_possible[2]{0, 0};
  qint64 m_certain[2]{0, 0};
};

}  // namespace quillo
