#pragma once

#include "entry/spelling/SpellingDictionary.h"
#include "foundation/Error.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <future>
#include <memory>
#include <optional>

namespace quillo {

struct UserDirectories;

// What is a word of the user's: the dictionary of the language, the words the user taught, and those to be ignored as
// long as the process lives. Until the dictionary has been read, and without one, every word passes. Main thread only.
class SpellChecker : public QObject {
  Q_OBJECT

 public:
  struct Sources {
    QStringList languages;    // most wanted first
    QStringList directories;  // of dictionaries
    QString learnedWords;     // path of the file of taught words, one a line
  };
  // The user's languages, and where the user's words are and dictionaries are installed.
  [[nodiscard]] static Sources standardSources(const UserDirectories& user);

  explicit SpellChecker(Sources sources, QObject* parent = nullptr);
  ~SpellChecker() override;

  enum class State { NotLoaded, Loading, Ready, NoDictionary };
  [[nodiscard]] State state() const { return m_state; }

  // Starts to read the dictionary on a thread of its own; vocabularyDidChange() tells when it is there. Only the first
  // call does anything, and the first after unload(). No dictionary at all is said once in the log.
  void load();
  // Lets go of the dictionary, which takes some megabytes; load() reads it again. Taught and ignored words stay.
  void unload();

  // Words in another script than the dictionary's language pass, and so do those too long for a dictionary.
  [[nodiscard]] bool isMisspelled(QStringView word);

  // Best first. Takes up to a tenth of a second, so not for while the user types.
  [[nodiscard]] QStringList suggestions(QStringView word, qsizetype atMost) const;

  // What a misspelled word was meant to be, where there is hardly a doubt: exactly one word of the dictionary comes
  // from it by swapping two neighbouring letters, or, from five letters on and if no swap helps, exactly one by
  // changing, dropping or adding one letter or apostrophe. A capital letter at the front is kept, but such a word may
  // well be a name and is only ever corrected by a swap; words with other capitals and those of one or two letters are
  // left alone.
  [[nodiscard]] std::optional<QString> confidentCorrection(QStringView word);

  void ignoreSpelling(QStringView word);
  // Also writes it into the user's list, which other processes may have added to. A failure is logged, and the word
  // is then only ignored.
  void learnSpelling(QStringView word);
  // The user's list as it is on disk, in alphabetical order.
  [[nodiscard]] QStringList learnedWords() const;
  // Takes a word off the list. False, with the reason, where that could not be written.
  bool forgetSpelling(QStringView word, Error* error);
  // Another process has changed the list.
  void learnedWordsDidChange();

  // The files of the dictionary that the user's languages have; nothing where none is installed.
  [[nodiscard]] std::optional<SpellingDictionary::Files> dictionaryFiles() const;

  // How many words have been looked at so far.
  [[nodiscard]] qint64 lookUpCount() const { return m_lookUpCount; }

 Q_SIGNALS:
  // A word that passed may be misspelled now, or the other way round.
  void vocabularyDidChange();

 private:
  struct Loaded {
    std::unique_ptr<SpellingDictionary> dictionary;
    QSet<QString> learned;
  };
  bool writeLearnedWords(const QSet<QString>& words, Error* error);
  [[nodiscard]] static Loaded loaded(const Sources& sources);
  void didLoad();
  [[nodiscard]] bool isTaught(const QString& word) const;
  [[nodiscard]] bool isInDictionary(const QString& word);
  [[nodiscard]] QStringList wordsByOneSwap(const QString& word);
  [[nodiscard]] QStringList wordsByOneEdit(const QString& word);

  Sources m_sources;
  State m_state{State::NotLoaded};
  std::unique_ptr<SpellingDictionary> m_dictionary;
  QSet<QString> m_learned;
  QSet<QString> m_ignored;
  QHash<QString, bool> m_known;
  qint64 m_lookUpCount{0};
  // Last, so that its end waits for the thread while the rest still stands.
  std::future<Loaded> m_loading;
};

}  // namespace quillo
