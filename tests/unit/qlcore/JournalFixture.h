#pragma once

#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <memory>

namespace quillo {

// A home with a journal in it.
class JournalFixture : public testing::Test {
 protected:
  JournalFixture() { package = make(home.path(QStringLiteral("Mine.quillojournal"))); }

  static std::shared_ptr<QLJournalPackageFile> make(const QString& path) {
    Error error;
    auto made = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), /*create=*/true, &error);
    EXPECT_TRUE(made) << error.description().toStdString();
    return made;
  }

  static void write(const QString& path, const QByteArray& bytes) {
    ASSERT_TRUE(writeFileInPlace(path, bytes)) << path.toStdString();
  }
  static void write(const QString& path, const PropertyListDictionary& fields,
                    PropertyListFormat format = PropertyListFormat::XML) {
    write(path, PropertyListSerialization::dataWithPropertyList(fields, format).value_or("unwritable"));
  }
  static QByteArray bytesOf(const QString& path) { return contentsOfFile(path).value_or(""); }
  static PropertyListDictionary fieldsOf(const QString& path) {
    return PropertyListSerialization::propertyListWithData(bytesOf(path)).value_or(PropertyListValue()).dictionary();
  }
  static QStringList everythingIn(const QString& path) {
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
  }

  QString entryPath(const QString& uuid) const {
    return package->entriesFolder() + u'/' + uuid + QStringLiteral(".plist");
  }

  // A saved entry.
  std::shared_ptr<QLJournalEntryFile> saved(const QString& text, const QStringList& tags = {}) const {
    auto entry = QLJournalEntryFile::newEntry();
    entry->setString(text);
    entry->setTags(tags);
    Error error;
    EXPECT_TRUE(entry->saveToJournal(package.get(), &error)) << error.description().toStdString();
    return entry;
  }
  std::shared_ptr<QLJournalEntryFile> reread(const QString& uuid, Error* error = nullptr) const {
    return QLJournalEntryFile::entryWithUUID(*package, uuid, error);
  }

  TestHome home;
  std::shared_ptr<QLJournalPackageFile> package;
};

}  // namespace quillo
