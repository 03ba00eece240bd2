#include "quilloctl/Command.h"

#include "qlcore/QLJournalPackageFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

int failed(const QString& reason) {
  // One line, whatever a library's text, or the user's, holds.
  QString line = u"quilloctl: "_s + reason.simplified();
  for (QChar& c : line)
    if (c.category() == QChar::Other_Control) c = QChar::ReplacementCharacter;
  const QByteArray bytes = line.toUtf8() + '\n';
  std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
  return Failed;
}

void print(const QString& line) {
  const QByteArray bytes = line.toUtf8() + '\n';
  std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
}

void printJson(const QJsonValue& value) {
  if (value.isObject()) return print(QString::fromUtf8(QJsonDocument(value.toObject()).toJson().trimmed()));
  if (value.isArray()) return print(QString::fromUtf8(QJsonDocument(value.toArray()).toJson().trimmed()));
  // A document must be a collection: the bare value is what stands between the brackets of an array of one.
  const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
  print(QString::fromUtf8(array.mid(1, array.size() - 2)));
}

PersistentPropertyList* sharedList(Context& context) {
  if (PersistentPropertyList* list = context.config.groupProperties()) return list;
  const QString path = context.config.groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
  Error error;
  static_cast<void>(PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path), &error));
  failed(u"the settings cannot be read - %1"_s.arg(error.localizedDescription));
  return nullptr;
}

std::shared_ptr<QLJournalPackageFile> openJournal(Context& context) {
  if (!sharedList(context)) return nullptr;
  Error error;
  auto package = QLJournalPackageFile::openDefaultPackage(&error);
  if (!package) failed(error.localizedDescription);
  return package;
}

}  // namespace quillo::ctl
