// Spelling in the text view: what is underlined and when, the guesses, the taught words, and automatic correction.

#include "entry/spelling/SpellingDictionary.h"
#include "entry/spelling/SpellingWords.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QFileInfo>
#include <QTextLayout>

namespace quillo {
namespace {

TEST(SpellingWords, AddressesTagsAndWordsWithDigitsAreLeftOut) {
  const struct {
    QString line;
    QStringList words;
  } cases[] = {
      {u"One, two."_s, {u"One"_s, u"two"_s}},
      {u"don't \u201cisn\u2019t\u201d 'tis'"_s, {u"don't"_s, u"isn\u2019t"_s, u"tis"_s}},
      {u"#tag-ged a#b (#c) @name x"_s, {u"a"_s, u"x"_s}},
      {u"http://a.b/cde www.Foo me@home.org file.txt ~/dir /usr mailto:x y"_s, {u"y"_s}},
      {u"v2 2nd h3llo \u0663x ok"_s, {u"ok"_s}},
      {u"e\u0301te\u0301 \u05e9\u05dc\u05d5\u05dd"_s, {u"e\u0301te\u0301"_s, u"\u05e9\u05dc\u05d5\u05dd"_s}},
      {u"\U0001F4DD \U0001D41A\U0001D41B \U0001F468\u200d\U0001F469"_s, {u"\U0001D41A\U0001D41B"_s}},
      {QString(QChar(0xd835)) + u" a"_s, {u"a"_s}},
  };
  for (const auto& c : cases) {
    QStringList words;
    for (const TextRange& range : wordsToCheck(c.line)) words << c.line.mid(range.location, range.length);
    EXPECT_EQ(words, c.words) << c.line.toStdString();
  }
}

TEST_F(EntryViewTest, TheDictionaryIsReadAtTheFirstKeyPressOnly) {
  show(/*load=*/false);
  view->setString(u"wrod"_s);
  EXPECT_EQ(checker->state(), SpellChecker::State::NotLoaded);
  press(Qt::Key_End);
  ASSERT_TRUE(QTest::qWaitFor([this] { return checker->state() == SpellChecker::State::Ready; }, 5000));
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
  // Given back while the window rests, it is read again by the next one.
  checker->unload();
  EXPECT_FALSE(checker->isMisspelled(u"wrod"));
  press(Qt::Key_End);
  ASSERT_TRUE(QTest::qWaitFor([this] { return checker->state() == SpellChecker::State::Ready; }, 5000));
  EXPECT_TRUE(checker->isMisspelled(u"wrod"));
}

TEST_F(EntryViewTest, WithNeitherCheckingNorCorrectionNoDictionaryIsRead) {
  defaults().setBoolForKey(false, Key::editorSpellCheckEnabled);
  defaults().setBoolForKey(false, Key::editorCorrectSpellingEnabled);
  show(/*load=*/false);
  type(u"a"_s);
  EXPECT_EQ(checker->state(), SpellChecker::State::NotLoaded);
}

TEST_F(EntryViewTest, TheWordBeingTypedIsLeftAloneUntilItEnds) {
  defaults().setBoolForKey(false, Key::editorCorrectSpellingEnabled);
  show();
  type(u"wrod"_s);
  EXPECT_EQ(misspelled(), QStringList());
  type(u"."_s);
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
  type(u" isn'"_s);
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
  type(u"t lihgt"_s);
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
  press(Qt::Key_Home);
  EXPECT_EQ(misspelled(), (QStringList{u"wrod"_s, u"lihgt"_s}));
  // Pasting is not typing.
  press(Qt::Key_End);
  paste(u"\nrievr"_s);
  EXPECT_EQ(misspelled(), (QStringList{u"wrod"_s, u"lihgt"_s, u"rievr"_s}));
}

TEST_F(EntryViewTest, LeavingTheViewEndsTheWord) {
  show();
  type(u"wrod"_s);
  EXPECT_EQ(misspelled(), QStringList());
  view->clearFocus();
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
}

TEST_F(EntryViewTest, OnlyTheChangedParagraphIsChecked) {
  show();
  paste(u"the river\nhe walked\nwell\nthe light"_s);
  finishChecking();
  select(15, 15);
  const qint64 before = checker->lookUpCount();
  type(u"s"_s);  // in the second paragraph, of two words, one of them being typed
  finishChecking();
  EXPECT_EQ(checker->lookUpCount() - before, 1);
  EXPECT_EQ(view->string(), u"the river\nhe wasl"_s + u"ked\nwell\nthe light"_s);
  press(Qt::Key_End);
  EXPECT_EQ(misspelled(), QStringList{u"waslked"_s});
  press(Qt::Key_Backspace, Qt::ControlModifier);
  press(Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(misspelled(), QStringList());
}

TEST_F(EntryViewTest, MisspelledWordsCarryARedUnderlineAndNothingElseDoes) {
  show();
  paste(u"the wrod"_s);
  finishChecking();
  const auto formats = view->document()->firstBlock().layout()->formats();
  ASSERT_EQ(formats.size(), 1);
  EXPECT_EQ(formats[0].start, 4);
  EXPECT_EQ(formats[0].length, 4);
  // Drawn in red.
  const QImage image = view->viewport()->grab().toImage();
  int red = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (const QColor color = image.pixelColor(x, y); color.red() > 200 && color.green() < 120) ++red;
  EXPECT_GT(red, 10);
  // Underlines are no edits: nothing to undo, nothing to tell.
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), QString());
}

TEST_F(EntryViewTest, ALongPasteIsCheckedInSlicesAndThenNothingRuns) {
  show();
  QString text;
  while (text.size() < qsizetype{256} * 1024) text += u"he walked the wrod river\n"_s;
  const auto lines = text.count(u'\n');
  paste(text);
  // Most is left for later, and what can be seen is checked first.
  EXPECT_LT(view->checking().highlighter()->misspellings().size(), lines);
  EXPECT_FALSE(view->checking().highlighter()->isIdle());
  QCoreApplication::processEvents();
  ASSERT_FALSE(view->checking().highlighter()->misspellings().isEmpty());
  EXPECT_GT(view->checking().highlighter()->misspellings().last().location, text.size() - 300);
  // Edits meanwhile lose nothing.
  press(Qt::Key_Home, Qt::ControlModifier);
  press(Qt::Key_K, Qt::ControlModifier);
  type(u"lihgt, "_s);
  EXPECT_EQ(misspelled().size(), lines);
  EXPECT_TRUE(view->checking().highlighter()->isIdle());
}

TEST_F(EntryViewTest, GuessesReplaceTheWordAndTaughtWordsPass) {
  show();
  paste(u"lihgt Rivr"_s);
  EXPECT_EQ(misspelled().size(), 2);
  auto menu = menuAt(2);
  QAction* guess = item(*menu, u"light"_s);
  ASSERT_TRUE(guess);
  guess->trigger();
  EXPECT_EQ(view->string(), u"light Rivr"_s);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), u"lihgt Rivr"_s);

  // A text that changed under the open menu is not overwritten.
  menu = menuAt(2);
  view->setString(u"he lihgt Rivr"_s);
  item(*menu, u"light"_s)->trigger();
  EXPECT_EQ(view->string(), u"he lihgt Rivr"_s);
  view->setString(u"lihgt Rivr"_s);
  finishChecking();

  menu = menuAt(8);
  QStringList guesses;
  for (const QAction* action : menu->actions())
    if (action->font().bold()) guesses << action->text();
  EXPECT_LE(guesses.size(), 5);
  item(*menu, u"Ignore Spelling"_s)->trigger();
  EXPECT_FALSE(misspelled().contains(u"Rivr"_s));
  EXPECT_FALSE(QFile::exists(sources().learnedWords));

  menu = menuAt(2);
  item(*menu, u"Learn Spelling"_s)->trigger();
  EXPECT_FALSE(misspelled().contains(u"lihgt"_s));
  const QFileInfo list(sources().learnedWords);
  ASSERT_TRUE(list.exists());
  EXPECT_EQ(list.permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther), 0);

  // The next start knows it, in capitals and as an owner too.
  SpellChecker next(sources());
  waitForDictionary(next);
  for (const auto& word : {u"lihgt"_s, u"Lihgt"_s, u"LIHGT"_s, u"lihgt's"_s}) EXPECT_FALSE(next.isMisspelled(word));
  EXPECT_TRUE(next.isMisspelled(u"Rivr"_s));
  // Words that another process has taught meanwhile stay.
  write(sources().learnedWords, "lihgt\nelsewhere\n\xff\xfe\n" + QByteArray(70000, 'x') + "\n");
  next.learnSpelling(u"here"_s);
  SpellChecker last(sources());
  waitForDictionary(last);
  for (const auto& word : {u"lihgt"_s, u"elsewhere"_s, u"here"_s}) EXPECT_FALSE(last.isMisspelled(word));
}

