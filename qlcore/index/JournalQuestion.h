#pragma once

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// What is asked of a journal: which entries, in which order, which part of the list. All that is named must hold. Words
// are compared without case and accents.
struct JournalQuestion {
  // Words that stand next to each other in this order, in the text, in one tag or in the place's name.
  struct Phrase {
    QString text;
    bool isPrefix{false};  // the last word may go on
    bool isExcluded{false};

    bool operator==(const Phrase&) const = default;
  };
  // A tag as a whole, or a place whose name has these words next to each other.
  struct Name {
    QString name;
    bool isExcluded{false};

    bool operator==(const Name&) const = default;
  };
  // The same day of the month, in other years than that of `day`.
  struct Anniversary {
    QDate day;

    bool operator==(const Anniversary&) const = default;
  };
  enum class Order { NewestFirst, OldestFirst, BestFirst };

  QList<Phrase> phrases;
  QList<Name> tags;
  QList<Name> places;
  // Days as the calendar showed them where an entry was begun, both included.
  std::optional<QDate> firstDay;
  std::optional<QDate> lastDay;
  std::optional<Anniversary> anniversary;

  Order order{Order::NewestFirst};
  qint64 offset{0};
  qint64 limit{50};
  // Whether the answer is to say how many there are in all, which takes as long as finding all.
  bool isCounted{true};

  // What a person typed: words (the last one may be unfinished), "exact phrases", tag:x or #x, place:x, on:, since: and
  // before: with a date, each with - before it to leave out what has it (but for dates). on:this-day means the day of
  // `today` in other years. Nothing typed asks for every entry. Nothing, with one plain sentence in `problem`, where it
  // makes no sense.
  [[nodiscard]] static std::optional<JournalQuestion> parse(const QString& typed, QDate today,
                                                            QString* problem = nullptr);

  bool operator==(const JournalQuestion&) const = default;
};

}  // namespace quillo
