#include "qlcore/ConflictNames.h"

#include <QFile>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString uuid = u"0A1B2C3D-0000-4000-8000-00000000000F"_s;

QDateTime at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
}

}  // namespace

TEST(ConflictNames, AreThoseOfTheProgramsThatMakeThem) {
  struct Case {
    QString middle;
    Synchroniser origin;
    QString from;
    QDateTime made;
  };
  const QDateTime day = at(2026, 3, 9);
  const QDateTime moment = at(2026, 3, 9, 14, 5, 59);
  const QList<Case> cases{
      {u".sync-conflict-20260309-140559-ABCDEF2"_s, Synchroniser::Syncthing, u"ABCDEF2"_s, moment},
      {u".sync-conflict-20260309-140559"_s, Synchroniser::Syncthing, {}, moment},
      {u" (conflicted copy 2026-03-09 140559)"_s, Synchroniser::Nextcloud, {}, moment},
      {u" (conflicted copy Anna Lee 2026-03-09 140559)"_s, Synchroniser::Nextcloud, u"Anna Lee"_s, moment},
      {u"_conflict-20260309-140559"_s, Synchroniser::OwnCloud, {}, moment},
      {u"_conflict_anna-20260309-140559"_s, Synchroniser::OwnCloud, u"anna"_s, moment},
      {u" (laptop's conflicted copy 2026-03-09)"_s, Synchroniser::Dropbox, u"laptop"_s, day},
      {u" (Anna’s conflicted copy 2026-03-09 (2))"_s, Synchroniser::Dropbox, u"Anna"_s, day},
      {u" (laptop's conflicted copy 2026-03-09) (1)"_s, Synchroniser::Dropbox, u"laptop"_s, day},
      {u" (conflicted copy 2026-03-09)"_s, Synchroniser::Dropbox, {}, day},
      {u" (Rebekkas in Konflikt stehende Kopie 2026-03-09)"_s, Synchroniser::Dropbox, u"Rebekka"_s, day},
      {u" (In Konflikt stehende Kopie von pc 2026-03-09)"_s, Synchroniser::Dropbox, u"pc"_s, day},
      {u" (Copie en conflit de Zoé 2026-03-09)"_s, Synchroniser::Dropbox, u"Zoé"_s, day},
      {u" (Copia en conflicto de pc 2026-03-09 (1))"_s, Synchroniser::Dropbox, u"pc"_s, day},
      {u" (pc の競合コピー 2026-03-09)"_s, Synchroniser::Dropbox, u"pc"_s, day},
      {u" (Case Conflict)"_s, Synchroniser::Dropbox, {}, {}},
      {u" (copy: conflict on 2026-03-09)"_s, Synchroniser::Unison, {}, day},
      {u" (copy: conflict #3 on 2026-03-09)"_s, Synchroniser::Unison, {}, day},
      // Of unknown make, or with digits that are no date.
      {u" 2"_s, Synchroniser::Other, {}, {}},
      {u" (1)"_s, Synchroniser::Other, {}, {}},
      {u"-laptop"_s, Synchroniser::Other, {}, {}},
      {u".sync-conflict-2026-03-09"_s, Synchroniser::Other, {}, {}},
      {u".sync-conflict-20269999-999999-ABCDEF2"_s, Synchroniser::Syncthing, u"ABCDEF2"_s, {}},
      {u".sync-conflict-20260309-140559-ABCDEF2.sync-conflict-20260309-140600-ABCDEF2"_s, Synchroniser::Other, {}, {}},
  };
  for (const Case& c : cases) {
    for (const QString& beginning : {uuid, uuid.toLower()}) {
      const QString name = beginning + c.middle + u".plist"_s;
      SCOPED_TRACE(name.toStdString());
      const auto parsed = ConflictNames::parse(name);
      ASSERT_TRUE(parsed);
      EXPECT_EQ(parsed->uuid, uuid);
      EXPECT_EQ(parsed->origin, c.origin);
      EXPECT_EQ(parsed->from.toStdString(), c.from.toStdString());
      EXPECT_EQ(parsed->made, c.made);
      EXPECT_TRUE(ConflictNames::isConflictCopy(QFile::encodeName(name)));
      EXPECT_FALSE(ConflictNames::isTemporary(name));
    }
  }
}

