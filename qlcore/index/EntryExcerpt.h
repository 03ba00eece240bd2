#pragma once

#include "qlcore/index/IndexedEntry.h"
#include "qlcore/index/JournalQuestion.h"

#include <QList>
#include <QString>

#include <vector>

namespace quillo {

// Finds the part of an entry's text that shows why a question found it.
class EntryExcerpt {
 public:
  explicit EntryExcerpt(const JournalQuestion& question);

  // Sets the entry's excerpt and matches.
  void find(IndexedEntry& entry) const;

 private:
  struct Phrase {
    QList<QString> words;
    bool isPrefix{false};
  };
  struct Word {
    QString folded;
    TextRange range;
  };
  // How many words the phrase takes that ends with the last word; 0 where none does.
  [[nodiscard]] static qsizetype endingPhrase(const std::vector<Word>& words, const Phrase& phrase);

  std::vector<Phrase> m_phrases;
};

}  // namespace quillo
