// A journal that moves to another folder: what arrives, what is refused, and what is left when it is stopped, killed or
// runs out of room.

#include "JournalFixture.h"
#include "qlcore/JournalMove.h"
#include "qlcore/JournalMover.h"
#include "qlcore/QLJournalIndex.h"
#include "tests/support/EventLoop.h"
#include "tests/support/SmallDisk.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillo {

using namespace Qt::StringLiterals;

class JournalMoveTest : public JournalFixture {
 protected:
  JournalMoveTest() {
    QDir().mkpath(home.path(u"Elsewhere"_s));
    for (int i = 0; i < 12; ++i) uuids << saved(u"entry %1 "_s.arg(i) + QString(i * 700, u'x'))->uuid();
    move.journal = package->url().toLocalFile();
    move.folder = home.path(u"Elsewhere"_s);
    move.millisecondsToHear = 0;
    move.configure = [this](const QUrl& journal, Error*) {
      configured = journal.toLocalFile();
      return true;
    };
    configured = move.journal;
  }
  [[nodiscard]] QString target() const { return move.folder + u"/Mine.quillojournal"_s; }
  static QStringList textsIn(const QString& journal) {
    QStringList texts;
    const auto opened = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(journal), false, nullptr);
    if (!opened) return texts;
    const QLJournalIndex index(opened);
    EXPECT_TRUE(index.damagedEntries().isEmpty());
    for (const auto& entry : index.entries()) texts << entry->string().section(u' ', 0, 1);
    texts.sort();
    return texts;
  }
  // Nothing has come of it: the old journal is as it was, and nothing lies where the new one was to be.
  void expectNothingMoved(const QStringList& texts) {
    EXPECT_EQ(textsIn(move.journal), texts);
    EXPECT_EQ(configured, move.journal);
    EXPECT_EQ(everythingIn(move.folder), QStringList());
  }

  JournalMove move;
  QStringList uuids;
  QString configured;
};

TEST_F(JournalMoveTest, AllOfItArrivesAndTheOldOneGoesToTheTrash) {
  const QString old = move.journal;
  QDir().mkpath(old + u"/Attachments/2026"_s);
  write(old + u"/Attachments/2026/large"_s, QByteArray(3'000'000, 'l'));
  write(old + u"/.hidden"_s, "kept");
  write(old + u"/Entries/.X.plist.1.1.tmp"_s, "half an entry of another program");
  ASSERT_TRUE(QFile::link(u"Attachments/2026/large"_s, old + u"/link"_s));
  const auto modified = QFileInfo(entryPath(uuids[3])).lastModified();
  const QStringList texts = textsIn(old);
  double last = 0;
  move.progress = [&last](double done) {
    EXPECT_GE(done, last);
    last = done;
    return true;
  };
  move.configure = [&](const QUrl& journal, Error*) {
    configured = journal.toLocalFile();
    EXPECT_EQ(textsIn(old), texts);
    EXPECT_EQ(textsIn(configured), texts);
    return true;
  };
  const auto result = move.run();
  EXPECT_EQ(result.outcome, JournalMove::Outcome::Moved) << result.error.description().toStdString();
  EXPECT_EQ(result.error, Error());
  EXPECT_EQ(result.journal.toLocalFile(), target());
  EXPECT_EQ(last, 1);
  EXPECT_EQ(textsIn(target()), texts);
  EXPECT_EQ(bytesOf(target() + u"/Attachments/2026/large"_s).size(), 3'000'000);
  EXPECT_EQ(bytesOf(target() + u"/.hidden"_s), "kept");
  EXPECT_EQ(QFileInfo(target() + u"/link"_s).symLinkTarget(), target() + u"/Attachments/2026/large"_s);
  EXPECT_EQ(QFileInfo(target() + u"/Entries/"_s + uuids[3] + u".plist"_s).lastModified(), modified);
  EXPECT_EQ(modeOf(target()), 0700);
  EXPECT_EQ(modeOf(target() + u"/Entries/"_s + uuids[0] + u".plist"_s), 0600);
  EXPECT_EQ(everythingIn(target() + u"/Entries"_s).size(), texts.size());
  EXPECT_EQ(everythingIn(move.folder), QStringList{u"Mine.quillojournal"_s});
  EXPECT_FALSE(QFileInfo::exists(old));
  EXPECT_EQ(textsIn(UserDirectories::current().data + u"/Trash/files/Mine.quillojournal"_s), texts);
}

