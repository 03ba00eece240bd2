#include "foundation/LoadableModule.h"

#include "foundation/Log.h"

#include <QFile>
#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

QString LoadableModule::path(const QString& name) {
  // As the application object says it; but a module may be what makes that.
  const QString directory = QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
  const QString beside = directory + u'/' + name + u".so"_s;
  return QFileInfo::exists(beside) ? beside : directory + u"/../lib/quillo-agent/modules/"_s + name + u".so"_s;
}

QFunctionPointer LoadableModule::address(const char* symbol) {
  std::call_once(m_loading, [this] {
    m_library.setFileName(path(m_name));
    // What the module misses shows now, and not as a crash when it is called.
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!m_library.load()) QLLogError(u"A part of the program cannot be loaded: %1"_s.arg(m_library.errorString()));
  });
  return m_library.isLoaded() ? m_library.resolve(symbol) : nullptr;
}

}  // namespace quillo
