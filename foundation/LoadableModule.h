#pragma once

#include <QLibrary>
#include <QString>

#include <mutex>

namespace quillo {

// A part of the program that is loaded when it is first needed, together with libraries that nothing else of the
// program takes: loading those at the start would take longer, and more memory, than the rest of it. Lies beside the
// program in a build, below the same prefix in an installation. Stays loaded until the process ends. Any thread.
class LoadableModule {
 public:
  // `name` is the file's, without ".so". Loads nothing.
  explicit LoadableModule(QString name) : m_name(std::move(name)) {}

  // The module's extern "C" function of that name, which must be of this type; the first call loads the module. Null
  // where the module or the function is missing; why a module cannot be loaded is said once in the log.
  template <typename Function>
  [[nodiscard]] Function* function(const char* symbol) {
    return reinterpret_cast<Function*>(address(symbol));
  }
  [[nodiscard]] bool isLoaded() const { return m_library.isLoaded(); }

  // Where the module of that name is, or has to be.
  [[nodiscard]] static QString path(const QString& name);

 private:
  [[nodiscard]] QFunctionPointer address(const char* symbol);

  QString m_name;
  QLibrary m_library;
  std::once_flag m_loading;
};

}  // namespace quillo
