#include "qlcore/QLLogFormatter.h"

#include <QCoreApplication>
#include <QHash>
#include <QSysInfo>

#include <algorithm>
#include <mutex>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct ContextNames {
  std::mutex mutex;
  QHash<int, QString> names;
};

ContextNames& contextNames() {
  // Never destroyed: the logging thread may still write a line while the process ends.
  static auto* const names = new ContextNames;
  return *names;
}

QString nameOfContext(int context) {
  ContextNames& registry = contextNames();
  const std::scoped_lock lock(registry.mutex);
  const auto found = registry.names.constFind(context);
  return found == registry.names.constEnd() ? QString::number(context) : *found;
}

// All of one width, so that the texts of neighbouring lines stand under each other.
QLatin1StringView nameOfFlag(LogFlag flag) {
  switch (flag) {
    case LogFlag::Error:
      return "error  "_L1;
    case LogFlag::Warning:
      return "warning"_L1;
    case LogFlag::Info:
      return "info   "_L1;
    case LogFlag::Debug:
      return "debug  "_L1;
    case LogFlag::Verbose:
      return "verbose"_L1;
  }
  return "unknown"_L1;
}

QString zoneText(const QDateTime& time) {
  const int offset = time.offsetFromUtc();
  const int minutes = qAbs(offset) / 60;
  return u"%1%2%3"_s.arg(QChar(offset < 0 ? u'-' : u'+'))
      .arg(minutes / 60, 2, 10, QChar(u'0'))
      .arg(minutes % 60, 2, 10, QChar(u'0'));
}

// C0 and C1 controls and Unicode's own line ends; a tab is harmless.
bool needsEscape(QChar character) {
  const char16_t code = character.unicode();
  return (code < 0x20 && code != u'\t') || (code >= 0x7f && code <= 0x9f) || code == 0x2028 || code == 0x2029;
}

QString escaped(const QString& text) {
  if (std::none_of(text.begin(), text.end(), needsEscape)) return text;
  QString result;
  result.reserve(text.size() + 16);
  for (const QChar character : text) {
    if (!needsEscape(character)) {
      result += character;
    } else if (character == u'\n') {
      result += "\\n"_L1;
    } else if (character == u'\r') {
      result += "\\r"_L1;
    } else {
      result += u"\\u%1"_s.arg(static_cast<uint>(character.unicode()), 4, 16, QChar(u'0'));
    }
  }
  return result;
}

}  // namespace

std::shared_ptr<QLLogFormatter> QLLogFormatter::defaultFormatter() {
  return std::make_shared<QLLogFormatter>();
}

void QLLogFormatter::registerName(const QString& name, int context) {
  ContextNames& registry = contextNames();
  const std::scoped_lock lock(registry.mutex);
  registry.names.insert(context, name);
}

std::optional<QString> QLLogFormatter::formatLogMessage(const LogRecord& record) const {
  if ((m_logLevel & static_cast<int>(record.flag)) == 0) return std::nullopt;
  QString line = record.time.toString(u"yyyy-MM-dd HH:mm:ss.zzz"_s);
  line += u' ' + zoneText(record.time) + u' ' + nameOfFlag(record.flag);
  line += u' ' + escaped(nameOfContext(record.context)) + u" ["_s + QString::number(record.threadIdentifier) + u"] "_s;
  line += escaped(record.text);
  return line;
}

QString QLLogHeaderMessage() {
  const QString name = QCoreApplication::applicationName();
  const QString version = QCoreApplication::applicationVersion();
  QString product = name.isEmpty() ? u"Quillo Agent"_s : name;
  if (!version.isEmpty()) product += u' ' + version;
  return u"%1 (Qt %2; %3; %4 %5; %6)"_s.arg(product, QLatin1StringView(qVersion()), QSysInfo::prettyProductName(),
                                            QSysInfo::kernelType(), QSysInfo::kernelVersion(),
                                            QSysInfo::currentCpuArchitecture());
}

}  // namespace quillo
