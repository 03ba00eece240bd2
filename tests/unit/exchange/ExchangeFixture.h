#pragma once

#include "exchange/ExportFormat.h"
#include "exchange/ImportFormat.h"
#include "exchange/JournalExport.h"
#include "exchange/JournalImport.h"
#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace quillo {

// A home with a journal to export from and one to import into.
class ExchangeFixture : public testing::Test {
 protected:
  using Package = std::shared_ptr<QLJournalPackageFile>;
  using Entries = std::map<QString, PropertyListDictionary>;

  Package make(const QString& name) const {
    return QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(name + QStringLiteral(".quillojournal"))),
                                             /*create=*/true, nullptr);
  }
  static QString uuidOf(int number) {
    return QStringLiteral("00000000-0000-4000-8000-%1").arg(number, 12, 16, QChar(u'0')).toUpper();
  }
  static QString pathOf(const Package& package, const QString& uuid) {
    return package->entriesFolder() + u'/' + QLJournalEntryFile::fileName(uuid);
  }
  static void store(const Package& package, const QString& uuid, const PropertyListDictionary& fields) {
    const auto bytes = EntryFields::serialized(fields, nullptr);
    ASSERT_TRUE(bytes && writeFileInPlace(pathOf(package, uuid), *bytes));
  }
  // All files, as they stand.
  static Entries entriesOf(const Package& package) {
    Entries entries;
    const QDir folder(package->entriesFolder());
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden)) {
      const auto bytes = contentsOfFile(folder.filePath(name));
      entries[name] = PropertyListSerialization::propertyListWithData(bytes.value_or("")).value_or(false).dictionary();
    }
    return entries;
  }

  static JournalExport::Result exported(const Package& package, const char* name, const QString& path) {
    const ExportFormat& format = *exportFormatNamed(QLatin1StringView(name));
    JournalSearchIndex index(*package);
    index.bringUpToDate();
    JournalExport::Options options{
        .question = {}, .wantsFields = format.wantsFields, .wantsMonths = format.wantsMonths};
    if (format.isFolder())
      return JournalExport(*package, index).run(options, *format.makeFolder(ExportFolder::make(path, false, nullptr)));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    const auto writer =
        format.makeDocument([&file](const QByteArray& bytes, Error*) { return file.write(bytes) == bytes.size(); });
    return JournalExport(*package, index).run(options, *writer);
  }

  struct Imported {
    JournalImport::Counts counts;
    QStringList told;  // of problems and what was passed by
  };
  static Imported looked(const Package& package, const char* format, const QString& path) {
    Imported looked;
    const JournalImport::Listener listener{
        .problem = [&](const auto& fault) { looked.told << fault.place.text() + QStringLiteral(": ") + fault.reason; },
        .passedBy = [&](const auto& item) { looked.told << item.place.text() + QStringLiteral(": ") + item.reason; },
        .progress = {},
        .isStopped = {}};
    const auto source = importFormatNamed(QLatin1StringView(format))->open(path, true);
    looked.counts = JournalImport(*package, false).look(*source, listener);
    return looked;
  }
  static std::optional<JournalImport::Counts> imported(const Package& package, const char* format, const QString& path,
                                                       bool isReplacing = false, Error* error = nullptr) {
    const auto source = importFormatNamed(QLatin1StringView(format))->open(path, true);
    return JournalImport(*package, isReplacing).write(*source, {}, error);
  }
  QString stored(const QString& name, const QByteArray& bytes) const {
    const QString path = home.path(name);
    QDir().mkpath(QFileInfo(path).path());
    EXPECT_TRUE(writeFileInPlace(path, bytes));
    return path;
  }

  TestHome home;
  Package journal = make(QStringLiteral("Mine"));
  Package other = make(QStringLiteral("Other"));
};

}  // namespace quillo