TEST_F(JournalMoveTest, WhatIsSavedMeanwhileComesAlong) {
  move.oldJournal = JournalMove::OldJournal::Stays;
  // Half way: one more, one that is written on, one that is deleted.
  bool isHalfWay = false;
  move.progress = [&](double done) {
    if (done > 0.5 && !std::exchange(isHalfWay, true)) {
      saved(u"new"_s);
      const auto changed = reread(uuids[1]);
      changed->setString(u"changed"_s);
      EXPECT_TRUE(changed->saveToJournal(package.get(), nullptr));
      EXPECT_TRUE(QFile::remove(entryPath(uuids[2])));
    }
    return true;
  };
  // As it is configured: one who has not heard of it goes on with the old journal; another writes into both.
  move.configure = [&](const QUrl& journal, Error*) {
    // The lock of the entries is taken: these wait for it, and then go on without.
    const auto now = QLJournalPackageFile::openPackage(journal, false, nullptr);
    const auto entry = QLJournalEntryFile::entryWithUUID(*now, uuids[4], nullptr);
    entry->setString(u"in new"_s);
    EXPECT_TRUE(entry->saveToJournal(now.get(), nullptr));
    for (const auto& [uuid, text] : {std::pair(uuids[4], u"in old"_s), std::pair(uuids[5], u"late"_s)}) {
      const auto old = reread(uuid);
      old->setString(text);
      EXPECT_TRUE(old->saveToJournal(package.get(), nullptr));
    }
    EXPECT_TRUE(QFile::remove(entryPath(uuids[6])));
    return true;
  };
  const auto result = move.run();
  ASSERT_EQ(result.outcome, JournalMove::Outcome::Moved) << result.error.description().toStdString();
  EXPECT_EQ(result.error, Error());
  EXPECT_EQ(textsIn(target()),
            (QStringList{u"changed"_s, u"entry 0"_s, u"entry 10"_s, u"entry 11"_s, u"entry 3"_s, u"entry 7"_s,
                         u"entry 8"_s, u"entry 9"_s, u"in new"_s, u"in old"_s, u"late"_s, u"new"_s}));
  EXPECT_TRUE(QFileInfo::exists(move.journal));
}

TEST_F(JournalMoveTest, WhatCannotBeDoneIsSaidAndDoesNothing) {
  QDir().mkpath(home.path(u"Taken/Mine.quillojournal"_s));
  QDir().mkpath(home.path(u"NoJournal"_s));
  write(home.path(u"file"_s), "x");
  const QStringList texts = textsIn(move.journal);
  const struct {
    const char* name;
    QString journal, folder;
    JournalError::Code code;
  } cases[] = {
      {"not a journal", home.path(u"NoJournal"_s), move.folder, JournalError::NotAPackage},
      {"no journal", home.path(u"Gone.quillojournal"_s), move.folder, JournalError::JournalFileNotFound},
      {"no folder", move.journal, home.path(u"Nowhere"_s), JournalError::JournalFileNotFound},
      {"a file", move.journal, home.path(u"file"_s), JournalError::JournalFileNotFound},
      {"where it is", move.journal, home.path(), JournalError::AlreadyExists},
      {"taken", move.journal, home.path(u"Taken"_s), JournalError::AlreadyExists},
      {"into itself", move.journal, move.journal + u"/Entries"_s, JournalError::NotWritable},
  };
  const JournalMove usual = move;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    move.journal = c.journal;
    move.folder = c.folder;
    const auto result = move.run();
    EXPECT_EQ(result.outcome, JournalMove::Outcome::Failed);
    EXPECT_EQ(result.error.code, c.code) << result.error.description().toStdString();
  }
  move = usual;
  expectNothingMoved(texts);

  // Not configured in the end, and a file of which there can be no copy.
  move.configure = [](const QUrl&, Error* error) { return fail(error, cocoaError(512, u"the settings are full"_s)); };
  EXPECT_EQ(move.run().error.localizedDescription, u"the settings are full"_s);
  expectNothingMoved(texts);
  const QString pipe = move.journal + u"/pipe"_s;
  ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
  EXPECT_TRUE(move.run().error.localizedDescription.contains(pipe));
  expectNothingMoved(texts);
}

