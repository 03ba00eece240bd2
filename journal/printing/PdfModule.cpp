// What draws the pages of a PDF for a program that has no windows; a module that quilloctl loads.

#include "journal/printing/PdfEntryWriter.h"
#include "qlcore/services/QLWeatherFormatter.h"

#include <QGuiApplication>

#include <cstdio>
#include <memory>

namespace quillo {

// The application object of a program that is to draw, on no display. The words must outlive it.
extern "C" Q_DECL_EXPORT void quilloMakePdfApplication(int& argc, char** argv,
                                                       std::unique_ptr<QCoreApplication>& application) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // What the library has to say of the missing session, and of each font without some script, is nothing to whoever
  // asked for a document.
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg || type == QtCriticalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
  });
  application = std::make_unique<QGuiApplication>(argc, argv);
}

extern "C" Q_DECL_EXPORT void quilloMakePdfWriter(const ByteSink& sink, bool isInFahrenheit,
                                                  std::unique_ptr<EntryWriter>& writer) {
  const QLWeatherFormatter weather(isInFahrenheit ? TemperatureScale::Fahrenheit : TemperatureScale::Celsius);
  writer = std::make_unique<PdfEntryWriter>(
      sink, PdfEntryWriter::Options{.locale = QLocale(), .weatherText = [weather](const QLWeather& of) {
                                      return weather.stringForObjectValue(of);
                                    }});
}

}  // namespace quillo
