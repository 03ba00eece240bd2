#include "preferences/pages/WritingPage.h"

#include "config/Keys.h"
#include "controls/Fonts.h"
#include "entry/spelling/GrammarClient.h"
#include "entry/spelling/SpellChecker.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/Switch.h"
#include "preferences/model/PreferenceStore.h"

#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QUrl>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QString dictionaryInWords(const SpellChecker& checker) {
  const auto files = checker.dictionaryFiles();
  if (!files) return u"No dictionary is installed: the packages hunspell-en-us and the like bring one."_s;
  const QLocale locale(files->language);
  const QString name = locale.language() == QLocale::C
                           ? files->language
                           : u"%1 (%2)"_s.arg(QLocale::languageToString(locale.language()),
                                              QLocale::territoryToString(locale.territory()));
  return u"With the dictionary of %1, %2."_s.arg(name, files->words);
}

}  // namespace

WritingPage::WritingPage(PreferenceStore& store, SpellChecker& spellChecker, QWidget* parent)
    : PreferencePage(u"Writing"_s, store, parent),
      m_spellChecker(spellChecker),
      m_words(new QListWidget(this)),
      m_forget(makeButton(u"Remove"_s, u"forgetWord"_s)) {
  addSpelling();
  addGrammar();
  addHashtags();
  addSwitch(u"Markdown"_s, Key::markdownEnabled)->setNote(u"With commands for bold and italic in a text's menu."_s);
  addLearnedWords();
  column().addStretch();
}

void WritingPage::addSpelling() {
  addSwitch(u"Check spelling"_s, Key::editorSpellCheckEnabled)->setNote(dictionaryInWords(m_spellChecker));
  addSwitch(u"Correct slips"_s, Key::editorCorrectSpellingEnabled)
      ->setNote(u"While you type, where a slip can only have meant one word."_s);
}

void WritingPage::addGrammar() {
  addSwitch(u"Check grammar"_s, Key::editorGrammarCheckEnabled)
      ->setNote(
          u"By a LanguageTool server on this computer. Whoever listens there gets the text: switch it on only "
          "where that is your server."_s);
  FormRow* server = addText(u"Its server"_s, Key::grammarServerURL, [](const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return GrammarClient::isOnThisMachine(url)
               ? QString()
               : u"Only a server on this computer is asked, such as http://localhost:8081."_s;
  });
  const auto usual = settingForKey(Key::grammarServerURL)->defaultValue();
  qobject_cast<QLineEdit*>(server->firstField())->setPlaceholderText(usual ? usual->string() : QString());
}

void WritingPage::addHashtags() {
  auto* tags = new Switch(this);
  tags->setObjectName(Key::shouldAddHashtags);
  FormRow* row = form().addRow(u"#words are tags"_s, {tags});
  row->setNote(u"A hashtag in a text becomes one of the entry's tags."_s);
  connect(tags, &QCheckBox::toggled, this, [this, row](bool isOn) {
    QString reason;
    store().set(Key::shouldAddHashtags, PropertyListValue(isOn ? qint64{0} : Key::hashtagsAreNotTags), &reason);
    row->setError(reason);
  });
  addShower([this, tags] {
    const QSignalBlocker silence(tags);
    const auto value = store().value(Key::shouldAddHashtags);
    tags->setChecked(!value || value->integerValue() != Key::hashtagsAreNotTags);
  });
}

void WritingPage::addLearnedWords() {
  m_words->setObjectName(u"learnedWords"_s);
  m_words->setFont(textFont(13));
  m_words->setFixedHeight(96);
  m_words->setSelectionMode(QAbstractItemView::ExtendedSelection);
  m_wordsRow = form().addRow(u"Learned words"_s, {m_words, m_forget});
  const auto follow = [this] { m_forget->setEnabled(!m_words->selectedItems().isEmpty()); };
  connect(m_words, &QListWidget::itemSelectionChanged, this, follow);
  connect(m_forget, &QPushButton::clicked, this, &WritingPage::forgetWord);
  auto* key = new QShortcut(QKeySequence(Qt::Key_Delete), m_words, nullptr, nullptr, Qt::WidgetShortcut);
  connect(key, &QShortcut::activated, this, &WritingPage::forgetWord);
  connect(&m_spellChecker, &SpellChecker::vocabularyDidChange, this, &WritingPage::showLearnedWords);
  addShower([this] { showLearnedWords(); });
  follow();
}

void WritingPage::showLearnedWords() {
  const QStringList words = m_spellChecker.learnedWords();
  QStringList shown;
  for (int row = 0; row < m_words->count(); ++row) shown << m_words->item(row)->text();
  if (shown != words) {
    m_words->clear();
    m_words->addItems(words);
  }
  m_wordsRow->setNote(words.isEmpty() ? u"“Learn Spelling” in a word's menu puts it here."_s : QString());
}

void WritingPage::forgetWord() {
  Error error;
  QString reason;
  const QList<QListWidgetItem*> selected = m_words->selectedItems();
  QStringList words;
  for (const QListWidgetItem* item : selected) words << item->text();
  for (const QString& word : std::as_const(words))
    if (!m_spellChecker.forgetSpelling(word, &error)) reason = u"Not saved: "_s + error.localizedDescription;
  m_wordsRow->setError(reason);
  // Other programs have the list in memory.
  store().tell(Notice::settingsDidChange);
}

}  // namespace quillo