TEST_F(JournalMoveTest, ACopyThatIsNotWhatWasWrittenIsNotTaken) {
  const QStringList texts = textsIn(move.journal);
  bool isDamaged = false;
  move.progress = [&](double done) {
    if (done < 0.5 || isDamaged) return true;
    const QStringList hidden = everythingIn(move.folder);
    const QString copy = move.folder + u'/' + hidden.value(0) + u"/Entries/"_s + uuids[11] + u".plist"_s;
    QByteArray bytes = bytesOf(copy);
    if (bytes.isEmpty()) return true;
    bytes[100] = static_cast<char>(bytes[100] ^ 1);
    write(copy, bytes);
    isDamaged = true;
    return true;
  };
  const auto result = move.run();
  EXPECT_TRUE(isDamaged);
  EXPECT_EQ(result.outcome, JournalMove::Outcome::Failed);
  EXPECT_TRUE(result.error.localizedDescription.contains(uuids[11])) << result.error.description().toStdString();
  expectNothingMoved(texts);
}

TEST_F(JournalMoveTest, StoppedAtAnyPointItLeavesNothing) {
  const QStringList texts = textsIn(move.journal);
  int calls = 0;
  int stopAt = 0;
  move.progress = [&](double) { return ++calls != stopAt; };
  int steps = 0;
  for (stopAt = 1; stopAt < 1000; ++stopAt, ++steps) {
    calls = 0;
    if (move.run().outcome != JournalMove::Outcome::Stopped) break;
    ASSERT_NO_FATAL_FAILURE(expectNothingMoved(texts)) << stopAt;
  }
  EXPECT_GT(steps, 4 * uuids.size());
  EXPECT_EQ(textsIn(configured), texts);
}