TEST_F(EntryViewTest, ASlipIsCorrectedAtTheWordsEnd) {
  const struct {
    QString typed;
    QString text;
  } cases[] = {
      {u"teh "_s, u"the "_s},      {u"Teh, "_s, u"The, "_s},
      {u"teh\n"_s, u"the\n"_s},    {u"(teh) "_s, u"(the) "_s},
      {u"*teh* "_s, u"*the* "_s},  {u"lihgt!"_s, u"light!"_s},
      {u"rivver "_s, u"river "_s}, {u"teh"_s, u"teh"_s},
      {u"teh.x "_s, u"teh.x "_s},  {u"teh. "_s, u"the. "_s},
      {u"#teh "_s, u"#teh "_s},    {u"TEH "_s, u"TEH "_s},
      {u"teh1 "_s, u"teh1 "_s},    {u"http://teh "_s, u"http://teh "_s},
  };
  show();
  for (const auto& c : cases) {
    view->setString({});
    type(c.typed);
    EXPECT_EQ(view->string(), c.text);
    EXPECT_TRUE(view->textCursor().atEnd());
  }
  view->setAutomaticSpellingCorrectionEnabled(false);
  view->setString({});
  type(u"lihgt "_s);
  EXPECT_EQ(view->string(), u"lihgt "_s);
}

