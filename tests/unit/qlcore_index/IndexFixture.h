#pragma once

#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/index/JournalSearchIndex.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

namespace quillo {

// A home with a journal in it, whose entries are written as other programs would.
class IndexFixture : public testing::Test {
 protected:
  IndexFixture() { package = open(home.path(QStringLiteral("Mine.quillojournal")), true); }

  static std::shared_ptr<QLJournalPackageFile> open(const QString& path, bool make) {
    return QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), make, nullptr);
  }
  static QString uuidOf(int number) {
    return QStringLiteral("00000000-0000-4000-8000-%1").arg(number, 12, 16, QChar(u'0')).toUpper();
  }
  [[nodiscard]] QString pathOf(int number) const {
    return package->entriesFolder() + u'/' + uuidOf(number) + QStringLiteral(".plist");
  }
  // `created` in seconds since 1970. What no list can hold becomes a damaged file.
  void write(int number, const QString& text, double created = 1'700'000'000, PropertyListDictionary more = {}) const {
    more.insert(QStringLiteral("text"), text);
    more.insert(QStringLiteral("creationDate"), Date::since1970(created));
    writeBytes(pathOf(number),
               PropertyListSerialization::dataWithPropertyList(more, PropertyListFormat::XML).value_or("unwritable"));
  }
  // As a whole and without waiting for the disk.
  static void writeBytes(const QString& path, const QByteArray& bytes) {
    const QString temporary = QFileInfo(path).path() + QStringLiteral("/.new");
    QFile file(temporary);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    ASSERT_EQ(std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()), 0);
  }

  // In the file itself, as some editors do: nothing of it shows in the folder.
  void writeInPlace(int number, const QByteArray& bytes) const {
    QFile file(pathOf(number));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(bytes.size()) && file.write(bytes) == bytes.size());
  }
  // Until the folder's names are old enough for its time to be trusted, and noted as known.
  void settle(JournalSearchIndex& index) const {
    QThread::msleep(2100);
    index.bringUpToDate();
    QProcess shell;
    shell.start(QStringLiteral("sqlite3"),
                {databases().value(0), QStringLiteral("SELECT count(*) FROM setting WHERE name = 'names'")});
    shell.waitForFinished();
    EXPECT_EQ(shell.readAllStandardOutput().trimmed(), "1");
  }

  static JournalQuestion question(const QString& typed) {
    QString problem;
    const auto question = JournalQuestion::parse(typed, QDate(2025, 3, 12), &problem);
    EXPECT_TRUE(question) << problem.toStdString();
    return question.value_or(JournalQuestion());
  }
  // The texts that are found, in order.
  static QStringList found(JournalSearchIndex& index, const QString& typed = {}) {
    const JournalAnswer answer = index.ask(question(typed));
    QStringList texts;
    for (const IndexedEntry& entry : answer.entries) texts << entry.text;
    EXPECT_EQ(answer.total, texts.size());
    return texts;
  }
  // The database files in the cache.
  [[nodiscard]] QStringList databases() const {
    const QDir folder(home.path(QStringLiteral(".cache/quillo/index")));
    QStringList paths;
    for (const QString& name : folder.entryList({QStringLiteral("*.sqlite")}, QDir::Files))
      paths << folder.filePath(name);
    return paths;
  }

  TestHome home;
  std::shared_ptr<QLJournalPackageFile> package;
};

}  // namespace quillo
