#pragma once

#include "exchange/ExportFormat.h"
#include "foundation/LoadableModule.h"

#include <QCoreApplication>

#include <memory>

namespace quillo::ctl {

// The module that draws the pages of a document. Drawing takes the libraries of windows and an application object of
// its own, though no display; no other command loads any of it.
class PageDrawing {
 public:
  // Before the application object is made.
  void setWanted(bool isWanted) { m_isWanted = isWanted; }
  // The plain one where nothing is to be drawn, or the module is not there. The words must outlive it.
  [[nodiscard]] std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv);

  // Whether what makeApplication() made can draw.
  [[nodiscard]] bool isReady() const { return m_isReady; }
  // Empty where nothing can be drawn.
  [[nodiscard]] DocumentMaker documentMaker(bool isInFahrenheit) const;
  // Of the module's file.
  [[nodiscard]] static QString path();

 private:
  using MakeApplication = void(int& argc, char** argv, std::unique_ptr<QCoreApplication>& application);
  using MakeWriter = void(const ByteSink& sink, bool isInFahrenheit, std::unique_ptr<EntryWriter>& writer);

  bool m_isWanted{false};
  bool m_isReady{false};
  MakeWriter* m_makeWriter{nullptr};
};

}  // namespace quillo::ctl
