#pragma once

#include "preferences/pages/PreferencePage.h"

class QListWidget;
class QPushButton;

namespace quillo {

class SpellChecker;

// What is done with a text while it is written: spelling, grammar, hashtags, Markdown.
class WritingPage : public PreferencePage {
  Q_OBJECT

 public:
  WritingPage(PreferenceStore& store, SpellChecker& spellChecker, QWidget* parent);

 private:
  void addSpelling();
  void addGrammar();
  void addHashtags();
  void addLearnedWords();
  void showLearnedWords();
  void forgetWord();

  SpellChecker& m_spellChecker;
  QListWidget* m_words;
  QPushButton* m_forget;
  FormRow* m_wordsRow{nullptr};
};

}  // namespace quillo
