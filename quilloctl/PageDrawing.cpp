#include "quilloctl/PageDrawing.h"

#include <QFileInfo>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// Stays loaded: what it made lives on.
LoadableModule& pdfModule() {
  static LoadableModule module(u"quillo-pdf"_s);
  return module;
}

}  // namespace

QString PageDrawing::path() {
  return QFileInfo(LoadableModule::path(u"quillo-pdf"_s)).absoluteFilePath();
}

std::unique_ptr<QCoreApplication> PageDrawing::makeApplication(int& argc, char** argv) {
  std::unique_ptr<QCoreApplication> application;
  if (m_isWanted && QFileInfo::exists(path())) {
    auto* const make = pdfModule().function<MakeApplication>("quilloMakePdfApplication");
    m_makeWriter = pdfModule().function<MakeWriter>("quilloMakePdfWriter");
    if (make && m_makeWriter) make(argc, argv, application);
    m_isReady = application != nullptr;
  }
  if (!application) application = std::make_unique<QCoreApplication>(argc, argv);
  return application;
}

DocumentMaker PageDrawing::documentMaker(bool isInFahrenheit) const {
  if (!m_isReady) return {};
  return [make = m_makeWriter, isInFahrenheit](const ByteSink& sink) {
    std::unique_ptr<EntryWriter> writer;
    make(sink, isInFahrenheit, writer);
    return writer;
  };
}

}  // namespace quillo::ctl