TEST_F(EntryViewTest, UndoBringsTheTypedWordBackForGood) {
  show();
  type(u"well teh "_s);
  ASSERT_EQ(view->string(), u"well the "_s);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), u"well teh "_s);
  EXPECT_TRUE(view->textCursor().atEnd());
  type(u" teh "_s);
  press(Qt::Key_Backspace);
  type(u" "_s);
  EXPECT_EQ(view->string(), u"well teh  teh "_s);
  // What was typed after a correction is not undone with it.
  type(u"lihgt river"_s);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_TRUE(view->string().endsWith(u"light "_s));
}

TEST_F(EntryViewTest, TextFromAnInputMethodIsCheckedWhenItIsCommitted) {
  show();
  type(u"wrxd the "_s);
  compose(u"t"_s);
  compose(u"te"_s);
  EXPECT_EQ(misspelled(), QStringList{u"wrxd"_s});
  // The underline stays while the rest of the paragraph is composed, and moves with a text composed before it.
  EXPECT_FALSE(view->document()->firstBlock().layout()->formats().isEmpty());
  compose({}, u"teh "_s);
  EXPECT_EQ(view->string(), u"wrxd the the "_s);
  compose(u"x"_s);
  compose({});
  EXPECT_EQ(view->string(), u"wrxd the the "_s);
  EXPECT_FALSE(view->document()->firstBlock().layout()->formats().isEmpty());
  compose({}, u"\u00e9"_s);  // a dead key
  EXPECT_TRUE(view->string().endsWith(u"\u00e9"_s));
}

TEST_F(EntryViewTest, DictionariesOfAnyEncodingAndScriptAreUsed) {
  writeDictionary(u"pl_PL"_s, "ISO8859-2", {"\xbf\xf3\xb3w", "jest"});
  writeDictionary(u"ru_RU"_s, "KOI8-R", {"\xc4\xcf\xcd"}, "\xc1\xc2");
  writeDictionary(u"de_AT"_s, "ISO8859-1", {"gr\xfc\xdf"});
  const struct {
    QStringList languages;
    QStringList right;
    QStringList wrong;
  } cases[] = {
      {{u"pl-PL"_s}, {u"\u017c\u00f3\u0142w"_s, u"\u0434\u043e\u043c"_s}, {u"\u017c\u00f3lw"_s, u"the"_s}},
      {{u"ru"_s}, {u"\u0434\u043e\u043c"_s, u"the"_s, u"\u05e9\u05dc"_s}, {u"\u043c\u043e\u0434"_s}},
      {{u"de-DE"_s, u"en-US"_s}, {u"gr\u00fc\u00df"_s, u"gru\u0308\u00df"_s}, {u"the"_s}},
      {{u"C"_s}, {u"the"_s}, {u"hte"_s}},
      {{u"xx-YY"_s, u"../x"_s}, {u"the"_s, u"isn\u2019t"_s, u"he\u00ad"_s, u"\U0001D41A"_s}, {u"hte"_s}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.languages[0].toStdString());
    SpellChecker other(sources(c.languages));
    waitForDictionary(other);
    for (const QString& word : c.right) EXPECT_FALSE(other.isMisspelled(word)) << word.toStdString();
    for (const QString& word : c.wrong) EXPECT_TRUE(other.isMisspelled(word)) << word.toStdString();
  }
}

TEST_F(EntryViewTest, WithoutADictionaryNothingIsCheckedAndTheLogSaysSoOnce) {
  const LogCapture log;
  QDir(home.path(u"dictionaries"_s)).removeRecursively();
  show();
  type(u"wrod teh "_s);
  EXPECT_EQ(misspelled(), QStringList());
  EXPECT_EQ(log.lines().filter(u"no dictionary"_s).size(), 1);
  EXPECT_FALSE(item(*menuAt(0), u"Check Spelling While Typing"_s)->isEnabled());
}

TEST_F(EntryViewTest, DamagedDictionariesDoNoHarm) {
  const QList<QByteArray> affixes{"", "SET NO-SUCH-ENCODING\n", "SET UTF-8\nSFX A Y 99999999\n",
                                  QByteArray(5000, '\xff')};
  for (const QByteArray& bytes : affixes) {
    write(home.path(u"dictionaries/en_US.aff"_s), bytes);
    write(home.path(u"dictionaries/en_US.dic"_s), "999999999\n\xff\xfe/ABC\n");
    SpellChecker damaged(sources());
    waitForDictionary(damaged);
    static_cast<void>(damaged.isMisspelled(u"wrod"_s));
    static_cast<void>(damaged.suggestions(u"wrod"_s, 5));
  }
}

}  // namespace
}  // namespace quillo
