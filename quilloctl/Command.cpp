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
  Error error;
  PersistentPropertyList* list = context.config.groupProperties(&error);
  if (!list) failed(u"the settings cannot be read - %1"_s.arg(error.localizedDescription));
  return list;
}

bool isSaved(const PersistentPropertyList& list, const QString& what) {
  if (list.dirtyProperties().isEmpty()) return true;
  const auto& error = list.lastError();
  failed(u"%1 was not saved - %2"_s.arg(what, error ? error->localizedDescription : u"the reason is unknown"_s));
  return false;
}

std::shared_ptr<QLJournalPackageFile> openJournal(Context& context) {
  if (!sharedList(context)) return nullptr;
  Error error;
  auto package = QLJournalPackageFile::openDefaultPackage(&error);
  if (!package) failed(error.localizedDescription);
  return package;
}

}  // namespace quillo::ctl
