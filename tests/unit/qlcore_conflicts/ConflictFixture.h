#pragma once

#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/UserDirectories.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <memory>

namespace quillo {

// A home with a journal in it, and conflict copies as a synchroniser would leave them.
class ConflictFixture : public testing::Test {
 protected:
  ConflictFixture()
      : package(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(QStringLiteral("J.quillojournal"))),
                                                  /*create=*/true, nullptr)) {}

  static constexpr double written = 700'000'000;
  const QString uuid = QStringLiteral("0A1B2C3D-0000-4000-8000-00000000000F");
  const QString own = uuid + QStringLiteral(".plist");
  const QString copy = uuid + QStringLiteral(".sync-conflict-20260309-140559-ABCDEF2.plist");
  const QString secondCopy = uuid + QStringLiteral(" (laptop's conflicted copy 2026-03-09).plist");

  static PropertyListDictionary fields(const QString& text, const PropertyListDictionary& more = {}) {
    PropertyListDictionary all{{EntryFields::text, text},
                               {EntryFields::creationDate, Date(written)},
                               {EntryFields::modificationDate, Date(written)},
                               {EntryFields::timeZone, QStringLiteral("Europe/Berlin")}};
    for (auto field = more.begin(); field != more.end(); ++field) all.insert(field.key(), field.value());
    return all;
  }
  void write(const QString& name, const PropertyListDictionary& content) const {
    writeBytes(name, *PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML));
  }
  void writeBytes(const QString& name, const QByteArray& bytes) const {
    ASSERT_TRUE(writeFileInPlace(package->entriesFolder() + u'/' + name, bytes));
  }
  PropertyListDictionary fieldsOf(const QString& name) const {
    return fieldsAt(package->entriesFolder() + u'/' + name);
  }
  QString textOf(const QString& name) const { return fieldsOf(name).value(EntryFields::text).string(); }
  QStringList files() const { return QDir(package->entriesFolder()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

  QString trashFolder() const { return UserDirectories::current().data + QStringLiteral("/Trash/files"); }
  QStringList trashedTexts() const {
    QStringList texts;
    for (const QString& name : QDir(trashFolder()).entryList(QDir::Files | QDir::Hidden))
      texts << fieldsAt(trashFolder() + u'/' + name).value(EntryFields::text).string();
    texts.sort();
    return texts;
  }

  JournalConflicts conflicts(EntryAncestor* ancestor = nullptr) const {
    return JournalConflicts(package->entriesFolder(), ancestor, std::chrono::seconds(0));
  }
  EntryVersions versions() const {
    Error error;
    const auto entry = conflicts().entry(uuid, &error);
    const auto read = entry ? conflicts().read(*entry, &error) : std::nullopt;
    EXPECT_TRUE(read) << error.description().toStdString();
    return read.value_or(EntryVersions());
  }

  TestHome home;
  std::shared_ptr<QLJournalPackageFile> package;

 private:
  static PropertyListDictionary fieldsAt(const QString& path) {
    const auto bytes = contentsOfFile(path);
    const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    return list ? list->dictionary() : PropertyListDictionary();
  }
};

}  // namespace quillo