TEST_F(JournalMoveTest, AFullDiskLeavesTheOldOne) {
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << "cannot mount a small disk to fill: " << disk.reason();
  move.folder = home.path(u"disk"_s);
  const QStringList texts = textsIn(move.journal);
  // Filled by another program in the middle of it.
  move.progress = [this](double done) {
    if (done > 0.2 && !QFileInfo::exists(home.path(u"disk/filler"_s))) {
      QFile filler(home.path(u"disk/filler"_s));
      EXPECT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
      filler.write(QByteArray(1'000'000, 'x'));
    }
    return true;
  };
  auto result = move.run();
  EXPECT_EQ(result.outcome, JournalMove::Outcome::Failed);
  EXPECT_EQ(result.error.code, JournalError::OutOfSpace) << result.error.description().toStdString();
  EXPECT_TRUE(QFile::remove(home.path(u"disk/filler"_s)));
  expectNothingMoved(texts);

  // Too small from the beginning: it is not even begun.
  write(move.journal + u"/large"_s, QByteArray(300'000, 'x'));
  move.progress = [](double) {
    ADD_FAILURE() << "begun";
    return true;
  };
  result = move.run();
  EXPECT_EQ(result.error.code, JournalError::OutOfSpace);
  EXPECT_TRUE(result.error.localizedDescription.contains(u"not enough room"_s));
  expectNothingMoved(texts);

  // With room it goes to the other file system.
  EXPECT_TRUE(QFile::remove(move.journal + u"/large"_s));
  move.progress = {};
  EXPECT_EQ(move.run().outcome, JournalMove::Outcome::Moved);
  EXPECT_EQ(textsIn(configured), texts);
}

TEST_F(JournalMoveTest, AKillLeavesTheOldOneAndTheNextMoveClearsUp) {
  const QStringList texts = textsIn(move.journal);
  QRandomGenerator random(20261126);
  int leftovers = 0;
  for (int round = 0; round < 25; ++round) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      // Slowly, so that the kill comes in the middle, and without an end.
      move.progress = [](double) {
        QThread::usleep(300);
        return true;
      };
      move.configure = [](const QUrl&, Error*) {
        ::pause();
        return false;
      };
      static_cast<void>(move.run());
      ::_exit(0);
    }
    // The moment of the kill is the test: there is no clock to fake.
    QThread::usleep(random.bounded(30'000));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(textsIn(move.journal), texts);
    const QStringList left = everythingIn(move.folder);
    leftovers += left.isEmpty() ? 0 : 1;
    // Killed between name and configuration, there is a whole second one, which is in nobody's way.
    ASSERT_EQ(textsIn(target()), left.contains(u"Mine.quillojournal"_s) ? texts : QStringList());
  }
  EXPECT_GT(leftovers, 5);
  EXPECT_EQ(move.run().outcome, JournalMove::Outcome::Moved);
  EXPECT_EQ(everythingIn(move.folder), QStringList{u"Mine.quillojournal"_s});
  EXPECT_EQ(textsIn(configured), texts);
}

TEST_F(JournalMoveTest, ACopyThatAKillHasLeftGoesOnlyWhereNobodyHasWrittenIntoIt) {
  const auto killBeforeConfiguration = [this] {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      move.configure = [&ends](const QUrl&, Error*) {
        if (::write(ends[1], "x", 1) != 1) ::_exit(1);
        ::pause();
        return false;
      };
      static_cast<void>(move.run());
      ::_exit(0);
    }
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), 1);
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    for (const int end : ends) ::close(end);
  };
  killBeforeConfiguration();
  ASSERT_TRUE(QFileInfo(target()).isDir());
  // Somebody has taken it for their journal.
  const QString own = target() + u"/Entries/"_s + QFileInfo(entryPath(uuids[0])).fileName();
  // Not within the same tick of the file system's clock as the copy.
  QThread::msleep(20);
  write(own, "theirs");
  EXPECT_EQ(move.run().outcome, JournalMove::Outcome::Failed);
  EXPECT_EQ(*contentsOfFile(own), "theirs");
  EXPECT_EQ(configured, move.journal);

  ASSERT_TRUE(QDir(target()).removeRecursively());
  killBeforeConfiguration();
  // Going on with the old one meanwhile is nothing against it.
  saved(u"entry since"_s);
  const QStringList texts = textsIn(move.journal);
  EXPECT_EQ(move.run().outcome, JournalMove::Outcome::Moved);
  EXPECT_EQ(everythingIn(move.folder), QStringList{u"Mine.quillojournal"_s});
  EXPECT_EQ(textsIn(configured), texts);
}

TEST_F(JournalMoveTest, OnItsThreadItAsksHereAndCanBeLeftAtAnyTime) {
  const QStringList texts = textsIn(move.journal);
  QThread* const here = QThread::currentThread();
  move.configure = [&](const QUrl& journal, Error*) {
    EXPECT_EQ(QThread::currentThread(), here);
    configured = journal.toLocalFile();
    return true;
  };
  // Left before the question is answered.
  for (const unsigned long microseconds : {0UL, 2000UL, 50'000UL}) {
    {
      JournalMover mover;
      mover.start(move);
      QThread::usleep(microseconds);
    }
    expectNothingMoved(texts);
  }
  JournalMover mover;
  double last = 0;
  bool isFinished = false;
  QObject::connect(&mover, &JournalMover::progressed, [&last](double done) { last = done; });
  QObject::connect(&mover, &JournalMover::finished, [&](const JournalMove::Result& result) {
    EXPECT_EQ(result.outcome, JournalMove::Outcome::Moved) << result.error.description().toStdString();
    isFinished = true;
  });
  mover.start(move);
  EXPECT_TRUE(mover.isMoving());
  ASSERT_TRUE(runUntil([&] { return isFinished; }));
  EXPECT_FALSE(mover.isMoving());
  EXPECT_EQ(last, 1);
  EXPECT_EQ(textsIn(configured), texts);
}

}  // namespace quillo