// A folder that is encrypted below the synchroniser's view of it.
TEST(ConflictNames, OfAnEncryptedFolderAreKnown) {
  const QString name = uuid + u".plist.sync-conflict-20260309-140559-ABCDEF2 GOCRYPTFS_BAD_NAME"_s;
  const auto parsed = ConflictNames::parse(name);
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->origin, Synchroniser::Syncthing);
  EXPECT_EQ(parsed->uuid, uuid);
  EXPECT_TRUE(ConflictNames::isConflictCopy(QFile::encodeName(name)));
  EXPECT_FALSE(ConflictNames::parse(u"Z1a GOCRYPTFS_BAD_NAME"_s));
  const QString plain = uuid + u".sync-conflict-20260309-140559-ABCDEF2.plist"_s;
  EXPECT_EQ(ConflictNames::plainName(name), plain);
  EXPECT_EQ(ConflictNames::plainName(plain), plain);
}

TEST(ConflictNames, AreNoneOfWhatIsNoVersionOfAnEntry) {
  const QStringList names{uuid + u".plist"_s,
                          uuid.toLower() + u".plist"_s,
                          u"notes.plist"_s,
                          u"notes.sync-conflict-20260309-140559-ABCDEF2.plist"_s,
                          u"Journal (conflicted copy 2026-03-09 140559).plist"_s,
                          uuid + u" 2.txt"_s,
                          uuid + u".plist.orig"_s,
                          u"."_s + uuid + u" 2.plist"_s,
                          QString(uuid).replace(u'A', u'G') + u" 2.plist"_s,
                          u"00000000-0000-0000-0000-000000000000 2.plist"_s,
                          u".plist"_s,
                          {}};
  for (const QString& name : names) {
    EXPECT_FALSE(ConflictNames::parse(name)) << name.toStdString();
    EXPECT_FALSE(ConflictNames::isConflictCopy(QFile::encodeName(name))) << name.toStdString();
  }
}

TEST(ConflictNames, TemporaryFilesOfSynchronisersAreNoEntries) {
  const QString file = uuid + u".plist"_s;
  const QStringList temporary{u".syncthing."_s + file + u".tmp"_s,
                              u"~syncthing~"_s + file + u".tmp"_s,
                              u"."_s + file + u".~4f1a2b"_s,
                              u".owncloudsync.log"_s,
                              u".nextcloudsync.log.1"_s,
                              u".sync_1a2b3c.db-wal"_s,
                              u"._sync_1a2b3c.db"_s,
                              u".unison."_s + file + u".0f0f.unison.tmp"_s,
                              u".#"_s + file + u".0f0f.unison.tmp"_s,
                              u"."_s + file + u".Ab3dE9"_s,
                              u"."_s + file + u".4711.2.tmp"_s,
                              file + u".part"_s,
                              file + u".orig"_s,
                              uuid + u"_BASE_4711.plist"_s,
                              uuid + u"_REMOTE_4711.plist"_s,
                              file + u".LOCAL.4711.plist"_s};
  for (const QString& name : temporary) {
    EXPECT_TRUE(ConflictNames::isTemporary(name)) << name.toStdString();
    EXPECT_FALSE(ConflictNames::parse(name)) << name.toStdString();
  }
  for (const QString& name : {file, uuid + u" 2.plist"_s, u"notes.plist"_s, u".stignore"_s, u".gitignore"_s, u""_s})
    EXPECT_FALSE(ConflictNames::isTemporary(name)) << name.toStdString();
}

}  // namespace quillo
